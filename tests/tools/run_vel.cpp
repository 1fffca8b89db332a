#include "tests/tools/run_vel.h"

#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <cstdlib>

namespace vel::test {

CommandTest::CommandTest() { std::filesystem::create_directory(temporary()); }

CommandTest::~CommandTest() {
    EXPECT_TRUE(std::filesystem::is_empty(temporary())) << "the command has left temporary files behind";
    for (const std::string& name : left_behind(".vel-")) ADD_FAILURE() << "left behind: " << name;
}

pid_t CommandTest::start(const std::vector<std::string>& arguments, int in, int out, int error) const {
    std::vector<std::string> texts{"vel"};
    texts.insert(texts.end(), arguments.begin(), arguments.end());
    std::vector<std::string> settings{"OSTRA_CONFIG_DIR=" + directory().string(), "TMPDIR=" + temporary().string(),
                                      "PATH=/usr/bin:/bin", "TERM=xterm"};
    const auto pointers = [](std::vector<std::string>& list) {
        std::vector<char*> result;
        for (std::string& text : list) result.push_back(text.data());
        result.push_back(nullptr);
        return result;
    };
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    const std::string errors = (directory() / "stderr").string();
    const auto place = [&](int from, int to, const char* path, int flags) {
        if (from != -1) posix_spawn_file_actions_adddup2(&actions, from, to);
        if (from == -1) posix_spawn_file_actions_addopen(&actions, to, path, flags, 0600);
    };
    place(in, STDIN_FILENO, "/dev/null", O_RDONLY);
    place(out, STDOUT_FILENO, "/dev/null", O_WRONLY);
    place(error, STDERR_FILENO, errors.c_str(), O_WRONLY | O_CREAT | O_TRUNC);
    posix_spawnattr_t attributes;  // a test that is run in the background ignores these, its command shall not
    sigset_t interruptions;
    ::sigemptyset(&interruptions);
    for (const int signal : {SIGINT, SIGQUIT, SIGTERM}) ::sigaddset(&interruptions, signal);
    posix_spawnattr_init(&attributes);
    posix_spawnattr_setsigdefault(&attributes, &interruptions);
    posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETSIGDEF);
    pid_t process = -1;
    EXPECT_EQ(
        posix_spawn(&process, VEL_COMMAND, &actions, &attributes, pointers(texts).data(), pointers(settings).data()),
        0);
    posix_spawn_file_actions_destroy(&actions);
    posix_spawnattr_destroy(&attributes);
    return process;
}

int CommandTest::shell(const std::string& line) const {
    const std::string here = directory().string();
    file("line", "cd " + here +
                     "; export HOME=$PWD TMPDIR=$PWD/tmp OSTRA_CONFIG_DIR=$PWD PATH=$PWD/bin:/usr/bin:/bin\n" + line);
    std::filesystem::create_directory(here + "/bin");
    if (!std::filesystem::exists(here + "/bin/vel")) std::filesystem::create_symlink(VEL_COMMAND, here + "/bin/vel");
    return WEXITSTATUS(std::system(("bash " + here + "/line").c_str()));
}

int CommandTest::wait_for(pid_t process) {
    int status = 0;
    EXPECT_EQ(::waitpid(process, &status, 0), process);
    return WIFSIGNALED(status) ? -WTERMSIG(status) : WEXITSTATUS(status);
}

Ended CommandTest::run(const std::vector<std::string>& arguments, const std::string& standard_input) const {
    const int in = ::open(file("stdin", standard_input).c_str(), O_RDONLY | O_CLOEXEC);
    const int out = ::open(file("stdout", "").c_str(), O_WRONLY | O_CLOEXEC);
    Ended ended{wait_for(start(arguments, in, out)), {}, {}};
    ::close(in);
    ::close(out);
    ended.out = content((directory() / "stdout").string());
    ended.err = content((directory() / "stderr").string());
    return ended;
}

Files CommandTest::extracted() const {
    Files files;
    for (const auto& entry : std::filesystem::directory_iterator(target())) {
        files[entry.path().filename().string()] = content(entry.path().string());
    }
    return files;
}

std::string sample(const std::string& name) { return std::string(VEL_SAMPLES) + "/" + name; }

std::string multipart(const std::vector<std::string>& parts) {
    std::string text = kMimeHead + "Content-Type: multipart/mixed; boundary=b\n\n";
    for (const std::string& part : parts) text += "--b\n" + part + "\n";
    return crlf(text + "--b--\n");
}

std::string attachment(const std::string& disposition, const std::string& body) {
    return "Content-Disposition: attachment; " + disposition + "\n\n" + body;
}

}  // namespace vel::test
