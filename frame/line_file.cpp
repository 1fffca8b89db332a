// Lines, bytes and positions on one open file.
//
// Kept: a last line without LF that ends exactly where a full block ended is dropped (read_line).
// Kept: outch on a buffered file counts a flushed block twice (out).
// Kept: a step back moves the cursor only; the character handed in is not written back (step_back).
// Kept: positioning drops what is buffered and not written (set_position).
#include "frame/line_file.h"

#include <algorithm>
#include <cerrno>
#include <climits>
#include <cstdlib>
#include <cstring>

#include "frame/log.h"

static_assert(sizeof(void*) != 4 || sizeof(VEL_FILE) == 40);

VEL_FILE* NewVEL_FILE() {
    vel::COwned<VEL_FILE> file(static_cast<VEL_FILE*>(std::calloc(1, sizeof(VEL_FILE))));
    if (!file) return nullptr;
    vel::COwned<uint8_t> buffer(static_cast<uint8_t*>(std::calloc(1, vel::kBlock)));
    vel::COwned<char> line(static_cast<char*>(std::calloc(1, vel::kLineMax + 1)));
    if (!buffer || !line) return nullptr;
    file->fd = -1;
    file->buf = buffer.release();
    file->line = line.release();
    return file.release();
}

void DelVEL_FILE(VEL_FILE** file) {
    if (!file || !*file) return;
    const vel::Descriptor closed_last((*file)->fd);
    std::free((*file)->name);
    std::free((*file)->line);
    std::free((*file)->buf);
    std::free(*file);
    *file = nullptr;
}

namespace vel {
namespace {

// Of a reader, flushpos tells how positions are taken.
constexpr int32_t kByDescriptor = 0;  // the descriptor follows each one
constexpr int32_t kInBlock = 1;       // it may stay behind the block
constexpr int32_t kCutShort = 2;      // so it has: a short block is not the end

}  // namespace

ssize_t read_again(int fd, void* buffer, std::size_t length) {
    ssize_t got = 0;
    do got = ::read(fd, buffer, length);
    while (got == -1 && errno == EINTR);
    return got;
}

bool write_all(int fd, const void* data, std::size_t length) {
    const char* from = static_cast<const char*>(data);
    while (length > 0) {
        const ssize_t put = ::write(fd, from, length);
        if (put == -1 && errno == EINTR) continue;
        if (put <= 0) return false;
        from += put;
        length -= static_cast<std::size_t>(put);
    }
    return true;
}

// Reads the rest of a block behind the bytes of it that are there. On failure the record stays as it was,
// so that a retry reads again.
bool LineFile::read_behind(int32_t kept, const char* message) {
    const int32_t room = std::min(kBlock - kept, INT32_MAX - f_.pos);  // a file ends where positions do
    const ssize_t got = can_read() ? read_again(f_.fd, f_.buf + kept, static_cast<std::size_t>(room)) : -1;
    if (got < 0) {
        log_text(kLogError, message);
        return false;
    }
    f_.cur = f_.buf + kept;
    f_.cnt = kept + static_cast<int32_t>(got);
    if (f_.flushpos == kCutShort) f_.flushpos = kInBlock;
    return true;
}

// When the bytes that return_to has kept are used up, the block that begins with them is completed.
bool LineFile::complete_block(const char* message) {
    return f_.flushpos != kCutShort || !is_used_up() || read_behind(f_.cnt, message);
}

LineResult LineFile::next(std::string_view& line) {
    if (needs_block() && !fill("ReadFile failed.")) return LineResult::error;
    if (!complete_block("ReadFile failed.")) return LineResult::error;
    if (f_.cnt == 0 || at_end()) return LineResult::end;

    std::size_t length = 0;
    bool complete = false;
    while (!complete && length < kLineMax && !at_end()) {
        if (f_.cur == f_.buf + kBlock) {
            if (!fill("getline: ReadFile failed.")) return LineResult::error;
            if (f_.cnt == 0) return LineResult::end;  // Kept: the partial line is dropped.
        }
        const std::size_t there = static_cast<std::size_t>(f_.buf + f_.cnt - f_.cur);
        std::size_t taken = std::min(there, kLineMax - length);
        if (const void* feed = std::memchr(f_.cur, '\n', taken)) {
            taken = static_cast<std::size_t>(static_cast<const uint8_t*>(feed) - f_.cur) + 1;
            complete = true;
        }
        std::memcpy(f_.line + length, f_.cur, taken);
        length += taken;
        pass(taken);
        if (!complete && length < kLineMax && !complete_block("getline: ReadFile failed.")) return LineResult::error;
    }
    f_.line[length] = '\0';
    line = {f_.line, length};
    return LineResult::line;
}

std::string_view LineFile::next_lines() {
    if (needs_block()) return {};
    const auto there = static_cast<std::size_t>(f_.buf + f_.cnt - f_.cur);
    const void* last_feed = ::memrchr(f_.cur, '\n', there);
    if (!last_feed) return {};
    const std::string_view lines(reinterpret_cast<const char*>(f_.cur), static_cast<const char*>(last_feed) + 1);
    if (lines.find('\0') != lines.npos) return {};
    pass(lines.size());
    return lines;
}

LineResult LineFile::next_with(std::string_view prefix, std::string_view& line) {
    return next_where([=](std::string_view text) { return text.starts_with(prefix); }, line);
}

int LineFile::read_line(char** line) {
    if (!line) return -1;
    std::string_view text;
    const LineResult result = next(text);
    if (result == LineResult::line) *line = f_.line;
    return static_cast<int>(result);
}

int LineFile::in() {
    constexpr const char* kFailed = "inch: ReadFile failed.";
    if ((needs_block() || f_.cur == f_.buf + kBlock) && !fill(kFailed)) return -1;
    if (!complete_block(kFailed)) return -1;
    if (f_.cnt == 0 || f_.cur == f_.buf + f_.cnt) return -1;
    ++f_.pos;
    return *f_.cur++;
}

void LineFile::step_back() {
    if (f_.pos == 0) return;
    --f_.pos;
    if (f_.cur && f_.cur > f_.buf) {
        --f_.cur;
        return;
    }
    ::lseek(f_.fd, -(static_cast<off_t>(f_.cnt) + 1), SEEK_CUR);
    drop_buffer();
}

// Positions are 31 bits: a write that would pass the last one fails.
bool LineFile::would_overflow(std::size_t more) {
    if (more <= static_cast<std::size_t>(INT32_MAX - f_.pos)) return false;
    errno = EFBIG;
    return true;
}

// cnt counts valid bytes for a reader and free ones for a writer, so that one file never does both.
bool LineFile::can_read() const {
    if (f_.mode == 0) return true;
    errno = EBADF;
    return false;
}

bool LineFile::start_buffer() {
    if (f_.mode == 0) {
        errno = EBADF;
        return false;
    }
    if (!f_.cur) empty_buffer();
    return true;
}

void LineFile::empty_buffer() {
    f_.cur = f_.buf;
    f_.cnt = kBlock;
}

bool LineFile::write_blocks(const void* blocks, std::size_t length, const char* message) {
    if (write_all(f_.fd, blocks, length)) return true;
    log_text(kLogError, message);
    return false;
}

// The descriptor's offset becomes the position; one that does not fit fails, and a pipe has none.
bool LineFile::take_real_offset() {
    const off_t offset = ::lseek(f_.fd, 0, SEEK_CUR);
    if (offset > INT32_MAX) {
        errno = EFBIG;
        return false;
    }
    if (offset != -1) f_.pos = static_cast<int32_t>(offset);
    f_.flushpos = f_.pos;
    return true;
}

int LineFile::put(std::string_view text) {
    constexpr const char* kFailed = "putline: WriteFile failed.";
    if (would_overflow(text.size())) return -1;
    if (!f_.buffered) {
        if (!write_all(f_.fd, text.data(), text.size())) return -1;
        f_.pos += static_cast<int32_t>(text.size());
        return 1;
    }
    if (!start_buffer()) return -1;
    if (const auto room = static_cast<std::size_t>(f_.cnt); text.size() >= room) {
        std::memcpy(f_.cur, text.data(), room);
        if (!write_blocks(f_.buf, kBlock, kFailed)) return -1;
        f_.pos += static_cast<int32_t>(room);
        empty_buffer();
        text.remove_prefix(room);
        if (!take_real_offset() || would_overflow(text.size())) return -1;
        const std::size_t whole = text.size() / kBlock * kBlock;
        if (whole > 0 && !write_blocks(text.data(), whole, kFailed)) return -1;
        f_.pos += static_cast<int32_t>(whole);
        text.remove_prefix(whole);
    }
    std::memcpy(f_.cur, text.data(), text.size());
    f_.cur += text.size();
    f_.cnt -= static_cast<int32_t>(text.size());
    f_.pos += static_cast<int32_t>(text.size());
    return 1;
}

int LineFile::out(int character) {
    const auto byte = static_cast<uint8_t>(character);
    if (!f_.buffered) {
        if (would_overflow(1) || !write_all(f_.fd, &byte, 1)) return -1;
        ++f_.pos;
        return 1;
    }
    if (!start_buffer()) return -1;
    if (f_.cnt <= 0) {
        if (would_overflow(kBlock + 1)) return -1;
        if (!write_blocks(f_.buf, kBlock, "outch: WriteFile failed.")) return -1;
        f_.pos += kBlock;  // Kept: these bytes were counted one by one before.
        empty_buffer();
    } else if (would_overflow(1)) {
        return -1;
    }
    *f_.cur++ = byte;
    --f_.cnt;
    ++f_.pos;
    return 1;
}

void LineFile::drop_buffer() {
    f_.cur = nullptr;
    f_.cnt = 0;
    if (f_.flushpos == kCutShort && f_.mode == 0) f_.flushpos = kInBlock;
}

int LineFile::set_position(int32_t position) {
    drop_buffer();
    if (::lseek(f_.fd, position, SEEK_SET) == -1) {
        log_text(kLogError, "setfpos: Internal file I/O error");
        return -1;
    }
    return f_.pos = position;
}

void LineFile::take_descriptor() {
    if (f_.mode == 0 && ::lseek(f_.fd, 0, SEEK_CUR) != -1) f_.flushpos = kInBlock;
}

int LineFile::return_to(int32_t position) {
    if (needs_block() || f_.flushpos == kByDescriptor) return set_position(position);
    const int32_t began = f_.pos - static_cast<int32_t>(f_.cur - f_.buf);
    const int32_t passed = position - began;
    if (position < began || passed > f_.cnt) return set_position(position);
    f_.flushpos = kCutShort;
    f_.cnt -= passed;
    std::memmove(f_.buf, f_.buf + passed, static_cast<std::size_t>(f_.cnt));
    f_.cur = f_.buf;
    return f_.pos = position;
}

bool LineFile::flush() {
    if (!f_.buffered || f_.mode != 1 || !f_.cur || f_.cur == f_.buf) return true;
    if (!write_all(f_.fd, f_.buf, static_cast<std::size_t>(kBlock - f_.cnt))) return false;
    empty_buffer();
    return true;
}

}  // namespace vel
