// Kept: a last group that a colon cuts short is filled up with zeros (end_stream).
#include "codec/binhex_decoder.h"

#include <algorithm>

#include "codec/quantum.h"

namespace vel {
namespace {

constexpr std::size_t kMostCharacters = 32 * 1024;                // taken at once
constexpr std::size_t kPackedRoom = kMostCharacters / 4 * 3 + 8;  // with a group from before, stored as a word
constexpr std::size_t kRoom = 32 * 1024;                          // for decoded bytes
constexpr std::size_t kRunRoom = kBinhexMostRun;

constexpr auto kValues = places_in<256>(kBinhexAlphabet);
constexpr Shares kShares = shares_of(kValues);

bool is_skipped(uint8_t character) {
    return character == '\r' || character == '\n' || character == ' ' || character == '\t';
}

// Takes groups that nothing interrupts but a line end.
const uint8_t* whole_groups(const uint8_t* at, const uint8_t* end, Cursor& out) {
    while (end - at >= 4) {
        const uint32_t bytes = quantum_of(kShares, at);
        if (bytes & kMarked) break;
        std::memcpy(out, &bytes, sizeof bytes);
        out += 3;
        at += 4;
    }
    return at;
}

void put_group_bytes(SplitBHWorkArea& work, int count, Cursor& out) {
    const uint32_t bits = work.group << 6 * (4 - work.collected);
    for (int byte = 0; byte < count; ++byte) put_byte(out, bits >> (16 - 8 * byte));
    work.group = 0;
    work.collected = 0;
}

// Without a colon only bytes count whose bits are all there.
void end_stream(SplitBHWorkArea& work, SplitBHWorkArea::End end, Cursor& out) {
    work.end = end;
    if (work.collected == 0) return;
    put_group_bytes(work, end == SplitBHWorkArea::End::colon ? 3 : work.collected - 1, out);
}

void take_character(SplitBHWorkArea& work, uint8_t character, Cursor& out) {
    const uint8_t value = kValues[character];
    if (value != kNoDigit) {
        work.group = work.group << 6 | value;
        if (++work.collected == 4) put_group_bytes(work, 3, out);
    } else if (character == kBinhexColon) {
        end_stream(work, SplitBHWorkArea::End::colon, out);
    } else if (!is_skipped(character)) {
        end_stream(work, SplitBHWorkArea::End::refused, out);
    }
}

// Asks for characters when there are none.
void refill(SplitBHWorkArea& work) {
    if (work.input.empty()) work.input = work.next_block();
    if (!work.input.empty()) {
        DecodeBinHexToBuffer(work);
    } else {
        Cursor out = work.packed_buffer.get();
        end_stream(work, SplitBHWorkArea::End::cut, out);
        work.packed = {work.packed_buffer.get(), out};
    }
}

void expand_run(SplitBHWorkArea& work, uint8_t count, Cursor& out) {
    work.marked = false;
    if (count == 0) {
        work.last = kBinhexMarker;
        put_byte(out, work.last);
    } else {
        out = std::fill_n(out, count - 1, work.last);  // the first one is out already
    }
}

// Copies bytes up to a marker, which it takes too.
const uint8_t* copy_literally(SplitBHWorkArea& work, const uint8_t* at, const uint8_t* end, Cursor& out) {
    const void* found = std::memchr(at, kBinhexMarker, static_cast<std::size_t>(end - at));
    const uint8_t* const stop = found ? static_cast<const uint8_t*>(found) : end;
    if (stop > at) work.last = stop[-1];
    out = std::copy(at, stop, out);
    work.marked = found != nullptr;
    return work.marked ? stop + 1 : stop;
}

}  // namespace

Bytes next_bytes(SplitBHWorkArea& work, std::size_t most, int& result) {
    result = ReadDecodeExpand(work);
    const Bytes taken = work.output.first(std::min(most, work.output.size()));
    work.output = work.output.subspan(taken.size());
    return taken;
}

int take_bytes(SplitBHWorkArea& work, void* to, std::size_t count) {
    int result = kBinhexDone;
    for (auto* out = static_cast<uint8_t*>(to); count > 0 && result == kBinhexDone;) {
        const Bytes bytes = next_bytes(work, count, result);
        out = std::copy(bytes.begin(), bytes.end(), out);
        count -= bytes.size();
    }
    return result;
}

}  // namespace vel

SplitBHWorkArea::SplitBHWorkArea(vel::NextBlock blocks, vel::Bytes rest)
    : next_block(std::move(blocks)),
      input(rest),
      packed_buffer(std::make_unique_for_overwrite<uint8_t[]>(vel::kPackedRoom)),
      buffer(std::make_unique_for_overwrite<uint8_t[]>(vel::kRoom)) {}

int DecodeBinHexToBuffer(SplitBHWorkArea& work) {
    const uint8_t* at = work.input.data();
    const uint8_t* const end = at + std::min(work.input.size(), vel::kMostCharacters);
    vel::Cursor out = work.packed_buffer.get();
    while (at < end && work.end == SplitBHWorkArea::End::none) {
        if (work.collected == 0) at = vel::whole_groups(at, end, out);
        if (at < end) vel::take_character(work, *at++, out);
    }
    work.input = work.input.subspan(static_cast<std::size_t>(at - work.input.data()));
    work.packed = {work.packed_buffer.get(), out};
    return work.end == SplitBHWorkArea::End::refused ? vel::kBinhexRefused : vel::kBinhexDone;
}

void RunLengthExpansion(SplitBHWorkArea& work) {
    const uint8_t* at = work.packed.data();
    const uint8_t* const end = at + work.packed.size();
    vel::Cursor out = work.buffer.get();
    for (const uint8_t* const full = out + vel::kRoom; at < end;) {
        const std::ptrdiff_t room = full - out;
        if (room < static_cast<std::ptrdiff_t>(vel::kRunRoom)) break;
        if (work.marked) {
            vel::expand_run(work, *at++, out);
        } else {
            at = vel::copy_literally(work, at, at + std::min(room, end - at), out);
        }
    }
    work.packed = {at, end};
    work.output = {work.buffer.get(), out};
}

int ReadDecodeExpand(SplitBHWorkArea& work) {
    while (work.output.empty()) {
        if (work.packed.empty()) {
            if (work.end == SplitBHWorkArea::End::refused) return vel::kBinhexRefused;
            if (work.end != SplitBHWorkArea::End::none) return vel::kBinhexFailed;
            vel::refill(work);
        }
        RunLengthExpansion(work);
    }
    return vel::kBinhexDone;
}
