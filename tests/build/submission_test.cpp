// Putting messages into a queue: what it is told, in which order, and what is left when it refuses.
#include <set>

#include "frame/owned.h"
#include "tests/build/submission.h"
#include "tests/support/small_disk.h"

namespace vel::test {
namespace {

using testing::ElementsAre;
using testing::EndsWith;
using testing::IsEmpty;

constexpr const char* kReceived = "Received: From gw.corp by gw.corp\n  (VEL Postorra 5.1) id 0entry1; NOW\n";

TEST_F(SubmissionTest, missing_fields_are_put_in_front) {
    const std::string received = kReceived;
    EXPECT_EQ(sent({}, "Subject: s\r\n\r\nbody"),
              crlf(received + "Mime-version: 1.0\nDate: NOW\nMessage-ID: <0entry1.VEL@x.y>\nSubject: s\n\nbody"));
    const std::string has_all = "Message-Id: <1@b>\nMIME-Version: 1.0\nDate: Mon, 1 Feb 1999 10:20:30 -0500\n\nbody\n";
    EXPECT_EQ(sent({.date = "then"}, crlf(has_all)), crlf(received + has_all));
    EXPECT_EQ(sent({.sender = "me", .date = "then", .wants_receipt = 1, .no_mime_version = 1}, ""),
              crlf(received + "Date: then\nMessage-ID: <0entry1.VEL@gw.corp>\nReturn-Receipt-To: me\n"));
    set("Options", "rrqHeader", "X-Receipt");
    EXPECT_EQ(
        sent({.sender = "Me <me@d>", .date = "", .wants_receipt = 1}, "Resent-Date: 1 Feb 1999 10:20:30 -0500\r\n"),
        crlf(received + "Mime-version: 1.0\nDate: NOW\nMessage-ID: <0entry1.VEL@d>\nX-Receipt: Me <me@d>\n"
                        "Resent-date: Mon, 1 Feb 1999 10:20:30 -0500\n"));
}

TEST_F(SubmissionTest, kept_date_lines_are_written_anew_by_their_first_line) {
    const std::string head = crlf(std::string(kReceived) + "Mime-version: 1.0\nMessage-ID: <0entry1.VEL@x.y>\n");
    const std::string long_comment = "(" + std::string(2000, 'c') + ")";
    const std::pair<std::string, std::string> rows[] = {
        {"DATE:1 feb 99 10:20 EST\n", "Date: NOW\n"},
        {"DATE:1 Feb 99 10:20 EST\nA: b\n\nDate: x\n", "Date: Mon, 1 Feb 1999 10:20 -0500\nA: b\n\nDate: x\n"},
        {"Date: 1 Feb\n 99\nresent-DATE: 2 Feb 1999\n", "Date: NOW\n 99\nResent-date: Tue, 2 Feb 1999 00:00 +0000\n"},
        {"Date: 1 Feb 1999 10:20 " + long_comment + "\nA: " + std::string(1021, 'a') + "Date: x\n",
         "Date: Mon, 1 Feb 1999 10:20 +0000\nA: " + std::string(1021, 'a') + "Date: x\n"},
    };
    for (const auto& [given, expected] : rows) {
        const std::string text = sent({}, crlf(given));
        EXPECT_EQ(text, head + crlf(expected));
        const std::vector<std::string> told(expected.starts_with("Date: NOW"),
                                            "Received invalid date.  Adopting the current time instead.");
        EXPECT_EQ(take_log(6), told);
    }
}

TEST_F(SubmissionTest, envelopes_have_canonical_addresses) {
    sent({.sender = "Me (now) <me@x.y>",
          .envelope_id = "id",
          .return_type = 2,
          .text = "t",
          .recipients = {{"Joe <joe>", "rfc822;joe", 3, "a", "b"}, to(""), to(nullptr), to("a@b.c, d@e.f"), to("@")}},
         "");
    EXPECT_EQ(queue_.envelope, "0 -1 from me@x.y|id|2|0|t|out to joe@gw.corp|rfc822;joe|3|a|b to a@b.c||0|| to @||0||");
    EXPECT_THAT(take_log(6), ElementsAre("Ignore empty recipient address.", "Ignore empty recipient address."));
    set("Routing", "PrimaryRelayHostName", "relay");
    for (const char* sender : {"<>", "a@b.c, d@e.f", ""}) {
        sent({.sender = sender, .recipients = {to("joe")}}, "");
        EXPECT_EQ(queue_.envelope, "0 -1 from " + std::string(sender) + "||0|0||out to joe@relay||0||");
    }
    sent({}, "");
    EXPECT_EQ(queue_.envelope, "0 -1 from me@x.y||0|0||out") << "no recipients";
}

TEST_F(SubmissionTest, what_is_refused_leaves_nothing) {
    const std::string path = file("message", "A: b\r\n\r\nbody");
    const std::pair<const char*, const char*> rows[] = {
        {"create", "create "}, {"insert out 255", kGivenUp}, {"put", kGivenUp}, {"close", kWhole}};
    for (const auto& [fails, calls] : rows) {
        queue_.fails = fails;
        EXPECT_EQ(refused(path), calls) << fails;
    }
    EXPECT_THAT(take_log(1), ElementsAre("CreateMQEntry failed."));
    queue_.fails = "";
    EXPECT_EQ(refused(directory()), "create path discard ") << "no header block can be read";
    take_log();
    queue_.base = (directory() / "none/0entry2").string();
    EXPECT_EQ(refused(path), "create path discard ");
    EXPECT_THAT(take_log(1), ElementsAre("open failed"));
}

TEST_F(SubmissionTest, files_whose_place_is_not_known_are_the_queue_s_affair) {
    for (const std::string& no_file : {std::string(), (directory() / "none").string()}) {
        EXPECT_EQ(send_file({}, no_file), nullptr);
        EXPECT_EQ(queue_.calls, "create discard ");
    }
    queue_.fails = "path";
    EXPECT_EQ(send_file({}, file("message", "")), nullptr);
    EXPECT_EQ(queue_.calls, "create path discard ");
}

TEST_F(SubmissionTest, a_disk_full_at_any_byte_submits_nothing) {
    const std::string path = file("message", "A: b\r\n\r\nbody");
    sent({}, "A: b\r\n\r\nbody");
    const std::size_t whole = content(queue_.base + ".msg").size();
    for (std::size_t size = 0; size < whole; ++size) {
        const SmallDisk full(size);
        EXPECT_EQ(refused(path), "create path discard ") << size;
        EXPECT_THAT(take_log(1), ElementsAre("fileclose: WriteFile failed."));
    }
}

TEST_F(SubmissionTest, without_memory_all_is_submitted_or_nothing) {
    const std::string path = file("message", "Resent-Date: 1 Feb 1999\r\n\r\nbody");
    const Send send{.sender = "Me <me@x.y>", .recipients = {{"Joe <joe@x.y>", "rfc822;joe", 3, "a", "b"}}};
    const auto all_or_nothing = [&] {
        const COwned<char> identifier(send_file(send, path));
        if (identifier) {
            EXPECT_EQ(queue_.calls, kWhole);
            EXPECT_EQ(queue_.envelope, "0 -1 from me@x.y||0|0||out to joe@x.y|rfc822;joe|3|a|b") << granted_;
            EXPECT_THAT(content(queue_.base + ".msg"),
                        EndsWith("\r\nResent-date: Mon, 1 Feb 1999 00:00 +0000\r\n\r\nbody"));
        } else {
            EXPECT_TRUE(queue_.calls.ends_with("discard ")) << granted_;
            // Without memory for the entry's path its files are the queue's affair.
            EXPECT_EQ(left_behind("0entry1").size(), granted_ < 2 ? 2u : 0u) << granted_;
        }
        std::filesystem::remove(queue_.base + ".msg");
    };
    with_little_memory(1, all_or_nothing);
    with_little_memory(kEveryRequest, all_or_nothing);
    const auto told = take_log(1);
    EXPECT_THAT(std::set(told.begin(), told.end()),
                ElementsAre("Out of memory.", "Unable to allocate VEL_FILE object", "malloc failed."));
}

TEST_F(SubmissionTest, an_entry_of_the_caller_gets_its_envelope) {
    const _envFrom sender{"me", nullptr, 1, 5, nullptr, "not looked at"};
    const _envRecip recipients[] = {{"joe", "rfc822;joe", 2, "t", "not looked at"}, to("")};
    EnvRecipChain last{&recipients[1], nullptr}, chain{&recipients[0], &last};
    const std::pair<const char*, const char*> rows[] = {
        {"", kWhole}, {"insert out 255", kGivenUp}, {"put", kGivenUp}, {"close", kWhole}};
    for (const auto& [fails, calls] : rows) {
        queue_.calls = "";
        queue_.fails = fails;
        MQContext* context = VELGetNewMQEntry();
        char* identifier = VELGetNewMQId(context);
        EXPECT_STREQ(identifier, queue_.base.c_str());
        VELFreeMQId(identifier);
        EXPECT_EQ(SubmitMQMessage(context, &sender, &chain, "out"), *fails ? 0 : 7);
        EXPECT_EQ(queue_.calls, calls);
        EXPECT_EQ(queue_.envelope, "0 -1 from me||1|5||out to joe|rfc822;joe|2|t| to ||0||");
    }
    queue_.fails = "create";
    EXPECT_EQ(SubmitMQMessage(VELGetNewMQEntry(), &sender, &chain, "out"), 0);
    EXPECT_THAT(take_log(1), ElementsAre("CreateMQEntry failed.", "CreateMQEntry failed."));
    EXPECT_EQ(SubmitMQMessage(&queue_.context, nullptr, &chain, "out"), 0);
    EXPECT_EQ(VELGetNewMQId(nullptr), nullptr);
}

TEST_F(SubmissionTest, kept_out_of_memory_for_the_sender_has_no_full_stop) {
    const _envFrom sender{"me", nullptr, 0, 0, nullptr, nullptr};
    const _envRecip joe = to("joe");
    const EnvRecipChain chain{&joe, nullptr};
    const auto submit = [&](std::size_t granted) {
        const Starved starved(granted);
        return SubmitMQMessage(&queue_.context, &sender, &chain, "out");
    };
    for (std::size_t granted = 0; !submit(granted); ++granted) {
        EXPECT_EQ(queue_.calls, "") << "the entry stays open";
    }
    EXPECT_EQ(queue_.calls, "insert out 255 put close ");
    EXPECT_THAT(take_log(1), ElementsAre("Out of memory", "Out of memory.", "Out of memory."));
}

TEST_F(SubmissionTest, identifiers_are_freed_with_and_without_their_lock) {
    VELFreeMQId(::strdup(file("a.lck", "").substr(0, directory().string().size() + 2).c_str()));
    EXPECT_THAT(left_behind("a"), ElementsAre("a.lck"));
    ReleaseQueueId(::strdup((directory() / "a").c_str()));
    EXPECT_THAT(left_behind("a"), IsEmpty());
    set("Debug", "LogLocking", "YES");
    ReleaseQueueId(::strdup(""));
    ReleaseQueueId(nullptr);
    EXPECT_THAT(take_log(), IsEmpty()) << "nothing to unlock";
}

}  // namespace
}  // namespace vel::test
