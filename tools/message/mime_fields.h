// The MIME fields of one header block, as the library's field parser leaves them in a record.
#ifndef VEL_TOOLS_MESSAGE_MIME_FIELDS_H
#define VEL_TOOLS_MESSAGE_MIME_FIELDS_H

#include <optional>
#include <string>
#include <string_view>

#include "vel/mime.h"

namespace vel::command {

// The record of a parse belongs to its pool; this one is owned here.
class MimeFields {
  public:
    MimeFields() = default;
    MimeFields(const MimeFields&) = delete;
    MimeFields& operator=(const MimeFields&) = delete;
    ~MimeFields() { clear(); }

    MimeMsg* record() { return &record_; }
    void clear();

    // Drops what a refused field has left in the record.
    void refuse(std::string_view line);

    bool is_multipart() const;
    bool is_open_message() const;  // an enclosed message in which the parser looks for parts

    // "--" and the boundary parameter's value.
    std::optional<std::string> delimiter() const;

  private:
    MimeMsg record_{};
};

bool is_content_type(std::string_view line);

}  // namespace vel::command

#endif
