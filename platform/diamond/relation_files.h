// The files of a relation, but for what SQLite does with them.
#ifndef VEL_PLATFORM_DIAMOND_RELATION_FILES_H
#define VEL_PLATFORM_DIAMOND_RELATION_FILES_H

#include <optional>
#include <string>
#include <string_view>

#include "platform/whole_file.h"

namespace vel {

// What SQLite keeps of ours at a fixed place of the file.
constexpr int32_t kApplication = 0x44494131;
constexpr int32_t kVersion = 1;

class RelationFiles {
  public:
    // The layout is a text, the size that of a record.
    // No directory has the empty name.
    RelationFiles(const std::string& directory, std::string name, std::string_view layout, std::size_t size);

    bool has_directory() const;
    std::string records() const { return stem_ + ".db"; }
    std::string identity() const { return stem_ + ".id0"; }
    std::string lock() const { return stem_ + ".lock"; }

    // Whether there is a file that begins as SQLite files of ours do. It is looked at through a descriptor of its own,
    // so nobody in this process may be in the middle of a transaction. Throws when that cannot be found out.
    bool has_records() const;
    // Whether the identity is that of the layout. Throws likewise.
    bool has_identity() const;
    void write_identity() const;

    // Tells one state of the files from another.
    struct Stamp {
        std::optional<FileStamp> records;
        std::optional<FileStamp> identity;
        bool operator==(const Stamp&) const = default;
    };
    Stamp stamp() const;

    // Renames what is there, under one and the same number: a new one, or the last one where the same was set aside
    // under it, as a source of damaged files does again and again. What SQLite needs to undo a change that was cut
    // short goes along, or it would be taken for that of the next file. Returns the number; 0 when there was no file
    // of records.
    int set_aside() const;

  private:
    bool is_free(int number) const;
    bool is_kept(int number) const;
    void sync_directory() const;

    const std::string directory_;
    const std::string stem_;
    const std::string identity_text_;
};

}  // namespace vel

#endif
