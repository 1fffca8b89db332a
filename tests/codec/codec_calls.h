// Running codecs in tests: over memory in pieces, and through the exported calls over files.
#ifndef VEL_TESTS_CODEC_CODEC_CALLS_H
#define VEL_TESTS_CODEC_CODEC_CALLS_H

#include <unistd.h>

#include <functional>
#include <ostream>

#include "tests/codec/fed.h"
#include "tests/codec/slow_codecs.h"
#include "tests/support/fixture.h"
#include "tests/support/small_disk.h"
#include "vel/codec.h"

namespace vel::test {

// What an exported call did: its result, the input's offset behind it, and the output.
struct Outcome {
    int result;
    std::size_t offset;
    std::string output;
    bool operator==(const Outcome&) const = default;
};

inline std::ostream& operator<<(std::ostream& out, const Outcome& outcome) {
    return out << outcome.result << " @" << outcome.offset << " " << testing::PrintToString(outcome.output);
}

class CodecTest : public VelTest {
  protected:
    using Call = std::function<int(int in, int out)>;

    // Runs a call from a file with this content to a new one.
    Outcome run(const Call& call, std::string_view input, std::size_t disk = kEndless) {
        const int in = CreateFile(file("in", input).c_str(), 1);
        const std::string path = file("out", "");
        const int out = CreateFile(path.c_str(), 2);
        Outcome outcome{};
        {
            const SmallDisk full(disk);
            outcome.result = call(in, out);
        }
        outcome.offset = static_cast<std::size_t>(SetFilePointer(in, 0, nullptr, SEEK_CUR));
        CloseHandle(in);
        CloseHandle(out);
        outcome.output = content(path);
        return outcome;
    }

    static Call counted(int (*call)(int, int32_t, int), int32_t count) {
        return [=](int in, int out) { return call(in, count, out); };
    }

    // The same of a slow codec.
    template <class Codec>
    static Outcome slow(Codec codec, std::string_view input, std::size_t count, std::size_t disk = kEndless) {
        SlowInput in(input, count);
        SlowOutput out(disk);
        const int result = codec(in, out);
        return {result, in.offset(), out.file};
    }

    // A text of random pieces.
    std::string random_text(const std::vector<std::string>& pieces, std::size_t length) {
        std::string text;
        while (text.size() < length) text += pieces[random_.below(static_cast<uint32_t>(pieces.size()))];
        return text.substr(0, length);
    }

    std::string random_bytes(std::size_t length) {
        std::string bytes(length, '\0');
        for (char& byte : bytes) byte = static_cast<char>(random_.below(256));
        return bytes;
    }

    std::size_t random_below(std::size_t bound) { return random_.below(static_cast<uint32_t>(bound)); }

  private:
    Random random_{1};
};

}  // namespace vel::test

#endif
