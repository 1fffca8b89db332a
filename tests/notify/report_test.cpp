// Delivery status notifications: fields, parts, and who gets them.
#include "tests/notify/notified.h"
#include "vel/frame.h"

namespace vel::test {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;

constexpr std::time_t kArrival = 917882430;  // 1 Feb 1999 10:20:30 -0500

std::string heading(const std::string& to) {
    return "From: postmaster@gw.corp\n" + (to.empty() ? to : "To: " + to + "\n") + "Subject: s\n";
}

// Recipients of a report: "original|final|action|status|mta|diagnostic" and the two times of each.
class Recipients {
  public:
    struct Row {
        const char* texts;
        int32_t last_attempt = 0;
        int32_t will_retry_until = 0;
    };

    explicit Recipients(const std::vector<Row>& rows) : records_(rows.size()), nodes_(rows.size()) {
        for (std::size_t i = 0; i < rows.size(); ++i) {
            std::vector<std::string> texts = split(rows[i].texts);
            texts.resize(6);
            const auto text = [&](std::size_t n) { return texts[n].c_str(); };
            AssignPerRecipField(&records_[i], text(0), text(1), text(2), text(3), text(4), text(5),
                                rows[i].last_attempt, rows[i].will_retry_until);
            nodes_[i] = {&records_[i], i + 1 < rows.size() ? &nodes_[i + 1] : nullptr};
        }
    }
    Recipients(const Recipients&) = delete;
    Recipients& operator=(const Recipients&) = delete;
    ~Recipients() {
        for (PerRecipField& record : records_) CleanPerRecipField(&record);
    }
    operator const PerRecipChain*() const { return nodes_.empty() ? nullptr : nodes_.data(); }

  private:
    std::vector<PerRecipField> records_;
    std::vector<PerRecipChain> nodes_;
};

class ReportTest : public NotifyTest {
  protected:
    int report(const DSNEnvelope* envelope, const Recipients& recipients) {
        return GenerateDSNMessage(path_.c_str(), envelope, "s", lines_, recipients);
    }

    // The report for a sender, sent.
    std::string reported(const char* sender, int32_t return_type, const Recipients& recipients) {
        const DSNEnvelope envelope{sender, "", return_type, 0, kArrival};
        EXPECT_EQ(report(&envelope, recipients), 0);
        return sent(queue_.messages.size() - 1);
    }

    // Who gets the report for a sender.
    std::vector<std::string> readers(const char* sender, const Recipients& recipients) {
        reported(sender, VEL_RET_FULL, recipients);
        return take_envelopes();
    }

    Chain lines_{"It failed.\r\n|Sorry.\r\n"};
    const Recipients none_{{}};
    const Recipients failed_{{{"|a@b.c|Failed"}}};
    const std::string text_ = entity("text/plain; Charset=\"US-ASCII\"", "7bit", "inline", "It failed.\nSorry.\n");
    const std::string mta_ = "Reporting-MTA: DNS; gw.corp\nArrival-Date: Mon, 1 Feb 1999 10:20:30 -0500\n\n";
    const std::string header_ = entity("text/RFC822-Headers", "7bit", "attachment", "Subject: s\nTo: a@b.c\n");
    const std::string whole_ = entity("message/rfc822", "7bit", "inline", "Subject: s\nTo: a@b.c\n\nbody\n");
};

TEST_F(ReportTest, all_fields_are_written_in_order) {
    const Recipients recipients({{"rfc822;A@b.c|a@b.c|failed|5.1.1|mx.b.c|550 no such user", 917882430, 917882431},
                                 {"|||||", -1, 0},
                                 {"|d@e.f|delayed|4.4.1||"}});
    const DSNEnvelope envelope{"joe@x.y", "id+1", VEL_RET_FULL, 0, kArrival};
    EXPECT_EQ(report(&envelope, recipients), 0);
    const std::string status = "Original-Envelope-Id: id+1\n" + mta_ +
                               "Original-Recipient: rfc822;A@b.c\n"
                               "Final-Recipient: rfc822;a@b.c\n"
                               "Action: failed\n"
                               "Status: 5.1.1\n"
                               "Remote-MTA: DNS; mx.b.c\n"
                               "Diagnostic-code: smtp;550 no such user\n"
                               "Last-attempt-date: Mon, 1 Feb 1999 10:20:30 -0500\n"
                               "Will-retry-until: Mon, 1 Feb 1999 10:20:31 -0500\n"
                               "\n\n"
                               "Final-Recipient: rfc822;d@e.f\n"
                               "Action: delayed\n"
                               "Status: 4.4.1\n"
                               "\n";
    EXPECT_EQ(sent(), multipart(heading("joe@x.y"), "Report; report-type=\"delivery-status\"",
                                {text_, entity("message/delivery-status", "7bit", "inline", status), whole_}));
    EXPECT_THAT(take_envelopes(), ElementsAre(envelope_of("<>", {"joe@x.y"})));
    EXPECT_THAT(take_log(), IsEmpty());
    EXPECT_THAT(left_behind("0entry1.lck"), IsEmpty()) << "the identifier is released";
}

TEST_F(ReportTest, kept_the_message_is_returned_whole_only_when_a_recipient_failed) {
    const Recipients delayed({{"|a@b.c|delayed"}}), second_failed({{"|a@b.c|relayed"}, {"|a@b.c|FAILED"}});
    const struct {
        const char* what;
        const Recipients& recipients;
        int32_t return_type;
        const std::string& original;
    } rows[] = {
        {"no recipients", none_, VEL_RET_FULL, header_},
        {"delayed", delayed, VEL_RET_FULL, header_},
        {"failed", failed_, VEL_RET_FULL, whole_},
        {"a second one failed", second_failed, VEL_RET_FULL, whole_},
        {"headers wanted", failed_, VEL_RET_HDRS, header_},
        {"not said", failed_, 0, header_},
        {"no such option", failed_, 3, header_},
    };
    for (const auto& row : rows) {
        EXPECT_THAT(reported("joe@x.y", row.return_type, row.recipients),
                    testing::EndsWith(crlf("\n--B\n" + row.original + "\n--B--\n")))
            << row.what;
        EXPECT_THAT(left_behind("message.lck"), IsEmpty()) << row.what;
    }
    EXPECT_EQ(reported("joe@x.y", VEL_RET_FULL, none_),
              multipart(heading("joe@x.y"), "Report; report-type=\"delivery-status\"", {text_, header_}));
}

TEST_F(ReportTest, envelopes_may_be_missing) {
    const auto now = [this](const std::string& message) {
        for (std::time_t time = std::time(nullptr) - 60; time <= std::time(nullptr); ++time) {
            char text[64];
            time_t2rfc822date(time, text);
            if (message.find(std::string("Arrival-Date: ") + text + "\r\n") != std::string::npos) return true;
        }
        return false;
    };
    EXPECT_EQ(report(nullptr, failed_), 0);
    EXPECT_TRUE(now(sent())) << sent();
    EXPECT_THAT(sent(), testing::StartsWith(crlf(heading("") + "Content-type: ")));
    EXPECT_THAT(sent(), Not(HasSubstr("message/rfc822")));
    EXPECT_THAT(take_envelopes(), ElementsAre(envelope_of("<>", {})));

    EXPECT_EQ(GenerateDSNMessageToPostmaster(path_.c_str(), "s", lines_, failed_), 0);
    EXPECT_TRUE(now(sent())) << sent();
    EXPECT_THAT(sent(), testing::StartsWith(crlf(heading("postmaster@gw.corp") + "Content-type: ")));
    EXPECT_THAT(sent(), HasSubstr("message/rfc822"));
    EXPECT_THAT(take_envelopes(), ElementsAre(envelope_of("<>", {"postmaster@gw.corp"})));
    EXPECT_EQ(GenerateDSNMessageForAllRecipients(), 0);
    EXPECT_THAT(take_envelopes(), IsEmpty());
}

TEST_F(ReportTest, kept_three_letters_of_a_setting_send_failures_to_the_postmaster_too) {
    const std::string nobody = envelope_of("<>", {}), joe = envelope_of("<>", {"joe@x.y"}),
                      both = envelope_of("<>", {"joe@x.y", "postmaster@gw.corp"}),
                      alone = envelope_of("<>", {"postmaster@gw.corp"});
    for (const char* setting : {"", "no", "yesterday"}) {
        set("Options", "BounceToPostmaster", setting);
        const bool has_copy = *setting == 'y';
        EXPECT_THAT(readers("joe@x.y", failed_), ElementsAre(has_copy ? both : joe));
        EXPECT_THAT(readers("joe@x.y", none_), ElementsAre(joe));
        EXPECT_THAT(readers("Postmaster@GW.corp", failed_), ElementsAre(envelope_of("<>", {"Postmaster@GW.corp"})));
        for (const char* sender : {"", static_cast<const char*>(nullptr)}) {
            EXPECT_THAT(readers(sender, failed_), ElementsAre(has_copy ? alone : nobody));
        }
        for (const Recipients* recipients : {&failed_, &none_}) {
            EXPECT_THAT(readers("<>", *recipients), ElementsAre(alone));
        }
    }
}

TEST_F(ReportTest, kept_a_report_on_mail_from_nobody_has_a_completed_to_line) {
    EXPECT_THAT(reported("<>", 0, none_), HasSubstr("\r\nTo: <>@gw.corp\r\n"));
}

TEST_F(ReportTest, senders_of_reports_are_one_address_or_the_postmaster) {
    const std::pair<const char*, const char*> rows[] = {
        {"", "postmaster@gw.corp"}, {"<>", "postmaster@gw.corp"},           {"mailer", "mailer@gw.corp"},
        {"M <m@b.c>", "m@b.c"},     {"a@b.c, d@e.f", "postmaster@gw.corp"},
    };
    for (const auto& [setting, from] : rows) {
        set("Options", "BounceSender", setting);
        EXPECT_THAT(reported("joe@x.y", 0, none_), testing::StartsWith("From: " + std::string(from) + "\r\n"));
    }
}

TEST_F(ReportTest, texts_have_the_local_charset) {
    set("Gateway", "LocalCharSet", "ISO-8859-1");
    Chain lines(
        "Gr\xfc\xdf"
        "e\r\n");
    EXPECT_EQ(GenerateDSNMessage(path_.c_str(), nullptr, "s", lines, none_), 0);
    EXPECT_THAT(
        sent(),
        HasSubstr(crlf(entity("text/plain; Charset=\"ISO-8859-1\"", "quoted-printable", "inline", "Gr=FC=DFe\n"))));
}

TEST_F(ReportTest, header_blocks_lose_the_lines_of_the_queue_wherever_they_stand) {
    const std::string long_line(3000, 'x');
    file("message.msg",
         "#d\r\nA: " + long_line + "\r\n#r" + long_line + "\r\n\tb\r\n#Fx\r\n#X: y\r\n#\n\r\n#Fbody\r\n");
    EXPECT_THAT(reported("joe@x.y", 0, none_),
                HasSubstr("\r\n\r\nA: " + long_line + "\r\n\tb\r\n#X: y\r\n#\n\r\n--B--\r\n"));
}

TEST_F(ReportTest, fields_have_any_length) {
    const std::string mta(1 << 20, 'm'), texts = "|a@b.c|failed|5.0.0|" + mta + "|" + mta;
    std::vector<Recipients::Row> rows(10000, Recipients::Row{"|a@b.c|failed"});
    rows[0].texts = texts.c_str();
    const std::string text = reported("joe@x.y", 0, Recipients(rows));
    EXPECT_TRUE(text.find("\r\nRemote-MTA: DNS; " + mta.substr(0, 256) + "\r\nDiagnostic-code: smtp;" + mta +
                          "\r\n\r\n") != std::string::npos);
    EXPECT_EQ(replaced(text, "\r\nAction: failed\r\n", "").size(), text.size() - rows.size() * 18);
}

TEST_F(ReportTest, failures_leave_and_submit_nothing) {
    const DSNEnvelope envelope{"joe@x.y", "", VEL_RET_FULL, 0, kArrival};
    set("Gateway", "TemporaryDirectory", (directory() / "none").c_str());
    EXPECT_EQ(report(&envelope, failed_), -1);
    EXPECT_THAT(take_log(), IsEmpty()) << "nothing is said of the text";
    set("Gateway", "TemporaryDirectory", directory().c_str());
    queue_.fails = "close";
    EXPECT_EQ(report(&envelope, failed_), -1);
    std::filesystem::remove(file_);
    for (const Recipients* recipients : {&failed_, &none_}) {
        EXPECT_EQ(report(&envelope, *recipients), -1);
        EXPECT_EQ(take_log(1).size(), 1u) << "of the file that cannot be opened";
    }
    std::filesystem::create_directory(file_);
    EXPECT_EQ(report(&envelope, none_), -1);
    EXPECT_THAT(take_log(1), ElementsAre("ReadFile failed.", "getline failed."));
    EXPECT_THAT(left_behind("message.lck"), IsEmpty());
    EXPECT_EQ(GenerateDSNMessage(nullptr, nullptr, nullptr, nullptr, nullptr), -1);
    take_log();
    EXPECT_THAT(take_envelopes(), IsEmpty());
}

TEST_F(ReportTest, a_message_that_cannot_be_locked_is_read_all_the_same) {
    std::filesystem::create_directory(path_ + ".lck");
    EXPECT_THAT(reported("joe@x.y", 0, none_), HasSubstr("RFC822-Headers"));
    take_log();
    EXPECT_THAT(left_behind("message.lck"), ElementsAre("message.lck"));
}

TEST_F(ReportTest, a_disk_full_at_any_byte_reports_nothing) {
    const DSNEnvelope envelope{"joe@x.y", "id", 0, 0, kArrival};
    expect_all_or_nothing_on_small_disks([&] { return report(&envelope, failed_); });
    file("message.msg", "Subject: " + std::string(900, 's') + "\r\n\r\n");
    const std::string long_id(900, 'i');
    for (const char* id : {long_id.c_str(), ""}) {
        const DSNEnvelope with_id{"joe@x.y", id, 0, 0, kArrival};
        const SmallDisk full(500);
        EXPECT_EQ(report(&with_id, failed_), -1);
        EXPECT_THAT(take_log(1), ElementsAre("putline failed.")) << (*id ? "the status" : "the header block");
    }
}

TEST_F(ReportTest, without_memory_all_is_reported_or_nothing) {
    const DSNEnvelope envelope{"joe@x.y", "id", 0, 0, kArrival};
    EXPECT_THAT(expect_all_or_nothing_in_little_memory([&] { return report(&envelope, failed_); }),
                testing::Contains("Out of memory."));
}

}  // namespace
}  // namespace vel::test
