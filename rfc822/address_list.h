// The address list parser for callers who must know that nothing was left out.
#ifndef VEL_RFC822_ADDRESS_LIST_H
#define VEL_RFC822_ADDRESS_LIST_H

#include "frame/owned.h"
#include "vel/rfc822.h"

namespace vel {

// Reads the addresses of a text into an empty table, as VEL_RecipParse does. Where that leaves one out for want of
// memory it throws std::bad_alloc, and the table is empty.
void parse_addresses(char* text, RecipTbl& table);

// The addresses of a text, parsed from a copy, since parsing changes it.
class Addresses {
  public:
    explicit Addresses(std::string_view text) { parse_addresses(copy_text(text).get(), table_); }
    Addresses(const Addresses&) = delete;
    Addresses& operator=(const Addresses&) = delete;
    ~Addresses() { Clear_RT(&table_); }

    uint32_t count() const { return table_.count; }
    const recipient* first() const { return table_.first; }

  private:
    RecipTbl table_{};
};

}  // namespace vel

#endif
