// Disks and memory that run out while a notice is made: there is all of it, or nothing.
#include <functional>

#include "tests/notify/notified.h"

namespace vel::test {
namespace {

class FaultsTest : public NotifyTest {
  protected:
    struct Call {
        std::function<int()> make;
        int refused;            // what it answers when the queue takes nothing
        std::string complaint;  // how it begins what it says of each failure; empty: it does not say all
        const char* told;       // "a|b": behind that, for want of memory
    };

    // Whether the notice was submitted.
    bool expect_all_or_nothing(const Call& call, int result) {
        const bool is_sent = !take_envelopes().empty();
        EXPECT_TRUE(is_sent ? result == 0 : result == -1 || result == call.refused) << result;
        EXPECT_THAT(left_behind("MIME"), testing::IsEmpty());
        return is_sent;
    }

    const std::string file_of_lines_ = file("lines.txt", "ascii\r\n");
    Chain texts_{"one"}, files_{file_of_lines_.c_str()};
    const _envFrom sender_{"joe@x.y", "", 0, 0, "", ""};
    const DSNEnvelope envelope_{"joe@x.y", "id", 0, 0, 0};
    const PerRecipField failed_{};
    const PerRecipChain recipients_{&failed_, nullptr};
    const std::string bounce_ = "BounceMimeMessage failed: ", copy_ = "BounceMimeMessageToPostmaster failed",
                      generate_ = "GenerateMimeMessage failed: ";
    const std::vector<Call> calls_ = {
        {[this] { return BounceMimeMessage(path_.c_str(), &sender_, texts_, 0, nullptr); }, -1, bounce_,
         "out of memory.|filecreate error."},
        {[this] { return BounceMimeMessageHeader(path_.c_str(), texts_, 0, nullptr); }, -1, bounce_,
         "out of memory.|filecreate error.|fileopen failed."},
        {[this] { return BounceMimeMessageToPostmaster(path_.c_str(), texts_, 0, nullptr); }, -1, copy_,
         ". out of memory.|: out of memory.|. filecreate failed."},
        {[this] { return GenerateDSNMessage(path_.c_str(), &envelope_, "s", texts_, &recipients_); }, -1, "",
         "Out of memory."},
        {[this] { return GenerateMimeMessage("me@x.y", "out", texts_, "s", 7, texts_, files_, 0); }, 0, generate_,
         "out of memory.|filecreate failed."},
    };
};

TEST_F(FaultsTest, a_disk_full_at_any_byte_leaves_nothing) {
    for (const Call& call : calls_) {
        ASSERT_EQ(call.make(), 0);
        const std::size_t whole = queue_.messages.back().size();
        take_envelopes();
        for (std::size_t size = 4; size <= whole; ++size) {
            const SmallDisk full(size);
            EXPECT_EQ(expect_all_or_nothing(call, call.make()), size == whole) << size;
        }
    }
    take_log();
}

TEST_F(FaultsTest, memory_short_at_any_request_leaves_nothing) {
    for (const Call& call : calls_) {
        std::vector<std::string> told;
        std::string ending;
        const auto test = [&] {
            queue_.calls.clear();
            const int result = [&] {
                const Starved starved(granted_, refused_);
                return call.make();
            }();
            const std::string notice = sent();
            if (ending.empty()) ending = notice.substr(notice.size() - 20);
            const bool is_sent = expect_all_or_nothing(call, result);
            EXPECT_TRUE(!is_sent || notice.ends_with(ending)) << notice;
            bool is_told = call.complaint.empty();
            for (const std::string& line : take_log(1)) {
                if (!line.starts_with(call.complaint)) continue;
                is_told = true;
                if (queue_.calls.empty()) told.push_back(line.substr(call.complaint.size()));
            }
            EXPECT_TRUE(result == 0 || is_told) << granted_;
        };
        for (const std::size_t refused : {std::size_t{1}, kEveryRequest}) with_little_memory(refused, test);
        EXPECT_THAT(told, testing::IsSupersetOf(split(call.told))) << call.complaint;
    }
}

}  // namespace
}  // namespace vel::test
