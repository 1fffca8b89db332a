#include <nlohmann/json.hpp>

#include "tools/queue/entries.h"
#include "tools/text/ascii.h"
#include "tools/text/instant.h"
#include "tools/text/text_forms.h"

namespace vel::command {
namespace {

Json text_json(const char* text) { return json_text(text_of(text)); }

Json sender_json(const _envFrom& sender) {
    const char* const ret = return_name(sender.returnType);
    return {
        {"address", text_json(sender.address)}, {"envelope_id", text_json(sender.envelopeId)},
        {"return", ret ? Json(ret) : Json()},   {"number", sender.number},
        {"text", text_json(sender.text)},       {"channel", text_json(sender.channel)},
    };
}

Json recipient_json(const MQRecipient& recipient) {
    return {
        {"number", recipient.number},
        {"address", text_json(recipient.address)},
        {"state", state_name(recipient.state)},
        {"channel", text_json(recipient.channel)},
        {"due", time_json(recipient.due)},
        {"attempts", recipient.attempts},
        {"reason", text_json(recipient.reason)},
        {"original_recipient", text_json(recipient.originalRecipient)},
        {"notify", notify_names(recipient.notify)},
        {"text", text_json(recipient.text)},
        {"text2", text_json(recipient.text2)},
    };
}

}  // namespace

const char* const kAboutEntryJson =
    "The JSON object, one an entry: id, path (of the message file), channel, arrival, size (in bytes), priority,\n"
    "number, number2 (the submitter's), sender, recipients. A time: utc (RFC 3339), seconds_since_1970. The sender:\n"
    "address, envelope_id (ENVID), return (RET: \"full\", \"hdrs\" or null), number, text, channel (the submitter's).\n"
    "A recipient: number (its place in the envelope, from 0), address, state (\"waiting\", \"claimed\", \"held\"),\n"
    "channel, due (when it may be claimed), attempts, reason (why it was deferred or held last), original_recipient\n"
    "(ORCPT), notify (NOTIFY: \"never\", \"success\", \"failure\", \"delay\"), text, text2 (the submitter's).\n";

Json time_json(int64_t microseconds) {
    const int64_t seconds = microseconds / kMicroseconds;
    return {{"utc", instant_text(seconds)}, {"seconds_since_1970", seconds}};
}

Json entry_json(const MQEntry& entry) {
    Json object{
        {"id", text_json(entry.id)},
        {"path", text_json(entry.path)},
        {"channel", text_json(entry.channel)},
        {"arrival", time_json(entry.arrival)},
        {"size", entry.size},
        {"priority", entry.priority},
        {"number", entry.number},
        {"number2", entry.number2},
        {"sender", sender_json(entry.sender)},
        {"recipients", Json::array()},
    };
    for (const MQRecipient& recipient : recipients_of(entry)) object["recipients"].push_back(recipient_json(recipient));
    return object;
}

}  // namespace vel::command
