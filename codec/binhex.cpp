// BinHex files from AppleSingle files and back.
//
// Kept: the Finder's flags are written as 0, whatever the AppleSingle file says (header_of).
#include <algorithm>

#include "codec/apple_single_reader.h"
#include "codec/apple_single_writer.h"
#include "codec/big_endian.h"
#include "codec/binhex_combine.h"
#include "codec/binhex_forks.h"
#include "codec/binhex_start.h"
#include "codec/limited_input.h"
#include "frame/access.h"
#include "frame/at_boundary.h"
#include "frame/log.h"
#include "frame/new_file.h"
#include "frame/open_handle.h"
#include "vel/binhex.h"

namespace vel {
namespace {

constexpr const char* kPrefix = "binhex";

tagBinhex_Header header_of(const AppleParameters& parameters) {
    tagBinhex_Header header{};
    header.nameLength = parameters.name_length;
    std::copy_n(parameters.name, sizeof header.name, header.name);
    std::copy_n(parameters.type, sizeof header.type, header.type);
    std::copy_n(parameters.creator, sizeof header.creator, header.creator);
    header.dataLength = to_MAC_LONG(parameters.data.length);
    header.resourceLength = to_MAC_LONG(parameters.resource.length);
    header.crc = to_MAC_WORD(CalcHeaderCRC(header));
    return header;
}

int to_binhex(const char* source, char*& path) {
    const OpenHandle input(CreateFile(source, kForReading));
    AppleParameters parameters;
    if (!input || GetBinhexParameterFromAS(input.get(), parameters) != 0) return kBinhexFailed;
    std::optional<NewFile> output = NewFile::create(kPrefix, NewFile::Writes::direct);
    if (!output) return kBinhexFailed;
    const int result = CombineBinhexRaw(header_of(parameters), input.get(), parameters.data.offset,
                                        parameters.resource.offset, output->handle());
    if (result != kBinhexDone) return result;
    path = output->keep();
    return path ? kBinhexDone : kBinhexFailed;
}

int write_apple_single(SplitBHWorkArea& work, int handle, tagBinhex_Header& header) {
    AppleSingleWriter file(handle);
    if (!file.start()) return kBinhexFailed;
    const int result = SplitBinHexForks(
        work, header, [&](Bytes bytes) { return ASDataForkCallback(file, bytes); },
        [&](Bytes bytes) { return ASResourceForkCallback(file, bytes); });
    if (result != kBinhexDone) return result;
    return file.finish(header) ? kBinhexDone : kBinhexFailed;
}

int to_apple_single(SplitBHWorkArea& work, char*& path, char** name) {
    std::optional<NewFile> output = NewFile::create(kPrefix, NewFile::Writes::direct);
    if (!output) return kBinhexFailed;
    tagBinhex_Header header{};
    const int result = write_apple_single(work, output->handle(), header);
    if (result != kBinhexDone) return result;
    COwned<char> found = copy_text({header.name, header.nameLength});
    path = output->keep();
    if (!path) {
        log_line(kLogError, "CloseHandle failed for %.256s", output->path());
        return kBinhexFailed;
    }
    if (name) *name = found.release();
    return kBinhexDone;
}

// Finds the text first, so that a body without one costs no file.
int decode(int in, long count, char*& path, char** name) {
    LimitedInput input(in, count);
    BinhexStart start;
    Bytes block;
    do {
        block = input.next();
        if (block.empty()) return kBinhexFailed;
    } while (!start.find(block));
    SplitBHWorkArea work([&] { return input.next(); }, block);
    return to_apple_single(work, path, name);
}

}  // namespace
}  // namespace vel

extern "C" {

int ConvertASToBinHex(const char* sourcePath, char** outputPath) {
    if (!outputPath) return vel::kBinhexFailed;
    *outputPath = nullptr;
    return vel::at_boundary(vel::kBinhexFailed, [=] { return vel::to_binhex(sourcePath, *outputPath); });
}

int ConvertBinHexToAS(int in, long count, char** outputPath, char** macName) {
    if (!outputPath) return vel::kBinhexFailed;
    *outputPath = nullptr;
    if (macName) *macName = nullptr;
    return vel::at_boundary(vel::kBinhexFailed, [=] { return vel::decode(in, count, *outputPath, macName); });
}

}  // extern "C"
