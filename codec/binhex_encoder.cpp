// Kept: a marker byte is never part of a run; it is written as a pair each time (DoRLEandHqx7).
// Kept: the last group is completed with bytes of 0xFF (FlushRemain).
#include "codec/binhex_encoder.h"

#include <algorithm>

#include "codec/binhex_alphabet.h"
#include "codec/words.h"

namespace vel {
namespace {

constexpr PairTable kPairs = pairs_of(kBinhexAlphabet);
constexpr unsigned kShortestRun = 3;
constexpr unsigned kPad = 0xFF;

void put_groups(const uint8_t* in, std::size_t count, Cursor& out) {
    for (std::size_t at = 0; at < count; at += 3) put_pairs(out, kPairs, in[at], in[at + 1], in[at + 2]);
}

// The last of 64 characters belongs to the next line.
void put_block(const uint8_t* in, Cursor& out) {
    put_groups(in, BinhexWork::kBlock, out);
    const uint8_t next_line = out[-1];
    --out;
    put_text(out, "\r\n");
    put_byte(out, next_line);
}

// Adds bytes as they are.
void put_literally(BinhexWork& work, Bytes bytes, Cursor& out) {
    while (work.held + bytes.size() >= BinhexWork::kBlock) {
        const std::size_t taken = BinhexWork::kBlock - work.held;
        if (work.held > 0) {
            std::copy_n(bytes.begin(), taken, work.block.begin() + work.held);
            work.held = 0;
            put_block(work.block.data(), out);
        } else {
            put_block(bytes.data(), out);
        }
        bytes = bytes.subspan(taken);
    }
    std::copy(bytes.begin(), bytes.end(), work.block.begin() + work.held);
    work.held += bytes.size();
}

// The number of bytes, behind the first, that differ from the byte before them and are no marker.
std::size_t without_run(Bytes bytes) {
    const uint8_t* const begin = bytes.data() + 1;
    const uint8_t* const end = bytes.data() + bytes.size();
    const uint8_t* at = begin;
    for (; end - at >= kWide; at += kWide) {
        const Wide wide = load_wide(at);
        const int before = bytes_before_wide_mark((wide == load_wide(at - 1)) | (wide == kBinhexMarker));
        if (before < kWide) return static_cast<std::size_t>(at + before - begin);
    }
    while (at < end && *at != at[-1] && *at != kBinhexMarker) ++at;
    return static_cast<std::size_t>(at - begin);
}

// The number of bytes at the beginning that are this one, of those that still fit into a run.
unsigned run_length(Bytes bytes, uint8_t byte, unsigned most) {
    const Bytes looked_at = bytes.first(std::min<std::size_t>(bytes.size(), most));
    const auto end = std::find_if(looked_at.begin(), looked_at.end(), [=](uint8_t other) { return other != byte; });
    return static_cast<unsigned>(end - looked_at.begin());
}

void put_pending(BinhexWork& work, Cursor& out) {
    if (work.count >= kShortestRun) {
        OutRep(work, work.last, work.count, out);
    } else {
        for (; work.count > 0; --work.count) OutHqx7(work, work.last, out);
    }
    work.count = 0;
}

}  // namespace

void BinhexEncoder::start(Cursor& out) {
    put_text(out, kBinhexBannerStart);
    put_text(out, "4.0)\r\n");
    put_byte(out, kBinhexColon);
}

void BinhexEncoder::finish(Cursor& out) {
    FlushRemain(work_, out);
    put_text(out, ":\r\n\r\n");
}

}  // namespace vel

void OutHqx7(vel::BinhexWork& work, unsigned byte, vel::Cursor& out) {
    work.block[work.held++] = static_cast<uint8_t>(byte);
    if (work.held < vel::BinhexWork::kBlock) return;
    vel::put_block(work.block.data(), out);
    work.held = 0;
}

void OutRep(vel::BinhexWork& work, unsigned byte, unsigned count, vel::Cursor& out) {
    OutHqx7(work, byte, out);
    OutHqx7(work, vel::kBinhexMarker, out);
    OutHqx7(work, count, out);
}

void DoRLEandHqx7(vel::BinhexWork& work, vel::Bytes bytes, vel::Cursor& out) {
    while (!bytes.empty()) {
        const uint8_t byte = bytes.front();
        std::size_t taken = 1;
        if (byte == vel::kBinhexMarker) {
            vel::put_pending(work, out);
            OutHqx7(work, vel::kBinhexMarker, out);
            OutHqx7(work, 0, out);
        } else if (work.count > 0 && byte == work.last) {
            taken = vel::run_length(bytes, byte, vel::kBinhexMostRun - work.count);
            work.count += static_cast<unsigned>(taken);
            if (work.count == vel::kBinhexMostRun) vel::put_pending(work, out);
        } else {
            vel::put_pending(work, out);
            const std::size_t passed = vel::without_run(bytes);
            vel::put_literally(work, bytes.first(passed), out);
            work.last = bytes[passed];
            work.count = 1;
            taken = passed + 1;
        }
        bytes = bytes.subspan(taken);
    }
}

void FlushRemain(vel::BinhexWork& work, vel::Cursor& out) {
    vel::put_pending(work, out);
    while (work.held % 3 != 0) OutHqx7(work, vel::kPad, out);
    vel::put_groups(work.block.data(), work.held, out);
    work.held = 0;
}
