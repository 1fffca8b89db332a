#include "tools/many_files.h"

#include <sched.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <condition_variable>
#include <exception>
#include <mutex>
#include <system_error>
#include <thread>
#include <vector>

#include "tools/find_files.h"
#include "tools/progress.h"

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

Exit run_one(const FoundFile& file, Session& session, const FileWork& work) {
    try {
        if (!file.trouble.empty()) throw Failure(Exit::no_input, file.trouble);
        return work(file.name, session);
    } catch (const Failure& failure) {
        session.output.complain(shown(file.name), failure.what());
        return failure.exit();
    } catch (const std::exception& failure) {
        session.output.complain(shown(file.name), failure.what());
        return Exit::io_error;
    }
}

Exit run_all(const std::vector<FoundFile>& files, Session& session, const FileWork& work) {
    Progress progress(session.output.streams(), Progress::Unit::files, files.size());
    Exit worst = Exit::success;
    for (const FoundFile& file : files) {
        worst = worse(worst, run_one(file, session, work));
        session.output.flush();
        progress.advance(1);
    }
    return worst;
}

// Every thread takes the next file when it is done with one.
class Crew {
  public:
    Crew(const std::vector<FoundFile>& files, Session& session, const FileWork& work)
        : files_(files),
          scratch_(session.scratch),
          work_(work),
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
                note(run_one(files_[place], session, work_));
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
    const FileWork& work_;
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
    const std::size_t threads = std::min(usable_cores(), files.size());
    const Exit worst = threads > 1 ? Crew(files, session, work).run(threads) : run_all(files, session, work);
    return worse(worst, session.output.streams().exit());
}

}  // namespace vel::command
