// The address parser against its reference: same records, same stop positions, same text left behind.
#include <array>

#include "tests/rfc822/address_reference.h"
#include "tests/support/fixture.h"
#include "vel/rfc822.h"

namespace vel::test {
namespace {

std::string shown(const recipient& record) {
    std::string line;
    for (const char* part : {record.canon, record.orig, record.phrase, record.comment, record.local, record.domain}) {
        line.append(part ? part : "").append("|");
    }
    return line;
}

std::string shown(ReferenceAddress& address) {
    std::string line;
    for (const char part : {'c', 'o', 'p', 'm', 'l', 'd'}) line.append(address[part]).append("|");
    return line;
}

// A text as a list and as one address: what is found in it, and what is left of it.
std::string found_in(const std::string& text) {
    const auto list = exact(text), single = exact(text);
    RecipTbl table{};
    std::string found = std::to_string(ST_RecipParse(list.get(), &table, 1));
    for (const recipient* record = table.first; record; record = record->next) found += ' ' + shown(*record);
    Clear_RT(&table);
    recipient record{};
    found += "; to " + std::to_string(ParseAddr(single.get(), &record) - single.get()) + ' ' + shown(record);
    Clear_RP(&record);
    return found + "; " + list.get() + "; " + single.get();
}

std::string found_by_reference(std::string list) {
    std::string single = list;
    std::vector<ReferenceAddress> addresses = ReferenceParser(list).list();
    std::string found = std::to_string(addresses.size());
    for (ReferenceAddress& address : addresses) found += ' ' + shown(address);
    ReferenceAddress address;
    found += "; to " + std::to_string(ReferenceParser(single).one(0, address)) + ' ' + shown(address);
    return found + "; " + list + "; " + single;
}

constexpr std::array<const char*, 13> kTokens{"a", "\"q\"", "[l]", ",", ":", ";", "<", ">", "@", ".", "(c)", "(", "["};

// Every string of up to so many tokens, a blank between them.
void expect_same_for_all(const std::string& begin, int tokens) {
    ASSERT_EQ(found_in(begin), found_by_reference(begin)) << begin;
    for (const char* token : kTokens) {
        if (tokens > 0 && !testing::Test::HasFailure()) expect_same_for_all(begin + token + ' ', tokens - 1);
    }
}

TEST(AddressAgreement, all_short_token_strings) {
    expect_same_for_all("", 4);
    // The places that short strings do not reach.
    for (const char* begin : {"g: a@b ,", "g: j <", "j <@r:", "@r , @s :", "a@b , <", "g: <a@b>, c . "}) {
        expect_same_for_all(begin, 3);
    }
}

// Also with parts around 255 characters, where copies are bounded.
TEST(AddressAgreement, random_token_strings) {
    constexpr std::array<const char*, 20> kPieces{
        " ", " ",   "\t",    "\r\n",   "\\",  "\\\"", "\"",    "x.y", "(a, \"(\" b)", ")",
        "]", "a@b", "<c@d>", "g:e@f;", "@r:", "\xe9", "=?x?=", "\\(", "..",           "\v"};
    constexpr std::array<std::size_t, 10> kLengths{1, 2, 63, 125, 127, 128, 252, 254, 255, 256};
    Random random(822);
    for (int round = 0; round < 60'000; ++round) {
        std::string text;
        const bool with_long_parts = round % 2 == 1;
        for (uint32_t left = random.below(24); left > 0; --left) {
            if (with_long_parts && random.below(5) < 2) {
                text.append(kLengths[random.below(kLengths.size())], 'x');
            } else {
                const bool plain = with_long_parts || random.below(2) == 0;
                text += plain ? kTokens[random.below(kTokens.size())] : kPieces[random.below(kPieces.size())];
            }
        }
        ASSERT_EQ(found_in(text), found_by_reference(text)) << text;
    }
}

}  // namespace
}  // namespace vel::test
