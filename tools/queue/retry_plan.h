// When a delivery that did not work is tried again, and until when.
#ifndef VEL_TOOLS_QUEUE_RETRY_PLAN_H
#define VEL_TOOLS_QUEUE_RETRY_PLAN_H

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace vel::command {

// Times in seconds.
class RetryPlan {
  public:
    // From [Queue] RetryAfter and Lifetime, such as "5m, 15m, 1h" and "5d". Throws Failure (config), which names the
    // setting.
    static RetryPlan from_settings();
    RetryPlan(std::string_view retry_after, std::string_view lifetime);

    // When the next attempt is due, behind so many; nothing when the message would be too old by then.
    std::optional<int64_t> due(int64_t arrival, int attempts, int64_t now) const;

    // Whether what has been tried so often is late now: once, when each of the times has been waited.
    bool is_late(int attempts) const { return attempts == static_cast<int>(waits_.size()) + 1; }

    int64_t lifetime() const { return lifetime_; }

  private:
    std::vector<int64_t> waits_;  // the last one for all that follow
    int64_t lifetime_;
};

}  // namespace vel::command

#endif
