// The command vel: what a gateway program does through the library, from the shell.
#include <cerrno>
#include <csignal>
#include <exception>
#include <system_error>

#include "tools/io/caller_zone.h"
#include "tools/io/interruption.h"
#include "tools/verbs/verb.h"
#include "vel/frame.h"

namespace {

using vel::command::Exit;

Exit run(vel::command::Arguments arguments, vel::command::Output& output) {
    vel::command::Scratch scratch;
    const vel::command::Interruption interruption([&] {
        output.streams().silence();
        scratch.abandon();
    });
    vel::command::Journal journal;
    vel::command::caller_zone();
    InitVELDll_NOMQ("vel");
    vel::command::Session session{scratch, journal, output};
    const Exit exit = vel::command::run_command(std::move(arguments), session);
    output.flush();
    return exit;
}

}  // namespace

int main(int argc, char** argv) {
    std::signal(SIGPIPE, SIG_IGN);
    vel::command::occupy_standard_descriptors();
    vel::command::Streams streams;
    vel::command::Output output(streams);
    Exit exit = Exit::io_error;
    try {
        exit = run({argv + 1, argv + argc}, output);
    } catch (const vel::command::BrokenOutput& broken) {
        if (broken.error == EPIPE) vel::command::die_of(SIGPIPE);
        output.complain({}, "standard output: " + std::generic_category().message(broken.error));
    } catch (const vel::command::Failure& failure) {
        output.complain({}, failure.what());
        exit = failure.exit();
    } catch (const std::exception& failure) {
        output.complain({}, failure.what());
    }
    return static_cast<int>(exit);
}
