// Address lists: never a crash, and always the records of the slow parser of the tests.
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <string>

#include "tests/rfc822/address_reference.h"
#include "vel/rfc822.h"

namespace {

bool same(const recipient* record, vel::test::ReferenceAddress& expected) {
    return record && record->canon == expected['c'] && record->orig == expected['o'] &&
           record->phrase == expected['p'] && record->comment == expected['m'] && record->local == expected['l'] &&
           record->domain == expected['d'];
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    std::string text(reinterpret_cast<const char*>(data), size);
    text.resize(std::strlen(text.c_str()));
    const std::string input = text;
    const std::unique_ptr<char[]> exact(new char[text.size() + 1]);
    std::memcpy(exact.get(), text.c_str(), text.size() + 1);

    RecipTbl table{};
    const uint32_t count = ST_RecipParse(exact.get(), &table, 1);
    const recipient* record = table.first;
    auto list = vel::test::ReferenceParser(text).list();
    for (vel::test::ReferenceAddress& expected : list) {
        if (!same(record, expected)) std::abort();
        record = record->next;
    }
    if (record || count != list.size() || text != exact.get()) std::abort();
    Clear_RT(&table);
    return 0;
}
