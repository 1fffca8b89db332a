#include "tools/verbs/many_files.h"

#include <sched.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <condition_variable>
#include <exception>
#include <mutex>
#include <nlohmann/json.hpp>
#include <system_error>
#include <thread>
#include <vector>

#include "tools/io/find_files.h"
#include "tools/io/progress.h"
#include "tools/message/message_json.h"
#include "tools/text/text_forms.h"

namespace vel::command {
namespace {

constexpr std::chrono::milliseconds kBetweenTicks{100};

// The machine may have more than this process may use.
std::size_t usable_cores() {
    cpu_set_t set;
    if (::sched_getaffinity(0, sizeof set, &set) == 0) return static_cast<std::size_t>(CPU_COUNT(&set));
    return std::thread::hardware_concurrency();
}

// An empty name would not be seen in a message.
std::string shown(const std::string& name) { return name.empty() ? "\"\"" : name; }

// What every file of the run is treated with.
struct Treatment {
    const FileWork& work;
    bool json;
};

Exit give_up(const std::string& file, const char* reason, Exit exit, bool json, Output& output) {
    output.complain(shown(file), reason);
    if (json) output.write(one_line({{"file", json_text(file)}, {"error", json_text(reason)}}).append("\n"));
    return exit;
}

Exit run_one(const FoundFile& file, Session& session, const Treatment& treatment) {
    try {
        if (!file.trouble.empty()) throw Failure(Exit::no_input, file.trouble);
        return treatment.work(file.name, session);
    } catch (const Failure& failure) {
        return give_up(file.name, failure.what(), failure.exit(), treatment.json, session.output);
    } catch (const std::exception& failure) {
        return give_up(file.name, failure.what(), Exit::io_error, treatment.json, session.output);
    }
}

Exit run_all(const std::vector<FoundFile>& files, Session& session, const Treatment& treatment) {
    Progress progress(session.output.streams(), Progress::Unit::files, files.size());
    Exit worst = Exit::success;
    for (const FoundFile& file : files) {
        worst = worse(worst, run_one(file, session, treatment));
        session.output.flush();
        progress.advance(1);
    }
    return worst;
}

// Every thread takes the next file when it is done with one.
class Crew {
  public:
    Crew(const std::vector<FoundFile>& files, Session& session, const Treatment& treatment)
        : files_(files),
          scratch_(session.scratch),
          treatment_(treatment),
          turns_(session.output.streams()),
          progress_(session.output.streams(), Progress::Unit::files, files.size()) {}

    Exit run(std::size_t count) {
        {
            std::vector<std::jthread> threads;
            while (threads.size() < count && start(threads)) {
            }
            watch();
        }
        if (thrown_) std::rethrow_exception(thrown_);
        return worst_;
    }

  private:
    // False when the machine gives no more threads and those that run must do. Throws when none does.
    bool start(std::vector<std::jthread>& threads) {
        const std::lock_guard held(mutex_);
        try {
            threads.emplace_back([this] { work_on(); });
            ++working_;
            return true;
        } catch (const std::system_error&) {
            if (threads.empty()) throw;
            return false;
        }
    }

    void work_on() {
        try {
            Journal journal;
            while (!turns_.is_stopped()) {
                const std::size_t place = next_++;
                if (place >= files_.size()) break;
                Output output(turns_, place);
                Session session{scratch_, journal, output};
                note(run_one(files_[place], session, treatment_));
                output.finish();
                progress_.advance(1);
            }
        } catch (const Stopped&) {
        } catch (...) {
            give_up(std::current_exception());
        }
        const std::lock_guard held(mutex_);
        --working_;
        done_.notify_one();
    }

    void note(Exit exit) {
        const std::lock_guard held(mutex_);
        worst_ = worse(worst_, exit);
    }

    void give_up(std::exception_ptr thrown) {
        {
            const std::lock_guard held(mutex_);
            if (!thrown_) thrown_ = std::move(thrown);
        }
        turns_.stop();
    }

    // Keeps the progress up to date while the threads are busy with long files.
    void watch() {
        std::unique_lock held(mutex_);
        while (!done_.wait_for(held, kBetweenTicks, [this] { return working_ == 0; })) {
            held.unlock();
            progress_.tick();
            held.lock();
        }
    }

    const std::vector<FoundFile>& files_;
    Scratch& scratch_;
    const Treatment& treatment_;
    Turns turns_;
    Progress progress_;
    std::atomic<std::size_t> next_ = 0;
    std::mutex mutex_;
    std::condition_variable done_;
    std::size_t working_ = 0;
    Exit worst_ = Exit::success;
    std::exception_ptr thrown_;
};

}  // namespace

Exit for_each_file(const CommandLine& line, Session& session, const FileWork& work) {
    const std::vector<FoundFile> files = find_files(line.files, line.recursive);
    const Treatment treatment{work, line.json};
    const std::size_t threads = std::min(usable_cores(), files.size());
    const Exit worst = threads > 1 ? Crew(files, session, treatment).run(threads) : run_all(files, session, treatment);
    return worse(worst, session.output.streams().exit());
}

}  // namespace vel::command
