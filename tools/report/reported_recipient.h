// What a delivery report says of its recipients.
#ifndef VEL_TOOLS_REPORT_REPORTED_RECIPIENT_H
#define VEL_TOOLS_REPORT_REPORTED_RECIPIENT_H

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "tools/report/fate.h"
#include "tools/text/utf8.h"

namespace vel::command {

// So much of a text of a report is kept, and "..." put for the rest: more than a person reads.
constexpr std::size_t kMostReportText = 1000;
constexpr std::string_view kReportTextCut = " ...";  // longer than what cutting between characters leaves out

// So many recipients are kept, the others only counted: a report about many lists thousands.
constexpr std::size_t kMostReported = 50000;

// Texts are empty where the report says nothing.
struct ReportedRecipient {
    std::string address;   // that the delivery was attempted to, else the original one
    std::string original;  // that the sender gave
    std::string action;
    std::string status;  // an enhanced status code, or what stands in its place
    std::string reason;  // in the words of the host or mailer
    std::string remote_mta;
    std::string last_attempt;
    std::string retry_until;
    Fate fate = Fate::unknown;
};

class ReportedRecipients {
  public:
    void add(ReportedRecipient recipient) {
        if (is_full()) {
            ++left_out_;
        } else {
            kept_.push_back(std::move(recipient));
        }
    }

    bool is_full() const { return kept_.size() >= kMostReported; }
    bool empty() const { return kept_.empty(); }
    const std::vector<ReportedRecipient>& kept() const { return kept_; }
    std::vector<ReportedRecipient>& kept() { return kept_; }
    uint64_t left_out() const { return left_out_; }

  private:
    std::vector<ReportedRecipient> kept_;
    uint64_t left_out_ = 0;
};

// Adds to a text of a report, up to its limit.
inline void append_report_text(std::string& text, std::string_view more) {
    if (text.size() > kMostReportText) return;
    const std::string_view kept = cut_to(more, kMostReportText - text.size());
    text += kept;
    if (kept.size() < more.size()) text += kReportTextCut;
}

}  // namespace vel::command

#endif
