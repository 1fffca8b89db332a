// Runs the built command on files that a test writes.
#ifndef VEL_TESTS_TOOLS_RUN_VEL_H
#define VEL_TESTS_TOOLS_RUN_VEL_H

#include <sys/types.h>

#include <chrono>
#include <map>
#include <string>
#include <thread>
#include <vector>

#include "tests/support/fixture.h"

namespace vel::test {

struct Ended {
    int exit;  // the exit code, or minus the signal that ended it
    std::string out;
    std::string err;
};

using Files = std::map<std::string, std::string>;  // contents by name

// The command finds no configuration file; its temporary files go to a directory of the test.
class CommandTest : public VelTest {
  protected:
    CommandTest();
    ~CommandTest() override;  // fails the test when the command has left something behind

    Ended run(const std::vector<std::string>& arguments, const std::string& standard_input = "") const;

    // Runs a line of a shell in the test's directory, where vel is the command; its exit code.
    int shell(const std::string& line) const;

    // Starts the command with its standard input, output and error on these descriptors. Without them it reads nothing,
    // nobody hears it, and its errors go to the file "stderr".
    pid_t start(const std::vector<std::string>& arguments, int in = -1, int out = -1, int error = -1) const;
    static int wait_for(pid_t process);  // as Ended.exit

    // Waits, but not for ever.
    template <class Condition>
    static void await(const char* what, Condition condition) {
        const auto patience = std::chrono::steady_clock::now() + std::chrono::seconds(20);
        while (!condition()) {
            ASSERT_LT(std::chrono::steady_clock::now(), patience) << "in vain: " << what;
            std::this_thread::sleep_for(std::chrono::milliseconds(2));
        }
    }

    // A directory to extract to, and what stands in it.
    std::string target() const { return (directory() / "out").string(); }
    Files extracted() const;

    std::filesystem::path temporary() const { return directory() / "tmp"; }
};

// Exit codes of sysexits.
constexpr int kUsage = 64, kBadData = 65, kNoInput = 66, kCannotCreate = 73, kIoError = 74, kConfig = 78;

// The path of a file in samples/.
std::string sample(const std::string& name);

// The start of a header block, and messages: a multipart of parts that begin with their header lines, each line of
// which ends in "\n" here; and such a part.
inline const std::string kMimeHead = "Subject: test\nMIME-Version: 1.0\n";
std::string multipart(const std::vector<std::string>& parts);
std::string attachment(const std::string& disposition, const std::string& body);

}  // namespace vel::test

#endif
