// The address parser against its reference: same records, same stop positions, same text left behind.
#include <array>
#include <string_view>

#include "tests/rfc822/address_reference.h"
#include "tests/support/fixture.h"
#include "vel/rfc822.h"

namespace vel::test {
namespace {

std::string text_of(const char* field) { return field ? field : ""; }

ReferenceAddress copy_of(const recipient& record) {
    return {text_of(record.canon),   text_of(record.orig),  text_of(record.phrase),
            text_of(record.comment), text_of(record.local), text_of(record.domain)};
}

std::string shown(const std::vector<ReferenceAddress>& list) {
    std::string line;
    for (const ReferenceAddress& a : list) {
        for (const std::string& part : {a.canon, a.orig, a.phrase, a.comment, a.local, a.domain}) line += part + '|';
    }
    return line;
}

void expect_same_list(std::string text) {
    const auto input = exact(text);
    RecipTbl table{};
    const uint32_t count = ST_RecipParse(input.get(), &table, 1);
    std::vector<ReferenceAddress> found;
    for (const recipient* record = table.first; record; record = record->next) found.push_back(copy_of(*record));
    const std::string before = text;
    const std::vector<ReferenceAddress> expected = ReferenceParser(text).list();
    if (found != expected || count != expected.size() || text != input.get()) {
        ADD_FAILURE() << "text      " << before << "\nfound     " << count << ' ' << shown(found) << "\nreference "
                      << expected.size() << ' ' << shown(expected);
    }
    Clear_RT(&table);
}

void expect_same_address(std::string text) {
    const auto input = exact(text);
    recipient record{};
    const auto stop = static_cast<std::size_t>(ParseAddr(input.get(), &record) - input.get());
    const std::string before = text;
    ReferenceAddress expected;
    const std::size_t expected_stop = ReferenceParser(text).one(0, expected);
    if (copy_of(record) != expected || stop != expected_stop || text != input.get()) {
        ADD_FAILURE() << "text      " << before << "\nfound     " << stop << ' ' << shown({copy_of(record)})
                      << "\nreference " << expected_stop << ' ' << shown({expected});
    }
    Clear_RP(&record);
}

void expect_same(const std::string& text) {
    expect_same_list(text);
    expect_same_address(text);
}

constexpr std::array<const char*, 13> kTokens{"a", "\"q\"", "[l]", ",", ":", ";", "<", ">", "@", ".", "(c)", "(", "["};

// Every string of up to so many tokens, a blank between them.
void expect_same_for_all(const std::string& begin, int tokens) {
    expect_same(begin);
    if (tokens == 0 || testing::Test::HasFailure()) return;
    for (const char* token : kTokens) expect_same_for_all(begin + token + ' ', tokens - 1);
}

TEST(AddressAgreement, all_short_token_strings) { expect_same_for_all("", 4); }

// The places that short strings do not reach.
TEST(AddressAgreement, all_short_token_strings_inside_routes_and_groups) {
    for (const char* begin : {"g: a@b ,", "g: j <", "j <@r:", "@r , @s :", "a@b , <", "g: <a@b>, c . "}) {
        expect_same_for_all(begin, 3);
    }
}

TEST(AddressAgreement, random_token_strings) {
    constexpr std::array<const char*, 20> kPieces{
        " ", " ",   "\t",    "\r\n",   "\\",  "\\\"", "\"",    "x.y", "(a, \"(\" b)", ")",
        "]", "a@b", "<c@d>", "g:e@f;", "@r:", "\xe9", "=?x?=", "\\(", "..",           "\v"};
    Random random(822);
    for (int round = 0; round < 30'000 && !HasFailure(); ++round) {
        std::string text;
        for (uint32_t left = random.below(24); left > 0; --left) {
            const bool plain = random.below(2) == 0;
            text += plain ? kTokens[random.below(kTokens.size())] : kPieces[random.below(kPieces.size())];
        }
        expect_same(text);
    }
}

// Parts around 255 characters, where copies are bounded.
TEST(AddressAgreement, random_lists_with_long_parts) {
    constexpr std::array<const char*, 14> kPieces{",", ":", ";", "<",      ">",   "@", ".",
                                                  " ", "@", ".", "(x, y)", "g: ", "[", "]"};
    constexpr std::array<std::size_t, 10> kLengths{1, 2, 63, 125, 127, 128, 252, 254, 255, 256};
    Random random(255);
    for (int round = 0; round < 30'000 && !HasFailure(); ++round) {
        std::string text;
        for (uint32_t left = 1 + random.below(16); left > 0; --left) {
            if (random.below(5) < 2) {
                text += std::string(kLengths[random.below(kLengths.size())], 'x');
            } else {
                text += kPieces[random.below(kPieces.size())];
            }
        }
        expect_same(text);
    }
}

}  // namespace
}  // namespace vel::test
