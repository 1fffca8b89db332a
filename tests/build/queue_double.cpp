#include "tests/build/queue_double.h"

#include <fstream>
#include <sstream>

#include "tests/support/memory.h"

namespace vel::test {
namespace {

std::string text_of(const _envFrom& from) {
    return std::string(from.address) + "|" + from.envelopeId + "|" + std::to_string(from.returnType) + "|" +
           std::to_string(from.number) + "|" + from.text + "|" + from.channel;
}

std::string text_of(const _envRecip& to) {
    return std::string(to.address) + "|" + to.originalRecipient + "|" + std::to_string(to.notify) + "|" + to.text +
           "|" + to.text2;
}

std::string text_of(stEnvelope& envelope) {
    std::string text = std::to_string(envelope.number) + " " + std::to_string(envelope.number2);
    envelope.senders.Reset();
    while (const _envFrom* from = envelope.senders.Next()) text += " from " + text_of(*from);
    envelope.recipients.Reset();
    while (const _envRecip* to = envelope.recipients.Next()) text += " to " + text_of(*to);
    return text;
}

std::string content(const std::string& path) {
    std::ostringstream text;
    text << std::ifstream(path, std::ios::binary).rdbuf();
    return text.str();
}

}  // namespace
}  // namespace vel::test

extern "C" {

MQContext* CreateMQEntry(void) {
    const vel::test::PlentyOfMemory plenty;
    if (!vel::test::queue->call("create")) return nullptr;
    std::ofstream(vel::test::queue->base + ".msg");
    std::ofstream(vel::test::queue->base + ".lck");
    vel::test::queue->context.base = vel::test::queue->base;
    return &vel::test::queue->context;
}

const char* GetMQPathName(MQContext* context, const char* extension) {
    const vel::test::PlentyOfMemory plenty;
    if (!context || !vel::test::queue->call("path")) return nullptr;
    context->path = context->base + extension;
    return context->path.c_str();
}

unsigned char InsertMQChannel(MQContext*, const char* channel, int priority) {
    const vel::test::PlentyOfMemory plenty;
    return vel::test::queue->call("insert " + std::string(channel) + " " + std::to_string(priority));
}

unsigned char PutMQEnvelope(MQContext*, stEnvelope* envelope) {
    const vel::test::PlentyOfMemory plenty;
    vel::test::queue->envelope = vel::test::text_of(*envelope);
    return vel::test::queue->call("put");
}

unsigned char CloseMQEntry(MQContext*) {
    const vel::test::PlentyOfMemory plenty;
    vel::test::Queue& queue = *vel::test::queue;
    if (!queue.call("close")) return 0;
    queue.messages.push_back(vel::test::content(queue.base + ".msg"));
    queue.envelopes.push_back(queue.envelope);
    return 7;
}

unsigned char DiscardMQEntry(MQContext*) {
    const vel::test::PlentyOfMemory plenty;
    return vel::test::queue->call("discard");
}

}  // extern "C"
