// A message without the header fields for which the library refuses it.
#ifndef VEL_TOOLS_MESSAGE_REPAIR_H
#define VEL_TOOLS_MESSAGE_REPAIR_H

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "tools/io/session.h"
#include "tools/io/trouble.h"
#include "tools/message/removed_ranges.h"

namespace vel::command {

struct RemovedField {
    TroubledField field;  // its range is that of the file
    uint64_t line;        // where it begins, from 1
};

// "Content-ID (line 12)"; of a multipart's Content-Type also why.
std::string description_of(const RemovedField& field);

// Makes one copy after the other, each without the fields that are refused in the one before: taking a
// field away may bring another one to light, in parts that were not reached before.
class Repair {
  public:
    Repair(const std::string& path, bool nested, Session& session) : path_(path), nested_(nested), session_(session) {}

    // False when no field is refused. The settings in force decide about the grammar. Throws Failure.
    bool make_copy();

    const std::string& path() const { return copy_ ? copy_->path() : path_; }
    PrivateFile release() { return std::move(*copy_); }

    // Of the copy that was made last.
    const RemovedRanges& ranges() const { return ranges_; }
    std::vector<RemovedField> fields() const;  // in order

  private:
    const std::string path_;
    const bool nested_;
    Session& session_;
    std::optional<PrivateFile> copy_;
    RemovedRanges ranges_;
    std::vector<TroubledField> fields_;
};

}  // namespace vel::command

#endif
