// Base64 and quoted-printable once more, slow and obvious: a character at a time, through buffers of 256
// bytes.
#ifndef VEL_TESTS_CODEC_SLOW_CODECS_H
#define VEL_TESTS_CODEC_SLOW_CODECS_H

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <string>
#include <string_view>

#include "tests/support/small_disk.h"

namespace vel::test {

// A counted stretch of a file.
class SlowInput {
  public:
    SlowInput(std::string_view file, std::size_t count) : file_(file), left_(count) {}
    bool used_up() const { return left_ == 0; }
    int get() {
        if (at_ == file_.size()) return -1;
        if (at_ % 256 == 0) offset_ = std::min(at_ + 256, file_.size());
        --left_;
        return static_cast<unsigned char>(file_[at_++]);
    }
    std::size_t offset() const { return offset_; }

  private:
    std::string_view file_;
    std::size_t left_;
    std::size_t at_ = 0;
    std::size_t offset_ = 0;
};

// A file on a disk with so much space.
class SlowOutput {
  public:
    explicit SlowOutput(std::size_t disk = kEndless) : disk_(disk) {}
    bool put(int byte) {
        if (buffer_.size() == 256 && !flush()) return false;
        buffer_ += static_cast<char>(byte);
        return true;
    }
    bool put(std::string_view text) {
        return std::all_of(text.begin(), text.end(), [this](char c) { return put(static_cast<int>(c)); });
    }
    bool flush() {
        const std::size_t fits = std::min(buffer_.size(), disk_ - file.size());
        file += buffer_.substr(0, fits);
        const bool all = fits == buffer_.size();
        buffer_.clear();
        return all;
    }
    std::string file;

  private:
    std::size_t disk_;
    std::string buffer_;
};

inline int slow_from64(SlowInput& in, SlowOutput& out) {
    static constexpr std::string_view kAlphabet = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    unsigned bits = 0;
    for (int place = 0; !in.used_up();) {
        const int c = in.get();
        if (c == -1) return -1;
        if (c == '=' || c == '-' || c == 0) break;
        if (c == ' ' || (c >= 9 && c <= 13)) continue;
        const auto value = kAlphabet.find(static_cast<char>(c));
        if (value == std::string_view::npos) return -1;
        bits = bits * 64 + static_cast<unsigned>(value);
        if (place == 1 && !out.put(static_cast<uint8_t>(bits >> 4))) return -1;
        if (place == 2 && !out.put(static_cast<uint8_t>(bits >> 2))) return -1;
        if (place == 3 && !out.put(static_cast<uint8_t>(bits))) return -1;
        place = (place + 1) % 4;
    }
    return out.flush() ? 1 : -1;
}

inline int slow_hex(int c) {
    if (c >= '0' && c <= '9') return c - '0';
    if (c >= 'A' && c <= 'F') return c - 'A' + 10;
    if (c >= 'a' && c <= 'f') return c - 'a' + 10;
    return 255;
}

inline int slow_fromqp(SlowInput& in, SlowOutput& out) {
    for (bool line_end = false; !in.used_up();) {
        const int c = in.get();
        if (c == -1) return -1;
        if (line_end && !out.put("\r\n")) return -1;
        line_end = c == '\n';
        if (c == '\r' || c == '\n') continue;
        if (c != '=') {
            if (!out.put(c)) return -1;
            continue;
        }
        const int first = in.used_up() ? -1 : in.get();
        if (first == -1) break;
        const int second = in.used_up() ? -1 : in.get();
        if (second == -1) return 0;
        if (first == '\r') continue;
        const bool bad = slow_hex(first) == 255 || slow_hex(second) == 255;
        if (!out.put(bad ? 255 : slow_hex(first) * 16 + slow_hex(second))) return 0;
    }
    return out.flush() ? 1 : -1;
}

// A column that knows when the line is full.
struct SlowQp {
    SlowOutput& out;
    int column = 0;
    int previous = 255;
    bool cr = false;
    bool good = true;

    void put(std::string_view text, int columns) {
        good = good && out.put(text);
        column += columns;
    }
    void escape(int c, int columns) {
        char text[4];
        std::snprintf(text, sizeof text, "=%02X", static_cast<unsigned>(c));
        put(text, columns);
    }
    void late_cr() {
        if (cr) escape('\r', 3);
        cr = false;
    }
    void step_done() {
        if (column < 73) return;
        put("=\r\n", 0);
        column = 0;
        previous = '\n';
    }
    bool finish() {
        if (column != 0) put("=\r\n", 0);
        put("\r\n", 0);
        return good && out.flush();
    }
};

inline int slow_text_to_qp(SlowInput& in, SlowOutput& out, bool end_in_from_fails) {
    SlowQp qp{out};
    for (int c = -1, carried = -1; qp.good; qp.step_done()) {
        if (carried == -1 && in.used_up()) break;
        c = carried == -1 ? in.get() : carried;
        carried = -1;
        if (c == -1) return -1;
        if (c == '\r') {
            qp.late_cr();
            qp.cr = true;
        } else if (c == '\n' && qp.cr) {
            if (qp.previous == ' ' || qp.previous == '\t') qp.put("=\r\n", 0);
            qp.put("\r\n", 0);
            qp.column = 0;
            qp.previous = '\n';
            qp.cr = false;
        } else if (c == '\n') {
            qp.escape(c, 0);
        } else if ((c < 32 && c != '\t') || c == '=' || c > 126 || (c == '.' && qp.column == 0)) {
            qp.late_cr();
            qp.escape(c, 3);
            qp.previous = 'A';
        } else if (c == 'F' && qp.previous == '\n') {
            qp.late_cr();
            if (!qp.good) break;
            std::string seen = "F";
            while (seen.size() < 5 && !in.used_up() && carried == -1) {
                const int next = in.get();
                if (next == "From "[seen.size()]) {
                    seen += static_cast<char>(next);
                } else {
                    carried = next;
                }
            }
            const bool guarded = seen == "From ";
            if (guarded) {
                carried = ' ';
            } else if (carried == -1 && end_in_from_fails) {
                return -1;
            }
            guarded ? qp.put("=46rom", 6) : qp.put(seen, static_cast<int>(seen.size()));
            qp.previous = 'x';
        } else {
            qp.late_cr();
            qp.put(std::string(1, static_cast<char>(c)), 1);
            qp.previous = c;
        }
    }
    return qp.good && qp.finish() ? 1 : -1;
}

inline int slow_binary_to_qp(SlowInput& in, SlowOutput& out) {
    for (SlowQp qp{out};; qp.step_done()) {
        if (!qp.good) return -1;
        if (in.used_up()) return qp.finish() ? 1 : -1;
        const int c = in.get();
        if (c == -1) return -1;
        if (c < 33 || c == '=' || c > 126 || (c == '.' && qp.column == 0)) {
            qp.escape(c, 3);
        } else {
            qp.put(std::string(1, static_cast<char>(c)), 1);
        }
    }
}

}  // namespace vel::test

#endif
