// The lookups: each opens the table for itself.
#include <string>

#include "frame/at_boundary.h"
#include "magic/table.h"

namespace vel {
namespace {

// Finds the first record that matches and hands it over. Returns 0, or -1.
template <class Match, class Use>
int look_up(Match&& match, Use&& use) {
    diamondBase base(read(kQueueDirectory, kIniFile).data());
    magicdb table(base);
    if (table.status() != DIA_OK) return -1;
    const RelationHeld held(table);
    if (held.status() != DIA_OK || walk_to(table, match) != DIA_OK) return -1;
    use(table.fields);
    return 0;
}

// A type or creator, padded with blanks to four bytes.
std::string four(const char* code) {
    std::string text(code);
    if (text.size() < 4) text.resize(4, ' ');
    return text;
}

}  // namespace
}  // namespace vel

extern "C" {

int GetMagicFromExtension(const char* extension, MagicRecord* record) {
    if (!extension || !record) return -1;
    return vel::at_boundary(-1, [&] {
        return vel::look_up(vel::has_extension(extension),
                            [&](const magicdbFields& fields) { vel::copy_record(fields, *record); });
    });
}

// Kept: type and creator are compared with their letter case, extensions without.
int GetMagicFromMacTypes(MagicRecord* record, const char* type, const char* creator, const char* extension) {
    if (!record || !type || !creator) return -1;
    return vel::at_boundary(-1, [&] {
        const std::string codes = vel::four(type) + vel::four(creator);
        const auto matches = [&](const magicdbFields& fields) {
            return vel::text_of(fields.mac_type_creator) == codes &&
                   (!extension || vel::has_extension(extension)(fields));
        };
        return vel::look_up(matches, [&](const magicdbFields& fields) { vel::copy_record(fields, *record); });
    });
}

// Kept: the second pair of a record is not searched.
int GetDosExtFromCTandCST(char* extension, const char* type, const char* subtype) {
    if (!extension || !type || !subtype) return -1;
    return vel::at_boundary(-1, [&] {
        const auto matches = [&](const magicdbFields& fields) {
            return vel::ascii::equals_ignoring_case(vel::text_of(fields.content_type), type) &&
                   vel::ascii::equals_ignoring_case(vel::text_of(fields.content_subtype), subtype);
        };
        return vel::look_up(
            matches, [&](const magicdbFields& fields) { vel::copy_out(vel::text_of(fields.extension), extension); });
    });
}

int GetTypeCreatorfromDosExt(const char* extension, char* typeCreator) {
    if (!extension || !typeCreator) return -1;
    return vel::at_boundary(-1, [&] {
        return vel::look_up(vel::has_extension(extension), [&](const magicdbFields& fields) {
            vel::copy_out(vel::text_of(fields.mac_type_creator), typeCreator);
        });
    });
}

}  // extern "C"
