// What becomes of recipients, said as one record, and done in one order: the tables, the files, the log.
#ifndef VEL_PLATFORM_QUEUE_SETTLE_H
#define VEL_PLATFORM_QUEUE_SETTLE_H

#include <optional>
#include <string>
#include <string_view>

#include "platform/queue/store.h"

namespace vel {

struct Outcome {
    std::string_view event;        // as accounting calls it
    std::optional<Change> change;  // nothing: the recipients go
    std::string reason{};

    static Outcome delivered() { return {"delivered", std::nullopt}; }
    static Outcome removed() { return {"removed", std::nullopt}; }
    static Outcome failed(const char* reason);
    static Outcome given_back() { return {"given back", Change{MQ_WAITING}}; }
    static Outcome deferred(int64_t due, const char* reason);
    static Outcome held(const char* reason);
    static Outcome released();
};

// Each returns how many recipients were selected.
int settle(Store& store, const Selection& selection, const Outcome& outcome, const std::string& who);
int extend(Store& store, const Selection& selection, int lease_seconds);

// The identifier of an entry that is named by it or by its base path.
std::string short_identifier(const char* id);

}  // namespace vel

#endif
