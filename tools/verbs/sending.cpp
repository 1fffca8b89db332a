#include "tools/verbs/sending.h"

#include <nlohmann/json.hpp>

#include "tools/message/message_json.h"
#include "tools/queue/connection.h"
#include "tools/text/text_forms.h"
#include "vel/build.h"

namespace vel::command {
namespace {

struct IdentifierReleased {
    void operator()(char* identifier) const { ReleaseQueueId(identifier); }
};
using Identifier = std::unique_ptr<char, IdentifierReleased>;

std::vector<_envRecip> records_of(const Envelope& envelope) {
    std::vector<_envRecip> records;
    for (std::size_t i = 0; i < envelope.recipients.size(); ++i) {
        const char* const original = i < envelope.originals.size() ? envelope.originals[i].c_str() : "";
        records.push_back({envelope.recipients[i].c_str(), original, envelope.notify, "", ""});
    }
    return records;
}

// The message stays as it is: what has no MIME-Version is not declared to be MIME.
Identifier submit(const std::string& path, const Envelope& envelope) {
    constexpr int kUnused = 0, kNoReceipt = 0, kNoMimeVersion = 1;
    const std::vector<_envRecip> records = records_of(envelope);
    return Identifier(MimeSendMessage(envelope.sender.c_str(), envelope.id.c_str(), envelope.return_type, kUnused, "",
                                      envelope.channel.c_str(), records.data(), static_cast<int>(records.size()), "",
                                      path.c_str(), kUnused, kNoReceipt, kNoMimeVersion));
}

Json entry_json(const std::string& id, const std::string& path, const Envelope& envelope) {
    Json recipients = Json::array();
    for (const std::string& recipient : envelope.recipients) recipients.push_back(json_text(recipient));
    return {{"id", id},
            {"path", json_text(path)},
            {"channel", json_text(envelope.channel)},
            {"sender", json_text(envelope.sender)},
            {"recipients", std::move(recipients)}};
}

}  // namespace

void send_message(const std::string& path, const Envelope& envelope, bool json, Session& session) {
    connect_to_queue(session);
    session.journal.take();
    const Identifier identifier = submit(path, envelope);
    if (!identifier) throw queue_failure(session, "the queue has not taken the message", Exit::temporary);
    const std::string base = identifier.get();
    const std::string id = base.substr(base.rfind('/') + 1);
    try {
        session.output.write((json ? one_line(entry_json(id, base + ".msg", envelope)) : id) + "\n");
        session.output.flush();
    } catch (const BrokenOutput&) {
        session.output.complain({}, std::string("the message is in the queue, as ").append(id));
        throw;
    }
}

}  // namespace vel::command
