// From a message file to an entry of the queue.
#include <unistd.h>

#include <memory>
#include <new>

#include "build/copy_lines.h"
#include "build/date_lines.h"
#include "build/envelope.h"
#include "build/envelope_address.h"
#include "build/envelope_line.h"
#include "build/queue_entry.h"
#include "build/texts.h"
#include "build/trace_lines.h"
#include "frame/access.h"
#include "frame/at_boundary.h"
#include "frame/log.h"
#include "frame/new_file.h"
#include "frame/open_handle.h"
#include "vel/build.h"

namespace vel {
namespace {

struct Submission {
    _envFrom sender;
    const _envRecip* recipients;
    int count;
    const char* date;
    const char* file;
    bool wants_receipt;
    bool adds_mime_version;
};

struct HeaderFreed {
    void operator()(addr822* header) const { Free822Header(header); }
};
using Header = std::unique_ptr<addr822, HeaderFreed>;

bool exists(const char* path) { return !is_empty(path) && ::access(path, F_OK) == 0; }

// The message's header block; null when it cannot be read.
Header read_header(int message) {
    Header header(New822Header());
    if (!header) throw std::bad_alloc();
    return ParseHdr(message, header.get(), nullptr, nullptr) ? std::move(header) : nullptr;
}

void add_recipient(Envelope& envelope, _envRecip recipient) {
    std::string address = envelope_recipient(recipient.address);
    if (address.empty()) {
        log_text(kLogNotice, "Ignore empty recipient address.");
        return;
    }
    recipient.address = envelope.keep(std::move(address));
    envelope.add_recipient(recipient);
    line_of(recipient);
}

void fill(Envelope& envelope, const Submission& submission, const Sender& sender) {
    _envFrom from = submission.sender;
    from.address = sender.address.c_str();
    envelope.set_sender(from);
    line_of(from);  // Formed and not written, as each recipient's: memory that is short ends the call here.
    for (int i = 0; i < submission.count; ++i) add_recipient(envelope, submission.recipients[i]);
}

// Copies the message into the entry's file, behind the trace.
bool write_message(int message, const std::string& trace, NewFile& file) {
    if (setfpos(message, 0) != 0 || !file.put(trace)) return false;
    if (copy_lines(message, file.handle(), WithDatesRewritten()) != Copied::whole) return false;
    if (COwned<char>(file.keep())) return true;
    log_text(kLogError, "fileclose: WriteFile failed.");
    return false;
}

char* send(const Submission& submission) {
    QueueEntry entry;
    if (!entry || !exists(submission.file) || !entry.locate()) return nullptr;
    const OpenHandle message(fileopen(submission.file, kForReading, kUnbuffered));
    const Header header = message ? read_header(message.get()) : nullptr;
    auto file = header ? NewFile::create_at(copy_text(entry.message_path()), NewFile::Writes::buffered) : std::nullopt;
    if (!file) return nullptr;

    const Sender sender = envelope_sender(submission.sender.address);
    Envelope envelope;
    fill(envelope, submission, sender);
    const Trace trace{.short_id = entry.short_id(),
                      .id_domain = sender.domain,
                      .date = submission.date,
                      .receipt_to = submission.wants_receipt ? or_empty(submission.sender.address) : nullptr,
                      .adds_mime_version = submission.adds_mime_version};
    if (!write_message(message.get(), lines_of(trace, *header), *file)) return nullptr;
    if (!address_entry(entry.context(), or_empty(submission.sender.channel), envelope.record())) return nullptr;
    return entry.commit().release();
}

}  // namespace
}  // namespace vel

extern "C" char* MimeSendMessage(const char* sender, const char* envelope_id, int return_type, int, const char* text,
                                 const char* channel, const _envRecip* recipients, int count, const char* date,
                                 const char* file, intptr_t, int wants_receipt, int no_mime_version) {
    const vel::Submission submission{.sender = {.address = sender,
                                                .envelopeId = envelope_id,
                                                .returnType = return_type,
                                                .number = 0,
                                                .text = text,
                                                .channel = channel},
                                     .recipients = recipients,
                                     .count = recipients ? count : 0,
                                     .date = date,
                                     .file = file,
                                     .wants_receipt = wants_receipt != 0,
                                     .adds_mime_version = no_mime_version == 0};
    return vel::at_boundary<char*>(
        nullptr, [] { vel::log_text(vel::kLogError, "Out of memory."); }, [&] { return vel::send(submission); });
}
