// Makes the seeds of the table of types, srcdb/magicdb.db and magicdb.id0, out of a types file.
//   make_types FILE DIRECTORY
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <iterator>

#include "tools/types/types_file.h"
#include "vel/platform/diamond.h"

namespace {

using vel::command::TypesFile;

bool write_table(const TypesFile& types, const std::string& directory) {
    diamondBase base(directory.c_str());
    magicdb table(base);
    if (table.lock() != DIA_OK || table.create() != DIA_OK || table.hold() != DIA_OK) return false;
    for (const auto& row : types.rows) {
        const MagicRecord record = record_of(row);
        static_assert(sizeof record == sizeof table.fields);
        std::memcpy(&table.fields, &record, sizeof record);
        if (table.add() != DIA_OK) return false;
    }
    return table.keep() == DIA_OK;
}

int make(const std::string& file, const std::string& directory) {
    std::ifstream in(file, std::ios::binary);
    const std::string text{std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
    const TypesFile types = vel::command::read_types(text);
    for (const std::string& fault : types.faults) std::cerr << file << ":" << fault << "\n";
    if (!types.faults.empty() || types.rows.empty()) return 1;
    std::filesystem::remove_all(directory);
    std::filesystem::create_directories(directory);
    if (!write_table(types, directory)) return 1;
    std::filesystem::remove(directory + "/magicdb.lock");
    return 0;
}

}  // namespace

int main(int count, char** arguments) {
    if (count != 3) {
        std::cerr << "usage: make_types FILE DIRECTORY\n";
        return 1;
    }
    try {
        return make(arguments[1], arguments[2]);
    } catch (const std::exception& error) {
        std::cerr << "make_types: " << error.what() << "\n";
        return 1;
    }
}
