// What the tests of notices share: a message in the queue, and what is submitted of it.
#ifndef VEL_TESTS_NOTIFY_NOTIFIED_H
#define VEL_TESTS_NOTIFY_NOTIFIED_H

#include <string>
#include <string_view>
#include <vector>

#include "tests/build/built.h"
#include "tests/build/queue_double.h"
#include "tests/support/small_disk.h"
#include "vel/notify.h"
#include "vel/rfc822.h"

namespace vel::test {

// The sender's envelope as the double writes it down, and recipients behind it.
inline std::string envelope_of(const std::string& sender, const std::vector<std::string>& recipients,
                               const std::string& channel = "DSN") {
    std::string text = "0 -1 from " + sender + "||0|0||" + channel;
    for (const std::string& recipient : recipients) text += " to " + recipient + "||0||";
    return text;
}

// An entity as the builder writes it; LF for CR LF.
inline std::string entity(const std::string& type, const std::string& encoding, const std::string& disposition,
                          const std::string& body) {
    return "Content-type: " + type + "\nContent-transfer-encoding: " + encoding +
           "\nContent-disposition: " + disposition + "\n\n" + body;
}

inline std::string text_part(const std::string& body) { return entity("text/plain", "7bit", "inline", body); }

// A multipart of entities, with the boundary B; the type is what stands behind "multipart/".
inline std::string multipart(const std::string& heading, const std::string& type,
                             const std::vector<std::string>& entities) {
    const std::size_t end = type.find(';');
    std::string text = heading + "Content-type: multipart/" + type.substr(0, end) + "; boundary=\"B\"" +
                       (end == std::string::npos ? "" : type.substr(end)) + "\n" + kPreamble;
    for (const std::string& part : entities) text += "\n--B\n" + part;
    return crlf(text + "\n--B--\n");
}

class NotifyTest : public BuildTest {
  protected:
    NotifyTest() {
        Init822Parser();
        queue_.base = (directory() / "0entry1").string();
        queue = &queue_;
    }
    ~NotifyTest() override {
        queue = nullptr;
        Terminate822Parser();
        EXPECT_THAT(left_behind("MIME"), testing::IsEmpty());
    }

    // A message that was submitted, without the fields that submission has put in front, and with "B" for the boundary;
    // "(none)" when there are not so many.
    std::string sent(std::size_t index = 0) const {
        if (index >= queue_.messages.size()) return "(none)";
        const std::string& whole = queue_.messages[index];
        const std::string text = whole.substr(whole.find("\r\nFrom: ") + 2), boundary = boundary_of(text);
        return boundary.empty() ? text : replaced(text, boundary, "B");
    }

    // What was submitted since the last time.
    std::vector<std::string> take_envelopes() {
        queue_.messages.clear();
        return std::exchange(queue_.envelopes, {});
    }

    // What a call answers, whom its notices go to, and what is logged: "0 to joe@x.y; 3 Bounced ...".
    std::string outcome(int result) {
        std::string text = std::to_string(result);
        for (const std::string& envelope : take_envelopes()) {
            for (std::size_t to = 0; (to = envelope.find(" to ", to)) != std::string::npos; ++to) {
                text.append(envelope, to, envelope.find('|', to) - to);
            }
        }
        for (const LogLine& line : take_log()) text += "; " + std::to_string(line.level) + " " + line.text;
        return text;
    }

    const std::string message_ = "#Fjoe@x.y\r\n#Ra@b.c\r\nSubject: s\r\nTo: a@b.c\r\n\r\nbody\r\n";
    const std::string file_ = file("message.msg", message_);
    const std::string path_ = (directory() / "message").string();
    const std::string whole_ = entity("message/rfc822", "7bit", "inline", "Subject: s\nTo: a@b.c\n\nbody\n");
    Queue queue_;
};

}  // namespace vel::test

#endif
