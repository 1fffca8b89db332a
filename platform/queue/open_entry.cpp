#include "platform/queue/open_entry.h"

#include <fcntl.h>
#include <sys/stat.h>

#include "platform/queue/accounting.h"
#include "platform/queue/identifier.h"
#include "platform/queue/report.h"
#include "platform/queue/settings.h"

namespace vel {
namespace {

constexpr mode_t kLockMode = 0660;

// An operator has to see a message that goes nowhere; a recipient without address stands for it.
void hold_without_recipients(Envelope& envelope) {
    Recipient& nobody = envelope.recipients.emplace_back();
    nobody.state = MQ_HELD;
    nobody.reason = "no recipients";
}

}  // namespace

OpenEntry::OpenEntry(std::shared_ptr<Store> store) : store_(std::move(store)), process_(::getpid()) {
    if (store_->directory().free_bytes() < minimum_free())
        throw QueueError("less space is free than [Queue] MinimumFree");
    message_ = make_owned([&](const std::string& id) { return store_->directory().message(id); });
    try {
        base_.assign(message_.path, 0, message_.path.size() - kMessageSuffix.size());
        make_lock();
    } catch (const std::exception&) {
        ::unlink(message_.path.c_str());
        throw;
    }
}

bool OpenEntry::is_ours() const { return process_ == ::getpid(); }

void OpenEntry::make_lock() const {
    const std::string path = base_ + std::string(kLockSuffix);
    Descriptor lock(::open(path.c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, kLockMode));
    if (lock && ::close(lock.release()) == 0) return;
    const auto error = QueueError::of_system("cannot make", path);
    ::unlink(path.c_str());
    throw error;
}

const char* OpenEntry::path(std::string_view extension) {
    const std::string path = std::string(base_).append(extension);
    for (const std::string& given : paths_) {
        if (given == path) return given.c_str();
    }
    return paths_.emplace_back(path).c_str();
}

void OpenEntry::set_channel(std::string channel, int priority) {
    channel_ = std::move(channel);
    priority_ = priority;
}

void OpenEntry::close() {
    Entry entry;
    try {
        entry = complete();
        store_->commit(entry);
    } catch (const CommitInDoubt&) {
        throw;  // Should the rows be there after all, so is the message; else the files are reclaimed.
    } catch (const std::exception&) {
        discard();
        throw;
    }
    account_all("queued", entry, module().data());
}

Entry OpenEntry::complete() const {
    if (channel_.empty()) throw QueueError("the entry has no channel");
    if (!envelope_) throw QueueError("the entry has no envelope");
    Entry entry{message_.id, channel_, priority_, 0, sync_message(), *envelope_};
    entry.arrival = now();
    if (entry.envelope.recipients.empty()) hold_without_recipients(entry.envelope);
    for (Recipient& recipient : entry.envelope.recipients) {
        recipient.channel = channel_;
        recipient.due = entry.arrival;
    }
    return entry;
}

// The descriptor has been open since before the first byte was written, so the kernel tells it of every failure to
// write one back.
int64_t OpenEntry::sync_message() const {
    const auto& [id, path, file] = message_;
    struct stat status;
    if (!leads_to(path, file.get())) throw QueueError("another file is in the place of " + path);
    if (::fsync(file.get()) != 0) throw QueueError::of_system("cannot sync", path);
    if (::fstat(file.get(), &status) != 0) throw QueueError::of_system("cannot use", path);
    if (status.st_size == 0) throw QueueError("the entry has no message: " + path);
    store_->directory().sync_shard_of(id);
    return status.st_size;
}

}  // namespace vel
