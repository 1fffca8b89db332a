// Delivery status notifications: fields, parts, and who gets them.
#include "tests/notify/notified.h"
#include "vel/frame.h"

namespace vel::test {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::StartsWith;

constexpr int32_t kArrival = 917882430;  // 1 Feb 1999 10:20:30 -0500

// Recipients of a report: "original|final|action|status|mta|diagnostic|last attempt|retry until", cut anywhere.
class Recipients {
  public:
    explicit Recipients(const std::vector<std::string>& rows) : records_(rows.size()), nodes_(rows.size()) {
        for (const std::string& row : rows) texts_.push_back(split(row + "|||||||"));
        for (std::size_t i = 0; i < rows.size(); ++i) {
            const auto text = [&](std::size_t n) { return texts_[i][n].data(); };
            const auto time = [&](std::size_t n) { return std::atoi(text(n)); };
            records_[i] = {text(0), text(1), text(2), text(3), text(4), text(5), time(6), time(7)};
            nodes_[i] = {&records_[i], i + 1 < rows.size() ? &nodes_[i + 1] : nullptr};
        }
    }
    operator const PerRecipChain*() const { return nodes_.empty() ? nullptr : nodes_.data(); }

  private:
    std::vector<std::vector<std::string>> texts_;
    std::vector<PerRecipField> records_;
    std::vector<PerRecipChain> nodes_;
};

class ReportTest : public NotifyTest {
  protected:
    int report(const char* sender, int32_t return_type, const Recipients& recipients, const char* id = "id+1") {
        const DSNEnvelope envelope{sender, id, return_type, 0, kArrival};
        return GenerateDSNMessage(path_.c_str(), &envelope, "s", lines_, recipients);
    }

    // The report, sent.
    std::string reported(const char* sender, int32_t return_type, const Recipients& recipients, const char* id = "") {
        take_envelopes();
        EXPECT_EQ(report(sender, return_type, recipients, id), 0);
        return sent();
    }

    // The report for joe.
    static std::string report_of(const std::vector<std::string>& parts) {
        return multipart("From: postmaster@gw.corp\nTo: joe@x.y\nSubject: s\n",
                         "Report; report-type=\"delivery-status\"", parts);
    }

    Chain lines_{"It failed.\r\n|Sorry.\r\n"};
    const Recipients none_{{}};
    const Recipients failed_{{"|a@b.c|Failed"}};
    const std::string text_ = entity("text/plain; Charset=\"US-ASCII\"", "7bit", "inline", "It failed.\nSorry.\n");
    const std::string header_ = entity("text/RFC822-Headers", "7bit", "attachment", "Subject: s\nTo: a@b.c\n");
};

TEST_F(ReportTest, all_fields_are_written_in_order) {
    const Recipients recipients({"rfc822;A@b.c|a@b.c|failed|5.1.1|mx.b.c|550 no such user|917882430|917882431",
                                 "||||||-1|0", "|d@e.f|delayed|4.4.1"});
    const std::string date = "Mon, 1 Feb 1999 10:20:30 -0500\n";
    const std::string status = "Original-Envelope-Id: id+1\nReporting-MTA: DNS; gw.corp\nArrival-Date: " + date +
                               "\n"
                               "Original-Recipient: rfc822;A@b.c\n"
                               "Final-Recipient: rfc822;a@b.c\n"
                               "Action: failed\n"
                               "Status: 5.1.1\n"
                               "Remote-MTA: DNS; mx.b.c\n"
                               "Diagnostic-code: smtp;550 no such user\n"
                               "Last-attempt-date: " +
                               date +
                               "Will-retry-until: Mon, 1 Feb 1999 10:20:31 -0500\n"
                               "\n\n"
                               "Final-Recipient: rfc822;d@e.f\nAction: delayed\nStatus: 4.4.1\n\n";
    EXPECT_EQ(reported("joe@x.y", VEL_RET_FULL, recipients, "id+1"),
              report_of({text_, entity("message/delivery-status", "7bit", "inline", status), whole_}));
    EXPECT_THAT(take_envelopes(), ElementsAre(envelope_of("<>", {"joe@x.y"})));
    EXPECT_THAT(take_log(), IsEmpty());
    EXPECT_THAT(left_behind("0entry1.lck"), IsEmpty()) << "the identifier is released";
}

TEST_F(ReportTest, kept_the_message_is_returned_whole_only_when_a_recipient_failed) {
    const Recipients delayed({"|a@b.c|delayed"}), second_failed({"|a@b.c|relayed", "|a@b.c|FAILED"});
    const struct {
        const Recipients& recipients;
        int32_t return_type;
        const std::string& original;
    } rows[] = {
        {delayed, VEL_RET_FULL, header_},
        {second_failed, VEL_RET_FULL, whole_},
        {failed_, VEL_RET_HDRS, header_},
        {failed_, 0, header_},
        {failed_, 3, header_},
    };
    for (const auto& row : rows) {
        EXPECT_THAT(reported("joe@x.y", row.return_type, row.recipients),
                    testing::EndsWith(crlf("\n--B\n" + row.original + "\n--B--\n")))
            << row.return_type;
        EXPECT_THAT(left_behind("message.lck"), IsEmpty());
    }
    EXPECT_EQ(reported("joe@x.y", VEL_RET_FULL, none_), report_of({text_, header_}));
    EXPECT_THAT(reported("joe@x.y", 0, failed_), HasSubstr("\r\n\r\nReporting-MTA: ")) << "no empty identifier";
}

TEST_F(ReportTest, envelopes_may_be_missing) {
    const auto came_now = [this] {
        for (std::time_t time = std::time(nullptr) - 60; time <= std::time(nullptr); ++time) {
            char text[64];
            time_t2rfc822date(time, text);
            if (sent().find(std::string("Arrival-Date: ") + text + "\r\n") != std::string::npos) return true;
        }
        return false;
    };
    EXPECT_EQ(GenerateDSNMessage(path_.c_str(), nullptr, "s", lines_, failed_), 0);
    EXPECT_TRUE(came_now()) << sent();
    EXPECT_THAT(sent(), StartsWith("From: postmaster@gw.corp\r\nSubject: s\r\nContent-type: "));
    EXPECT_THAT(sent(), testing::Not(HasSubstr("message/rfc822")));
    EXPECT_THAT(take_envelopes(), ElementsAre(envelope_of("<>", {})));
    EXPECT_EQ(GenerateDSNMessageToPostmaster(path_.c_str(), "s", lines_, failed_), 0);
    EXPECT_TRUE(came_now()) << sent();
    EXPECT_THAT(sent(), StartsWith("From: postmaster@gw.corp\r\nTo: postmaster@gw.corp\r\nSubject: s\r\nContent-"));
    EXPECT_THAT(sent(), HasSubstr("message/rfc822"));
    EXPECT_THAT(take_envelopes(), ElementsAre(envelope_of("<>", {"postmaster@gw.corp"})));
    EXPECT_EQ(outcome(GenerateDSNMessageForAllRecipients()), "0");
}

TEST_F(ReportTest, kept_three_letters_of_a_setting_send_failures_to_the_postmaster_too) {
    const std::string joe = "0 to joe@x.y", postmaster = " to postmaster@gw.corp";
    for (const bool is_set : {false, true}) {
        set("Options", "BounceToPostmaster", is_set ? "yesterday" : "no");
        EXPECT_EQ(outcome(report("joe@x.y", 0, failed_)), is_set ? joe + postmaster : joe);
        EXPECT_EQ(outcome(report("joe@x.y", 0, none_)), joe);
        EXPECT_EQ(outcome(report("Postmaster@GW.corp", 0, failed_)), "0 to Postmaster@GW.corp");
        EXPECT_EQ(outcome(report("", 0, failed_)), is_set ? "0" + postmaster : "0");
        EXPECT_EQ(outcome(report("<>", 0, failed_)), "0" + postmaster);
        EXPECT_EQ(outcome(report("<>", 0, none_)), "0" + postmaster);
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
        EXPECT_THAT(reported("joe@x.y", 0, none_), StartsWith("From: " + std::string(from) + "\r\n"));
    }
}

TEST_F(ReportTest, texts_have_the_local_charset) {
    set("Gateway", "LocalCharSet", "ISO-8859-1");
    Chain lines("ascii\r\n|\xfc\xdf\r\n");
    EXPECT_EQ(GenerateDSNMessage(path_.c_str(), nullptr, "s", lines, none_), 0);
    EXPECT_THAT(
        sent(),
        HasSubstr(crlf(entity("text/plain; Charset=\"ISO-8859-1\"", "quoted-printable", "inline", "ascii\n=FC=DF\n"))));
}

TEST_F(ReportTest, header_blocks_lose_the_lines_of_the_queue_wherever_they_stand) {
    const std::string long_line(3000, 'x');
    file("message.msg",
         "#d\r\nA: " + long_line + "\r\n#r" + long_line + "\r\n\tb\r\n#Fx\r\n#X: y\r\n#\n\r\n#Fbody\r\n");
    EXPECT_THAT(reported("joe@x.y", 0, none_),
                HasSubstr("\r\n\r\nA: " + long_line + "\r\n\tb\r\n#X: y\r\n#\n\r\n--B--\r\n"));
}

TEST_F(ReportTest, fields_have_any_length) {
    const std::string mta(1 << 20, 'm');
    std::vector<std::string> rows(10000, "|a@b.c|failed");
    rows[0] += "|5.0.0|" + mta + "|" + mta;
    const std::string text = reported("joe@x.y", 0, Recipients(rows));
    EXPECT_TRUE(text.find("\r\nRemote-MTA: DNS; " + mta.substr(0, 256) + "\r\nDiagnostic-code: smtp;" + mta +
                          "\r\n\r\n") != std::string::npos);
    EXPECT_EQ(replaced(text, "\r\nAction: failed\r\n", "").size(), text.size() - rows.size() * 18);
}

TEST_F(ReportTest, a_message_that_cannot_be_locked_is_read_all_the_same) {
    std::filesystem::create_directory(path_ + ".lck");
    EXPECT_THAT(reported("joe@x.y", 0, none_), HasSubstr("RFC822-Headers"));
    take_log();
    EXPECT_THAT(left_behind("message.lck"), ElementsAre("message.lck"));
}

TEST_F(ReportTest, failures_leave_and_submit_nothing) {
    const auto expect_told = [this](const std::vector<std::string>& told, int32_t return_type = VEL_RET_HDRS,
                                    std::size_t disk = kEndless, const std::string& id = "") {
        const SmallDisk small(disk);
        EXPECT_EQ(report("joe@x.y", return_type, failed_, id.c_str()), -1);
        EXPECT_EQ(take_log(1), told);
        EXPECT_THAT(take_envelopes(), IsEmpty());
        EXPECT_THAT(left_behind("message.lck"), IsEmpty());
    };
    file("message.msg", "Subject: " + std::string(900, 's') + "\r\n\r\n");
    expect_told({"putline failed."}, VEL_RET_HDRS, 500);
    expect_told({"putline failed."}, VEL_RET_FULL, 500, std::string(900, 'i'));
    queue_.fails = "close";
    expect_told({});
    std::filesystem::remove(file_);
    for (const int32_t which : {VEL_RET_HDRS, VEL_RET_FULL}) {
        expect_told({"CreateFile failed: " + file_ + ", error 2"}, which);
    }
    std::filesystem::create_directory(file_);
    expect_told({"ReadFile failed.", "getline failed."});
    set("Gateway", "TemporaryDirectory", file_.c_str());
    std::filesystem::remove(file_);
    expect_told({});
    EXPECT_EQ(GenerateDSNMessage(nullptr, nullptr, nullptr, nullptr, nullptr), -1);
}

}  // namespace
}  // namespace vel::test
