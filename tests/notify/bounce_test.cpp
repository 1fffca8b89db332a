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

constexpr const char* kFromAndSubject = "From: postmaster@gw.corp\nTo: %\nSubject: unable to deliver mail\n";
constexpr const char* kDiscarded = "6 Discard to bounce message with empty envelope From ( <> ).";
constexpr const char* kNoSender = "1 Waring: trying to bonce message with no envelope from.";

std::string heading(const std::string& to) { return replaced(kFromAndSubject, "%", to); }

class BounceTest : public NotifyTest {
  protected:
    BounceTest() { fetched_sender = nullptr; }

    int bounce(const char* sender) {
        const _envFrom record{sender, "id", 1, 2, "t", "in"};
        return BounceMimeMessage(path_.c_str(), &record, reasons_, 7, &queue_);
    }
    int bounce_header(const char* sender) {
        fetched_sender = sender;
        return BounceMimeMessageHeader(path_.c_str(), reasons_, 7, &queue_);
    }
    int bounce_to_postmaster() { return BounceMimeMessageToPostmaster(path_.c_str(), reasons_, 7, nullptr); }

    std::string size_line(std::size_t size) const {
        return "3 Bounced message size: " + std::to_string(size) + " bytes to: <postmaster>\r\n";
    }

    Chain reasons_{"no such user|try later"};
    const std::string whole_ = entity("message/rfc822", "7bit", "inline", "Subject: s\nTo: a@b.c\n\nbody\n");
};

TEST_F(BounceTest, a_message_goes_back_with_reasons) {
    EXPECT_EQ(bounce("joe@x.y"), 0);
    EXPECT_EQ(sent(), multipart(heading("joe@x.y"), "mixed",
                                {text_part("This message was returned to you for the following reasons:\n\n"
                                           "no such user\ntry later\nThe original message follows.\n\n"),
                                 whole_}));
    EXPECT_EQ(bounce_to_postmaster(), 0);
    EXPECT_EQ(sent(1),
              multipart(heading("postmaster@gw.corp"), "mixed",
                        {text_part("This message has been bounced to postmaster for the following reason(s):\n\n"
                                   "no such user\ntry later\n\nThe original message follows.\n\n"),
                         whole_}));
    EXPECT_THAT(take_envelopes(), ElementsAre(envelope_of("postmaster@gw.corp", {"joe@x.y"}),
                                              envelope_of("postmaster@gw.corp", {"postmaster@gw.corp"})));
    EXPECT_THAT(take_log(), IsEmpty());
    EXPECT_THAT(left_behind("0entry1.lck"), IsEmpty()) << "the identifier is released";
}

TEST_F(BounceTest, kept_a_returned_header_block_has_the_lines_of_the_queue) {
    EXPECT_EQ(bounce_header("joe@x.y"), 0);
    EXPECT_EQ(sent(), multipart(heading("joe@x.y"), "mixed",
                                {text_part("This message was returned to you for the following reasons:\n\n"
                                           "no such user\ntry later\nThe original message header follows.\n\n"),
                                 entity("text/RFC822-Headers", "7bit", "attachment",
                                        "#Fjoe@x.y\n#Ra@b.c\nSubject: s\nTo: a@b.c\n")}));
    EXPECT_EQ(fetched_by, path_ + " with queue");
}

TEST_F(BounceTest, a_message_without_sender_goes_to_the_postmaster) {
    const std::string lines =
        "This message has no sender in the envelope.\n"
        "It was being returned to sender for the following reasons:\n\n";
    Chain none(nullptr);
    for (const auto& call : {std::function([&] { return BounceMimeMessage(path_.c_str(), nullptr, none, 0, nullptr); }),
                             std::function([&] { return BounceMimeMessageHeader(path_.c_str(), none, 0, nullptr); })}) {
        EXPECT_EQ(call(), 0);
        EXPECT_THAT(sent(), testing::StartsWith(crlf(heading("postmaster@gw.corp (envelope From missing)"))));
        EXPECT_THAT(sent(), testing::HasSubstr(crlf("\n\n" + lines + "The original message ")));
        EXPECT_EQ(fetched_by, path_);
        EXPECT_THAT(take_envelopes(), ElementsAre(envelope_of("postmaster@gw.corp", {"postmaster@gw.corp"})));
        EXPECT_THAT(log_lines(), ElementsAre(kNoSender));
    }
    set("Options", "bounceToPostmaster", "YES");
    for (const char* sender : {"", static_cast<const char*>(nullptr)}) {
        EXPECT_EQ(bounce(sender), 0);
        EXPECT_EQ(bounce_header(sender), 0);
        EXPECT_EQ(take_envelopes().size(), 2u) << "no copies";
        EXPECT_THAT(log_lines(), ElementsAre(kNoSender, kNoSender));
    }
}

TEST_F(BounceTest, senders_of_bounces_are_completed) {
    const std::pair<const char*, const char*> rows[] = {
        {"", "postmaster@gw.corp"}, {"mailer-daemon", "mailer-daemon@gw.corp"}, {"<>", "<>"},
        {"a@b.c", "a@b.c"},         {"Mail System", "Mail System@gw.corp"},
    };
    for (const auto& [setting, from] : rows) {
        set("Options", "BounceSender", setting);
        EXPECT_EQ(bounce("joe@x.y"), 0);
        EXPECT_EQ(bounce_to_postmaster(), 0);
        for (const std::size_t i : {0u, 1u}) EXPECT_THAT(sent(i), testing::StartsWith("From: " + std::string(from)));
        EXPECT_THAT(take_envelopes(),
                    ElementsAre(envelope_of(from, {"joe@x.y"}), envelope_of(from, {"postmaster@gw.corp"})));
    }
}

TEST_F(BounceTest, kept_mail_from_nobody_is_discarded_or_goes_to_the_postmaster) {
    const std::string to_postmaster = size_line(message_.size());
    set("Options", "bounceToPostmaster", "YES");  // Another setting.
    for (const char* setting : {"", "NO", "yesterday"}) {
        set("Options", "BounceToPostmaster", setting);
        EXPECT_EQ(bounce("<>"), 2);
        EXPECT_EQ(bounce_header("<>"), 1);
        EXPECT_THAT(take_envelopes(), IsEmpty());
        EXPECT_THAT(log_lines(), ElementsAre(kDiscarded, kDiscarded));
    }
    set("Options", "BounceToPostmaster", "yes");
    EXPECT_EQ(bounce("<>"), 1);
    EXPECT_THAT(log_lines(), ElementsAre(to_postmaster));
    EXPECT_EQ(bounce_header("<>"), 1);
    EXPECT_THAT(log_lines(), ElementsAre(to_postmaster, kDiscarded));
    const std::string whole = envelope_of("postmaster@gw.corp", {"postmaster@gw.corp"});
    EXPECT_THAT(take_envelopes(), ElementsAre(whole, whole));
    std::filesystem::remove(file_);
    EXPECT_EQ(bounce("<>"), 1) << "whatever becomes of it";
    EXPECT_THAT(log_lines(), IsSupersetOf({std::string("1 Could not get message file size."), size_line(0)}));
}

TEST_F(BounceTest, kept_the_postmaster_gets_copies_by_a_setting_of_another_first_letter) {
    const struct {
        const char* sender;
        std::size_t copies;
    } rows[] = {{"joe@x.y", 1},
                {"Joe <joe@x.y>", 1},
                {"PostMaster@GW.corp", 0},
                {"P <postmaster@gw.corp>", 0},
                {"a@b.c, d@e.f", 0}};
    set("Options", "BounceToPostmaster", "YES");
    for (const char* setting : {"NO", "yes"}) {
        set("Options", "bounceToPostmaster", setting);
        for (const auto& [sender, copies] : rows) {
            const bool has_copy = copies != 0 && *setting == 'y';
            for (const bool header_only : {false, true}) {
                EXPECT_EQ(header_only ? bounce_header(sender) : bounce(sender), 0);
                EXPECT_EQ(take_envelopes().size(), has_copy ? 2u : 1u) << sender;
                EXPECT_EQ(log_lines().size(), has_copy ? 1u : 0u) << sender;
            }
        }
    }
}

TEST_F(BounceTest, every_failure_is_told_in_its_words) {
    const std::string no_directory = (directory() / "none").string();
    const struct {
        const char* what;
        std::function<void()> arrange;
        const char* of_message;  // behind "BounceMimeMessage failed: "
        const char* of_header;
        const char* of_postmaster;  // behind "BounceMimeMessageToPostmaster failed. "
    } rows[] = {
        {"no temporary name", [&] { set("Gateway", "TemporaryDirectory", no_directory.c_str()); }, "out of memory.",
         "out of memory.", "out of memory."},
        {"no message", [&] { std::filesystem::remove(file_); }, "MimeBuildMessage failed.", "fileopen failed.",
         "MimeBuildMessage failed."},
        {"unreadable", [&] { std::filesystem::create_directory(file_); }, "MimeBuildMessage failed.", nullptr,
         "MimeBuildMessage failed."},
        {"refused",
         [&] {
             file("message.msg", "");
             queue_.fails = "close";
         },
         "MimeSendMessage failed.", "MimeSendMessage failed.",
         "MimeSendMessage failed, message cannot be submitted to MQ."},
    };
    const auto expect = [&](const char* what, int result, const char* call, const char* text) {
        const std::vector<std::string> told = take_log(1);
        EXPECT_EQ(result, -1) << what;
        EXPECT_EQ(told.back(), text ? std::string(call) + text : "ReadFile failed.") << what;
    };
    for (const auto& row : rows) {
        std::filesystem::remove_all(file_);
        row.arrange();
        expect(row.what, bounce("joe@x.y"), "BounceMimeMessage failed: ", row.of_message);
        expect(row.what, bounce_header("joe@x.y"), "BounceMimeMessage failed: ", row.of_header);
        expect(row.what, bounce_to_postmaster(), "BounceMimeMessageToPostmaster failed. ", row.of_postmaster);
        set("Gateway", "TemporaryDirectory", directory().c_str());
    }
    EXPECT_THAT(take_envelopes(), IsEmpty());
}

TEST_F(BounceTest, a_disk_full_at_any_byte_bounces_nothing) {
    expect_all_or_nothing_on_small_disks([&] { return bounce("joe@x.y"); });
    expect_all_or_nothing_on_small_disks([&] { return bounce_header("joe@x.y"); });
    expect_all_or_nothing_on_small_disks([&] { return bounce_to_postmaster(); });
}

TEST_F(BounceTest, without_memory_all_is_bounced_or_nothing) {
    EXPECT_THAT(
        expect_all_or_nothing_in_little_memory([&] { return bounce("joe@x.y"); }),
        IsSupersetOf({"BounceMimeMessage failed: out of memory.", "BounceMimeMessage failed: filecreate error."}));
    const std::string call = "BounceMimeMessageToPostmaster failed";
    EXPECT_THAT(expect_all_or_nothing_in_little_memory([&] { return bounce_to_postmaster(); }),
                IsSupersetOf({call + ". out of memory.", call + ": out of memory.", call + ". filecreate failed."}));
}

TEST_F(BounceTest, kept_failures_to_write_are_told_in_words_of_their_own) {
    file("message.msg", "Subject: " + std::string(5000, 's') + "\r\n\r\n");
    const auto told = [this](std::size_t disk, const std::function<int()>& call) {
        const SmallDisk full(disk);
        EXPECT_EQ(call(), -1) << disk;
        return take_log(1).back();
    };
    const auto whole = [this] { return bounce("joe@x.y"); };
    const auto header = [this] { return bounce_header("joe@x.y"); };
    const auto copy = [this] { return bounce_to_postmaster(); };
    EXPECT_EQ(told(30, whole), "BounceMimeMessage failed: putline failed.");
    EXPECT_EQ(told(30, copy), "BounceMimeMessageToPostmaster failed. putline failed.");
    EXPECT_EQ(told(3000, whole), "BounceMimeMessage failed: MimeBuildMessage failed.");
    EXPECT_EQ(told(3000, header), "BounceMimeMessage failed: out of memory.");
    EXPECT_EQ(told(5400, whole), "BounceMimeMessage failed: MimeBuldMultipartMessage failed.");
    EXPECT_EQ(told(5400, copy), "BounceMimeMessageToPostmaster failed. MimeBuildMultipartMessage failed.");
}

TEST_F(BounceTest, reasons_and_headers_have_any_length) {
    std::string reason(1 << 20, 'r');
    ms last{nullptr, nullptr}, chain{reason.data(), &last};
    std::vector<ms> many(10000, ms{reason.data() + reason.size() - 9, nullptr});
    for (std::size_t i = 1; i < many.size(); ++i) many[i - 1].next = &many[i];
    last.next = many.data();
    const std::string subject = "Subject: " + std::string(1015, 's');  // A piece of the line reader, to the byte.
    file("message.msg", subject + "\r\nTo: a@b.c\r\n\r\nbody\r\n");
    fetched_sender = "joe@x.y";
    EXPECT_EQ(BounceMimeMessageHeader(path_.c_str(), &chain, 0, nullptr), 0);
    std::string lines = reason + "\r\n";
    for (std::size_t i = 0; i < many.size(); ++i) lines += "rrrrrrrrr\r\n";
    EXPECT_TRUE(sent().find("\r\n\r\n" + lines + "The original") != std::string::npos);
    EXPECT_TRUE(sent().ends_with("\r\n\r\n" + subject + "\r\nTo: a@b.c\r\n\r\n--B--\r\n"));
}

}  // namespace
}  // namespace vel::test
