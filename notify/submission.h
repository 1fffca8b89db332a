// Handing a notice over to the queue.
#ifndef VEL_NOTIFY_SUBMISSION_H
#define VEL_NOTIFY_SUBMISSION_H

#include <string>
#include <utility>
#include <vector>

#include "vel/build.h"

namespace vel {

// The channel of bounces and reports.
constexpr const char* kNoticeChannel = "DSN";

struct Notice {
    const char* sender;
    const char* channel;
    const char* file;
    intptr_t submission;  // what the builder's call does not look at
};

inline _envRecip recipient_of(const char* address) { return {address, nullptr, 0, nullptr, nullptr}; }

// True when the queue has taken the notice.
inline bool submit(const Notice& notice, const std::vector<_envRecip>& recipients) {
    char* identifier =
        MimeSendMessage(notice.sender, nullptr, 0, 0, nullptr, notice.channel, recipients.data(),
                        static_cast<int>(recipients.size()), nullptr, notice.file, notice.submission, 0, 0);
    const bool is_taken = identifier != nullptr;
    ReleaseQueueId(identifier);
    return is_taken;
}

// A chain of one text.
class OneText {
  public:
    explicit OneText(std::string text) : text_(std::move(text)), node_{text_.data(), nullptr} {}
    OneText(const OneText&) = delete;
    OneText& operator=(const OneText&) = delete;

    const ms* chain() const { return &node_; }

  private:
    std::string text_;
    ms node_;
};

}  // namespace vel

#endif
