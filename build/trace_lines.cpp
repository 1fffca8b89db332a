#include "build/trace_lines.h"

#include <ctime>

#include "build/envelope_address.h"
#include "build/texts.h"
#include "frame/settings.h"
#include "rfc822/date.h"

namespace vel {
namespace {

constexpr Setting<128> kReceiptHeader{"Options", "rrqHeader", "Return-Receipt-To"};

constexpr std::string_view kVersion = "5.1";

// Between the entry's identifier and the domain of a Message-ID.
constexpr std::string_view kSite = "VEL";

std::string now() {
    char text[kDateTextSize];
    time_t2rfc822date(std::time(nullptr), text);
    return text;
}

bool has_date(const addr822& header) { return header.date && header.date->has_date; }

}  // namespace

std::string lines_of(const Trace& trace, const addr822& header) {
    const std::string gateway = gateway_name();
    const std::string date = now();
    std::string lines;
    lines.append("Received: From ").append(gateway).append(" by ").append(gateway).append(kLineEnd);
    lines.append("  (VEL Postorra ").append(kVersion).append(") id ").append(trace.short_id);
    lines.append("; ").append(date).append(kLineEnd);
    if (trace.adds_mime_version && !header.mime_version) lines.append("Mime-version: 1.0").append(kLineEnd);
    if (!has_date(header)) lines.append("Date: ").append(is_empty(trace.date) ? date : trace.date).append(kLineEnd);
    if (!header.message_id) {
        lines.append("Message-ID: <").append(trace.short_id).append(".").append(kSite);
        lines.append("@").append(trace.id_domain).append(">").append(kLineEnd);
    }
    if (trace.receipt_to) {
        lines.append(read(kReceiptHeader).data()).append(": ").append(trace.receipt_to).append(kLineEnd);
    }
    return lines;
}

}  // namespace vel
