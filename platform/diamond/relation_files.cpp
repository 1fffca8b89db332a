#include "platform/diamond/relation_files.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdio>

#include "platform/failure.h"

namespace vel {
namespace {

constexpr mode_t kFileMode = 0660;

// A table that is damaged over and over again must not fill the directory.
constexpr int kMostSetAside = 100;

// Larger tables are set aside without a look at whether they have been before.
constexpr std::size_t kLargestCompared = 16 * 1024 * 1024;

// An identity is one short line.
constexpr std::size_t kLongestIdentity = 256;

// SQLite's file format: the first 16 bytes, the two that tell of a rollback journal, the layout of the schema, and
// where numbers of ours are.
constexpr std::size_t kHeaderSize = 100;
constexpr std::string_view kFormat{"SQLite format 3\0", 16};
constexpr std::string_view kRollbackJournal{"\1\1", 2};
constexpr std::size_t kJournalAt = 18;
constexpr std::size_t kSchemaFormatAt = 44;
constexpr int32_t kSchemaFormat = 4;
constexpr std::size_t kVersionAt = 60;
constexpr std::size_t kApplicationAt = 68;

// SQLite looks for the companion of NAME.db.1 at NAME.db.1-journal. Ours have no other than that.
struct Part {
    const char* ending;
    const char* companion;
};
constexpr std::array kParts{Part{".db", ""}, Part{".db", "-journal"}, Part{".db", "-wal"}, Part{".db", "-shm"},
                            Part{".id0", ""}};
constexpr int kInUse = 0;

// The name of a part in the set of files that is in use, or in one that was set aside.
std::string name_of(const std::string& stem, const Part& part, int number) {
    std::string name = stem + part.ending;
    if (number != kInUse) name.append(".").append(std::to_string(number));
    return name += part.companion;
}

int32_t number_at(std::string_view header, std::size_t at) {
    uint32_t number = 0;
    for (const char byte : header.substr(at, sizeof number)) number = number << 8 | static_cast<unsigned char>(byte);
    return static_cast<int32_t>(number);
}

// FNV-1a, 32 bits.
uint32_t checksum(std::string_view text) {
    uint32_t sum = 2166136261u;
    for (const char byte : text) sum = (sum ^ static_cast<unsigned char>(byte)) * 16777619u;
    return sum;
}

std::string identity_of(const std::string& name, std::string_view layout, std::size_t size) {
    std::array<char, 16> sum;
    std::snprintf(sum.data(), sum.size(), "%08lx", static_cast<unsigned long>(checksum(layout)));
    return "diamond 1 " + name + " " + std::to_string(size) + " " + sum.data() + "\n";
}

// What a missing file means must not be done where the system merely failed.
bool tells_of_absence(int error) { return error == ENOENT || error == ENOTDIR || error == ENXIO || error == ELOOP; }

// A file's first bytes; none when there is no regular file.
std::string beginning_of(const std::string& path, std::size_t size) {
    const Descriptor file(::open(path.c_str(), O_RDONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC));
    if (!file && !tells_of_absence(errno)) throw Failure::of_system("cannot open", path);
    if (!file || !stamp_of(file.get())) return {};
    std::string bytes(size, '\0');
    const ssize_t got = ::pread(file.get(), bytes.data(), bytes.size(), 0);
    if (got < 0) throw Failure::of_system("cannot read", path);
    bytes.resize(static_cast<std::size_t>(got));
    return bytes;
}

bool is_there(const std::string& path) {
    struct stat status;
    return ::lstat(path.c_str(), &status) == 0;
}

// Whether two files, not two names of one, hold the same bytes.
bool are_alike(const std::string& path, const std::string& other) {
    const auto stamp = stamp_of(path.c_str());
    const auto others = stamp_of(other.c_str());
    if (!stamp || !others || stamp->size != others->size || stamp == others) return false;
    const auto bytes = read_whole(open_regular(path.c_str()).get(), kLargestCompared);
    return bytes && bytes == read_whole(open_regular(other.c_str()).get(), kLargestCompared);
}

}  // namespace

RelationFiles::RelationFiles(const std::string& directory, std::string name, std::string_view layout, std::size_t size)
    : directory_(directory), stem_(directory + "/" + name), identity_text_(identity_of(name, layout, size)) {}

bool RelationFiles::has_directory() const { return !directory_.empty() && is_there(directory_ + "/."); }

bool RelationFiles::has_records() const {
    const std::string bytes = beginning_of(records(), kHeaderSize);
    if (bytes.size() < kHeaderSize) return false;
    const std::string_view header = bytes;
    return header.starts_with(kFormat) && header.substr(kJournalAt).starts_with(kRollbackJournal) &&
           number_at(header, kSchemaFormatAt) == kSchemaFormat && number_at(header, kVersionAt) == kVersion &&
           number_at(header, kApplicationAt) == kApplication;
}

bool RelationFiles::has_identity() const { return beginning_of(identity(), kLongestIdentity) == identity_text_; }

void RelationFiles::write_identity() const {
    const std::string path = identity();
    const Descriptor file(::open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, kFileMode));
    if (!file || !write_whole(file.get(), identity_text_) || ::fsync(file.get()) != 0) {
        throw Failure::of_system("cannot make", path);
    }
    sync_directory();
}

RelationFiles::Stamp RelationFiles::stamp() const {
    return {stamp_of(records().c_str()), stamp_of(identity().c_str())};
}

int RelationFiles::set_aside() const {
    int number = 1;
    while (number <= kMostSetAside && !is_free(number)) ++number;
    if (number > 1 && is_kept(number - 1)) --number;
    if (number > kMostSetAside) throw Failure("too much was set aside: " + records() + ".*");
    const bool has_any = is_there(records());
    for (const Part& part : kParts) {
        const std::string path = name_of(stem_, part, kInUse);
        const std::string aside = name_of(stem_, part, number);
        if (::rename(path.c_str(), aside.c_str()) != 0 && errno != ENOENT) {
            throw Failure::of_system("cannot set aside", path);
        }
    }
    sync_directory();
    return has_any ? number : 0;
}

bool RelationFiles::is_free(int number) const {
    return std::none_of(kParts.begin(), kParts.end(),
                        [&](const Part& part) { return is_there(name_of(stem_, part, number)); });
}

bool RelationFiles::is_kept(int number) const {
    return std::all_of(kParts.begin(), kParts.end(), [&](const Part& part) {
        const std::string path = name_of(stem_, part, kInUse);
        const std::string aside = name_of(stem_, part, number);
        return are_alike(path, aside) || !(is_there(path) || is_there(aside));
    });
}

void RelationFiles::sync_directory() const {
    const Descriptor file(::open(directory_.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (!file || ::fsync(file.get()) != 0) throw Failure::of_system("cannot sync", directory_);
}

}  // namespace vel
