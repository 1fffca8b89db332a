// What the library makes of an address list, stretch by stretch: addresses, and what it leaves out.
#ifndef VEL_TOOLS_MESSAGE_ADDRESS_LIST_H
#define VEL_TOOLS_MESSAGE_ADDRESS_LIST_H

#include <cstddef>
#include <nlohmann/json_fwd.hpp>
#include <optional>
#include <string>
#include <string_view>

#include "vel/rfc822.h"

namespace vel::command {

using Json = nlohmann::ordered_json;

// A record of one address, released in the end.
class Recipient {
  public:
    Recipient() = default;
    Recipient(const Recipient&) = delete;
    Recipient& operator=(const Recipient&) = delete;
    ~Recipient() { Clear_RP(&record_); }
    recipient& get() { return record_; }

  private:
    recipient record_{};
};

// Reads a list as RecipParse does, but one address at a time and in memory for one.
class AddressListReader {
  public:
    explicit AddressListReader(std::string_view text);

    struct Stretch {
        std::string_view text;  // as given, without blanks and commas around it
        std::size_t start;      // its offset in the list
        const char* left_out;   // why it is no address; null for one
    };

    // The next stretch that is not blank; nothing at the end. The record receives an address.
    std::optional<Stretch> next(recipient& record);

  private:
    const char* parse(recipient& record);
    Stretch stretch(std::size_t start, std::size_t end, const char* left_out) const;

    const std::string_view text_;
    std::string changed_;             // the parser writes into it
    const std::size_t last_closing_;  // bracket
    const char* refusal_ = nullptr;
    std::size_t at_ = 0;
};

// "mailbox", "group" or "source route".
const char* kind_of(const recipient& record);

// kind, canonical, phrase, comment, local, domain; what is absent is null.
Json address_json(const recipient& record);

}  // namespace vel::command

#endif
