// Bounces: what is written to whom, and what the log says.
#include <cstring>
#include <functional>

#include "tests/notify/notified.h"

namespace {

const char* fetched_sender = nullptr;  // what the queue knows; null: no record
std::string fetched_by;                // path and queue that were asked for

}  // namespace

// The call that looks up a sender, in the place of the library's, which finds none.
extern "C" _envFrom* GetEnvelopeFrom(const char* path, void* queue) {
    fetched_by = std::string(path) + (queue ? " with queue" : "");
    if (!fetched_sender) return nullptr;
    auto* record = static_cast<_envFrom*>(std::calloc(1, sizeof(_envFrom)));
    if (record) record->address = ::strdup(fetched_sender);
    return record;
}

namespace vel::test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

enum Kind { kWhole, kHeader, kToPostmaster };

class BounceTest : public NotifyTest {
  protected:
    ~BounceTest() override { fetched_sender = nullptr; }

    // The header's call fetches the sender, the message's is given it.
    int bounce(Kind kind, const char* sender = "joe@x.y") {
        fetched_sender = kind == kHeader ? sender : "not@asked.for";
        const _envFrom record{sender, "id", 1, 2, "t", "in"};
        if (kind == kHeader) return BounceMimeMessageHeader(path_.c_str(), reasons_, 7, &queue_);
        if (kind == kToPostmaster) return BounceMimeMessageToPostmaster(path_.c_str(), reasons_, 7, nullptr);
        return BounceMimeMessage(path_.c_str(), &record, reasons_, 7, &queue_);
    }

    // The bounce as it is sent; "%" in the notice stands for the reasons.
    static std::string bounced(const std::string& to, const std::string& notice, const std::string& original) {
        const std::string heading = "From: postmaster@gw.corp\nTo: " + to + "\nSubject: unable to deliver mail\n";
        return multipart(heading, "mixed", {text_part(replaced(notice, "%", "no such user\ntry later\n")), original});
    }

    Chain reasons_{"no such user|try later"};
    const std::string postmaster_ = "postmaster@gw.corp";
};

TEST_F(BounceTest, a_message_goes_back_with_reasons) {
    EXPECT_EQ(bounce(kWhole), 0);
    EXPECT_EQ(sent(), bounced("joe@x.y",
                              "This message was returned to you for the following reasons:\n\n%"
                              "The original message follows.\n\n",
                              whole_));
    EXPECT_THAT(take_envelopes(), ElementsAre(envelope_of(postmaster_, {"joe@x.y"})));
    EXPECT_EQ(bounce(kToPostmaster), 0);
    EXPECT_EQ(sent(), bounced(postmaster_,
                              "This message has been bounced to postmaster for the following reason(s):\n\n%"
                              "\nThe original message follows.\n\n",
                              whole_));
    EXPECT_THAT(take_envelopes(), ElementsAre(envelope_of(postmaster_, {postmaster_})));
    EXPECT_THAT(take_log(), IsEmpty());
    EXPECT_THAT(left_behind("0entry1.lck"), IsEmpty()) << "the identifier is released";
}

TEST_F(BounceTest, kept_a_returned_header_block_has_the_lines_of_the_queue) {
    const std::string long_line = "Subject: " + std::string(1015, 's');  // A piece of the line reader, to the byte.
    file("message.msg",
         "#Fjoe@x.y\r\n#Ra@b.c\r\n" + long_line + "\r\n\nA: b" + '\0' + "c\r\nTo: a@b.c\r\n\r\nbody\r\n");
    EXPECT_EQ(bounce(kHeader), 0);
    EXPECT_EQ(replaced(sent(), "\r\n\nA", "\r\nA"),
              bounced("joe@x.y",
                      "This message was returned to you for the following reasons:\n\n%"
                      "The original message header follows.\n\n",
                      entity("text/RFC822-Headers", "7bit", "attachment",
                             "#Fjoe@x.y\n#Ra@b.c\n" + long_line + "\nA: bTo: a@b.c\n")));
    EXPECT_EQ(fetched_by, path_ + " with queue");
}

TEST_F(BounceTest, kept_two_settings_and_the_sender_tell_who_gets_a_message) {
    const std::string discarded = "; 6 Discard to bounce message with empty envelope From ( <> ).";
    const std::string size =
        "; 3 Bounced message size: " + std::to_string(message_.size()) + " bytes to: <postmaster>\r\n";
    const std::string missing = "; 1 Waring: trying to bonce message with no envelope from.";
    const std::string joe = " to joe@x.y", postmaster = " to postmaster@gw.corp";
    const struct {
        const char* sender;
        const char* instead_of_nobody;
        const char* copy;
        std::string whole;
        std::string header;  // empty: as of all of the message
    } rows[] = {
        {"<>", "", "YES", "2" + discarded, "1" + discarded},
        {"<>", "yesterday", "YES", "2" + discarded, "1" + discarded},
        {"<>", "yes", "NO", "1" + postmaster + size, "1" + postmaster + size + discarded},
        {"", "YES", "YES", "0" + postmaster + missing, ""},
        {nullptr, "YES", "YES", "0" + postmaster + missing, ""},
        {"joe@x.y", "YES", "NO", "0" + joe, ""},
        {"joe@x.y", "YES", "yes", "0" + joe + postmaster + size, ""},
        {"PostMaster@GW.corp", "YES", "YES", "0 to PostMaster@GW.corp", ""},
        {"P <postmaster@gw.corp>", "YES", "YES", "0" + postmaster, ""},
        {"joe@x.y, d@e.f", "YES", "YES", "0" + joe, ""},
    };
    for (const auto& row : rows) {
        set("Options", "BounceToPostmaster", row.instead_of_nobody);
        set("Options", "bounceToPostmaster", row.copy);
        EXPECT_EQ(outcome(bounce(kWhole, row.sender)), row.whole);
        EXPECT_EQ(outcome(bounce(kHeader, row.sender)), row.header.empty() ? row.whole : row.header);
    }
    fetched_sender = "joe@x.y";
    EXPECT_EQ(outcome(BounceMimeMessage(path_.c_str(), nullptr, nullptr, 0, nullptr)), "0" + joe + postmaster + size);
    EXPECT_EQ(fetched_by, path_);
    std::filesystem::remove(file_);
    EXPECT_EQ(bounce(kWhole, "<>"), 1) << "whatever becomes of it";
    EXPECT_THAT(take_log(1), testing::Contains("Could not get message file size."));
    EXPECT_THAT(take_log(3), ElementsAre("Bounced message size: 0 bytes to: <postmaster>\r\n"));
}

TEST_F(BounceTest, a_message_without_sender_is_said_to_have_none) {
    EXPECT_EQ(bounce(kWhole, ""), 0);
    EXPECT_EQ(sent(), bounced(postmaster_ + " (envelope From missing)",
                              "This message has no sender in the envelope.\n"
                              "It was being returned to sender for the following reasons:\n\n%"
                              "The original message follows.\n\n",
                              whole_));
    take_log();
}

TEST_F(BounceTest, senders_of_bounces_are_completed) {
    const std::pair<const char*, std::string> rows[] = {
        {"", postmaster_},  {"mailer-daemon", "mailer-daemon@gw.corp"}, {"<>", "<>"},
        {"a@b.c", "a@b.c"}, {"Mail System", "Mail System@gw.corp"},
    };
    for (const auto& [setting, from] : rows) {
        set("Options", "BounceSender", setting);
        EXPECT_EQ(bounce(kWhole), 0);
        EXPECT_THAT(sent(), testing::StartsWith("From: " + from));
        EXPECT_THAT(take_envelopes(), ElementsAre(envelope_of(from, {"joe@x.y"})));
    }
}

TEST_F(BounceTest, kept_failures_are_told_in_words_of_their_own) {
    const std::string memory = "out of memory.", write = "putline failed.", part = "MimeBuildMessage failed.";
    const auto expect = [&](std::size_t disk, const std::string& whole, const std::string& header,
                            const std::string& to_postmaster) {
        const SmallDisk small(disk);
        const std::string told[] = {"BounceMimeMessage failed: " + whole, "BounceMimeMessage failed: " + header,
                                    "BounceMimeMessageToPostmaster failed. " + to_postmaster};
        for (const Kind kind : {kWhole, kHeader, kToPostmaster}) {
            EXPECT_EQ(bounce(kind), -1);
            EXPECT_EQ(take_log(1).back(), told[kind]);
        }
    };
    file("message.msg", "Subject: " + std::string(5000, 's') + "\r\n\r\n");
    expect(30, write, write, write);
    expect(3000, part, memory, part);
    const std::string joined = "MimeBuldMultipartMessage failed.";
    expect(5400, joined, joined, "MimeBuildMultipartMessage failed.");
    queue_.fails = "close";
    const std::string refused = "MimeSendMessage failed.";
    expect(kEndless, refused, refused, "MimeSendMessage failed, message cannot be submitted to MQ.");
    std::filesystem::remove(file_);
    expect(kEndless, part, "fileopen failed.", part);
    std::filesystem::create_directory(file_);
    EXPECT_EQ(bounce(kHeader), -1);
    EXPECT_THAT(take_log(1), ElementsAre("ReadFile failed.")) << "which is not said again";
    set("Gateway", "TemporaryDirectory", path_.c_str());
    expect(kEndless, memory, memory, memory);
}

}  // namespace
}  // namespace vel::test
