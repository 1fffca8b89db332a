// The queue's tables in one SQLite database.
#ifndef VEL_PLATFORM_QUEUE_SQLITE_DRIVER_H
#define VEL_PLATFORM_QUEUE_SQLITE_DRIVER_H

#include <sys/types.h>

#include <memory>

#include "platform/queue/driver.h"
#include "platform/sqlite/database.h"

namespace vel {

class SqliteDriver : public Driver {
  public:
    // Opens the database, and makes it when it is not there.
    explicit SqliteDriver(std::string path);
    ~SqliteDriver() override;

    void commit(std::span<const Entry* const> entries) override;
    bool has(const std::string& id) override;
    std::vector<std::string> identifiers(const std::string& after, std::size_t limit) override;
    void seal() override;

    std::optional<Entry> read(const std::string& id) override;
    std::vector<Entry> list(const ListFilter& filter, std::size_t limit) override;
    std::vector<Count> count() override;

    std::optional<Entry> claim(const ClaimRequest& request) override;
    std::size_t extend(const Selection& selection, int64_t lease_until) override;
    Settled change(const Selection& selection, const Change& change) override;
    Settled remove(const Selection& selection) override;

    std::vector<std::string> claimants() override;
    void take_back(const std::string& consumer, int64_t now) override;

    std::vector<std::string> faults() override;

  private:
    // The connection of this process to the file that has the name now. The child of a fork opens its own.
    Database& database();
    void forget_parents();

    const std::string path_;
    std::unique_ptr<Database> database_;
    pid_t process_ = 0;
};

}  // namespace vel

#endif
