// What the library says about a message, and the settings that it is asked with.
#ifndef VEL_TOOLS_IO_JOURNAL_H
#define VEL_TOOLS_IO_JOURNAL_H

#include <string>
#include <vector>

namespace vel::command {

struct LogLine {
    int level;
    std::string text;
};

constexpr int kErrorLevel = 1;
constexpr int kEveryLevel = 6;

// Collects the log lines of the calling thread while it lives, instead of the log. One a thread.
class Journal {
  public:
    Journal();
    Journal(const Journal&) = delete;
    Journal& operator=(const Journal&) = delete;
    ~Journal();

    // From now on the lines go to the log as well, for what others have to be able to look up later. Not where the
    // log is standard error, on which the command speaks for itself.
    void share();

    // The lines since the last call.
    std::vector<LogLine> take();

  private:
    static void add(void* self, int level, const char* application, const char* text) noexcept;

    std::vector<LogLine> lines_;
};

// A setting of ostra.ini that holds for the calling thread while this lives.
class SettingInForce {
  public:
    SettingInForce(const char* section, const char* key, const char* value);
    SettingInForce(const SettingInForce&) = delete;
    SettingInForce& operator=(const SettingInForce&) = delete;
    ~SettingInForce();

  private:
    const char* section_;
    const char* key_;
};

}  // namespace vel::command

#endif
