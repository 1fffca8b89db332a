// Records of senders and recipients for callers.
#include <array>

#include "frame/at_boundary.h"
#include "frame/owned.h"
#include "vel/build.h"

namespace vel {
namespace {

constexpr std::array kTexts = {
    &PerRecipField::originalRecipient, &PerRecipField::finalRecipient, &PerRecipField::action, &PerRecipField::status,
    &PerRecipField::remoteMta,         &PerRecipField::diagnosticCode};

void free_text(const char* text) { std::free(const_cast<char*>(text)); }

}  // namespace
}  // namespace vel

extern "C" {

// Weak, so that whoever knows where a queue keeps its senders may put a call of his own in its place.
[[gnu::weak]] _envFrom* GetEnvelopeFrom(const char*, void*) { return nullptr; }

void FreeEnvFrom(_envFrom* record) {
    if (!record) return;
    for (const char* text : {record->address, record->envelopeId, record->text}) vel::free_text(text);
    std::free(record);
}

int AssignPerRecipField(PerRecipField* record, const char* original_recipient, const char* final_recipient,
                        const char* action, const char* status, const char* remote_mta, const char* diagnostic_code,
                        int32_t last_attempt, int32_t will_retry_until) {
    if (!record) return -1;
    *record = {};
    const std::array texts = {original_recipient, final_recipient, action, status, remote_mta, diagnostic_code};
    const auto clean = [=] { CleanPerRecipField(record); };
    return vel::at_boundary(-1, clean, [&] {
        for (std::size_t i = 0; i < texts.size(); ++i) {
            if (texts[i]) record->*vel::kTexts[i] = vel::copy_text(texts[i]).release();
        }
        record->lastAttempt = last_attempt;
        record->willRetryUntil = will_retry_until;
        return 0;
    });
}

void CleanPerRecipField(PerRecipField* record) {
    if (!record) return;
    for (const auto text : vel::kTexts) vel::clear_text(record->*text);
    record->lastAttempt = record->willRetryUntil = -1;
}

int compare_uniqueType(const void* a, const void* b) {
    const uint32_t first = *static_cast<const uint32_t*>(a), second = *static_cast<const uint32_t*>(b);
    return first < second ? -1 : first > second;
}

}  // extern "C"
