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
using testing::IsSupersetOf;

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

    static std::string size_line(std::size_t size) {
        return "3 Bounced message size: " + std::to_string(size) + " bytes to: <postmaster>\r\n";
    }

    Chain reasons_{"no such user|try later"};
    const std::string postmaster_ = "postmaster@gw.corp";
    const std::string to_postmaster_ = envelope_of(postmaster_, {postmaster_});
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
    EXPECT_THAT(take_envelopes(), ElementsAre(to_postmaster_));
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

TEST_F(BounceTest, a_message_without_sender_goes_to_the_postmaster) {
    const std::string notice =
        "This message has no sender in the envelope.\n"
        "It was being returned to sender for the following reasons:\n\n%The original message follows.\n\n";
    set("Options", "bounceToPostmaster", "YES");  // There are no copies of these.
    for (const char* sender : {"", static_cast<const char*>(nullptr)}) {
        EXPECT_EQ(bounce(kWhole, sender), 0);
        EXPECT_EQ(sent(), bounced(postmaster_ + " (envelope From missing)", notice, whole_));
        EXPECT_EQ(bounce(kHeader, sender), 0);
        EXPECT_THAT(take_envelopes(), ElementsAre(to_postmaster_, to_postmaster_));
        const std::string no_sender = "1 Waring: trying to bonce message with no envelope from.";
        EXPECT_THAT(log_lines(), ElementsAre(no_sender, no_sender));
    }
    fetched_sender = "P <postmaster@gw.corp>";
    EXPECT_EQ(BounceMimeMessage(path_.c_str(), nullptr, nullptr, 0, nullptr), 0);
    EXPECT_EQ(fetched_by, path_);
    EXPECT_THAT(sent(), testing::HasSubstr("returned to you for the following reasons:\r\n\r\nThe original"));
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

TEST_F(BounceTest, kept_mail_from_nobody_is_discarded_or_goes_to_the_postmaster) {
    const std::string discarded = "6 Discard to bounce message with empty envelope From ( <> ).";
    set("Options", "bounceToPostmaster", "YES");  // Another setting.
    for (const char* setting : {"", "yesterday"}) {
        set("Options", "BounceToPostmaster", setting);
        EXPECT_EQ(bounce(kWhole, "<>"), 2);
        EXPECT_EQ(bounce(kHeader, "<>"), 1);
        EXPECT_THAT(take_envelopes(), IsEmpty());
        EXPECT_THAT(log_lines(), ElementsAre(discarded, discarded));
    }
    set("Options", "BounceToPostmaster", "yes");
    EXPECT_EQ(bounce(kWhole, "<>"), 1);
    EXPECT_EQ(bounce(kHeader, "<>"), 1);
    EXPECT_THAT(log_lines(), ElementsAre(size_line(message_.size()), size_line(message_.size()), discarded));
    EXPECT_THAT(take_envelopes(), ElementsAre(to_postmaster_, to_postmaster_));
    std::filesystem::remove(file_);
    EXPECT_EQ(bounce(kWhole, "<>"), 1) << "whatever becomes of it";
    EXPECT_THAT(log_lines(), IsSupersetOf({std::string("1 Could not get message file size."), size_line(0)}));
}

TEST_F(BounceTest, kept_the_postmaster_gets_copies_by_a_setting_of_another_first_letter) {
    const std::pair<const char*, bool> rows[] = {
        {"joe@x.y", true}, {"PostMaster@GW.corp", false}, {"P <postmaster@gw.corp>", false}, {"a@b.c, d@e.f", false}};
    set("Options", "BounceToPostmaster", "YES");
    for (const bool is_set : {false, true}) {
        set("Options", "bounceToPostmaster", is_set ? "yes" : "NO");
        for (const auto& [sender, may_have_copy] : rows) {
            const std::size_t copies = is_set && may_have_copy;
            for (const Kind kind : {kWhole, kHeader}) {
                EXPECT_EQ(bounce(kind, sender), 0);
                EXPECT_EQ(take_envelopes().size(), 1 + copies) << sender;
                EXPECT_EQ(log_lines().size(), copies) << sender;
            }
        }
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
