// Filling the record of a header block, one field at a time.
#ifndef VEL_RFC822_HEADER_RECORD_H
#define VEL_RFC822_HEADER_RECORD_H

#include <optional>
#include <string_view>

#include "frame/chain.h"
#include "frame/owned.h"
#include "rfc822/header_keywords.h"
#include "vel/rfc822.h"

// Releases a whole chain: each node's text, its table with its addresses, and the node.
void _free_a_l(addrlist822* list);

namespace vel {

// Stores fields into a record. Lives as long as a block is read, so that a field of a chain costs the
// same behind one other or behind a million.
class HeaderRecord {
  public:
    explicit HeaderRecord(addr822& record) : record_(record) {}

    // Stores a value where its code belongs. A code of the other lines takes the whole line as it is
    // to be stored. Throws std::bad_alloc.
    void store(int32_t code, COwned<char> value);

  private:
    void add_addresses(addrlist822*& list, char* text);
    void keep_date(int32_t code, const char* text);

    addr822& record_;
    std::optional<ChainTail> received_;
    std::optional<ChainTail> other_;
};

}  // namespace vel

#endif
