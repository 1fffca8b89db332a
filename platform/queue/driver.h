// What an engine that keeps the queue's tables must be able to do. Each call is one transaction, on disk when it
// returns; a call that throws has changed nothing. One thread at a time.
#ifndef VEL_PLATFORM_QUEUE_DRIVER_H
#define VEL_PLATFORM_QUEUE_DRIVER_H

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "platform/queue/entry.h"

namespace vel {

// Recipients of one entry.
struct Selection {
    std::string id;
    int32_t recipient = MQ_ALL;
    int32_t states = MQ_WAITING | MQ_CLAIMED | MQ_HELD;
    std::string consumer{};  // empty: whoever has claimed them, or nobody
};

// What becomes of recipients.
struct Change {
    int32_t state = MQ_WAITING;
    std::optional<int64_t> due{};         // deferred until then; nothing: as it was
    std::optional<std::string> reason{};  // nothing: as it was
};

// The recipients that a call has met, as they were before.
struct Settled {
    Entry entry;
    bool ended = false;  // the entry is no more
};

struct ListFilter {
    std::optional<std::string> channel;
    int32_t states = MQ_WAITING | MQ_CLAIMED | MQ_HELD;
    std::string after;  // an identifier
};

struct ClaimRequest {
    std::string consumer;
    std::optional<std::vector<std::string>> channels;  // nothing: all
    std::size_t limit = 0;                             // recipients; 0: all that are due
    int64_t now = 0;
    int64_t uptime = 0;  // leases go by it
    int64_t lease_until = 0;
};

struct Count {
    std::string channel;
    int32_t state;
    int64_t recipients;
    int64_t oldest;  // arrival
};

class Driver {
  public:
    virtual ~Driver() = default;

    // All of the entries, or none.
    virtual void commit(std::span<const Entry* const> entries) = 0;
    virtual bool has(const std::string& id) = 0;
    // The next identifiers of entries in their order.
    virtual std::vector<std::string> identifiers(const std::string& after, std::size_t limit) = 0;
    // Makes sure that no transaction that has failed can come to life again by a crash.
    virtual void seal() = 0;

    virtual std::optional<Entry> read(const std::string& id) = 0;
    // The next entries in the order of their identifiers, each with its recipients that match: no more than the
    // limit, fewer when they have very many recipients, none when there are no more.
    virtual std::vector<Entry> list(const ListFilter& filter, std::size_t limit) = 0;
    virtual std::vector<Count> count() = 0;

    // The entry whose turn it is, with its recipients that are now claimed. The turn goes by due time, then
    // identifier. A lease that has ended makes a recipient due at the request's now, behind all that nobody has
    // deferred.
    virtual std::optional<Entry> claim(const ClaimRequest& request) = 0;
    virtual std::size_t extend(const Selection& selection, int64_t lease_until) = 0;
    virtual Settled change(const Selection& selection, const Change& change) = 0;
    virtual Settled remove(const Selection& selection) = 0;

    // The consumers that have claims, and the end of all claims of one, as of a lease.
    virtual std::vector<std::string> claimants() = 0;
    virtual void take_back(const std::string& consumer, int64_t now) = 0;

    // What is wrong with the engine's own files, in its words.
    virtual std::vector<std::string> faults() = 0;
};

}  // namespace vel

#endif
