// The command vel: what a gateway program does through the library, from the shell.
#include <csignal>
#include <exception>

#include "tools/interruption.h"
#include "tools/output.h"
#include "tools/verb.h"
#include "vel/frame.h"

int main(int argc, char** argv) {
    using vel::command::Exit;
    std::signal(SIGPIPE, SIG_IGN);
    try {
        vel::command::Scratch scratch;
        const vel::command::Interruption interruption([&] { scratch.abandon(); });
        vel::command::Journal journal;
        InitVELDll_NOMQ("vel");
        vel::command::Session session{scratch, journal};
        return static_cast<int>(vel::command::run_command({argv + 1, argv + argc}, session));
    } catch (const vel::command::BrokenPipe&) {
        vel::command::die_of(SIGPIPE);
    } catch (const vel::command::Failure& failure) {
        vel::command::complain({}, failure.what());
        return static_cast<int>(failure.exit());
    } catch (const std::exception& failure) {
        vel::command::complain({}, failure.what());
    }
    return static_cast<int>(Exit::io_error);
}
