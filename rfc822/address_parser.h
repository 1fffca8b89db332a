// The grammar of one address (RFC 822 section 6.1) and the texts that it yields.
#ifndef VEL_RFC822_ADDRESS_PARSER_H
#define VEL_RFC822_ADDRESS_PARSER_H

#include <cstddef>
#include <cstring>
#include <string_view>

#include "rfc822/address_lexer.h"

namespace vel {

// One of the texts of an address, of bounded length so that parsing allocates nothing.
class AddressPart {
  public:
    static constexpr std::size_t kMax = 255;

    std::string_view text() const { return {text_, size_}; }
    bool empty() const { return size_ == 0; }

    // False when the pieces do not fit: the address is to be refused then.
    bool set(auto... pieces) {
        size_ = 0;
        return add(pieces...);
    }
    bool add(auto... pieces) { return (add_piece(pieces) && ...); }

  private:
    bool add_piece(std::string_view piece) {
        if (piece.size() > kMax - size_) return false;
        std::memcpy(text_ + size_, piece.data(), piece.size());
        size_ += piece.size();
        return true;
    }

    std::size_t size_ = 0;
    char text_[kMax];
};

struct AddressParts {
    AddressPart local;
    AddressPart domain;
    AddressPart phrase;
    AddressPart spec;           // local@domain
    AddressPart route;          // @a,@b
    AddressPart route_address;  // <@a,@b:local@domain>
    AddressPart canon;
};

}  // namespace vel

// Parses the address at the lexer's position. 0: it has ended, or a token was broken; canon holds what
// was complete until then, possibly nothing. 1: it is none, or a part is too long. The position is
// behind the last token that was looked at; a comma that did not fit is left to be read again.
int adrparse(vel::AddressLexer& lexer, vel::AddressParts& parts);

#endif
