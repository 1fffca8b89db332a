// File types: the lookup of the last extension, in tables of two sizes.
#include <cstdio>
#include <string>

#include "bench/run.h"
#include "vel/magic.h"
#include "vel/platform/config.h"
#include "vel/platform/diamond.h"

namespace vel::bench {
namespace {

std::string extension(int64_t number) { return std::string("e").append(std::to_string(number)); }

// A table of so many types, made anew.
bool make_table(const std::string& directory, int64_t types) {
    std::filesystem::remove_all(directory);
    std::filesystem::create_directories(directory);
    diamondBase base(directory.c_str());
    magicdb table(base);
    bool made = table.lock() == DIA_OK && table.create() == DIA_OK && table.hold() == DIA_OK;
    for (int64_t i = 0; made && i < types; ++i) {
        std::snprintf(table.fields.extension, sizeof table.fields.extension, "%s", extension(i).c_str());
        made = table.add() == DIA_OK;
    }
    return made && table.keep() == DIA_OK;
}

void look_up_type(benchmark::State& state) {
    const std::string directory = output("types").string();
    if (!make_table(directory, state.range(0))) return fail(state, "no table");
    ProfileOverlaySet("Gateway", "QueueDirectory", directory.c_str());
    const std::string last = extension(state.range(0) - 1);
    MagicRecord record;
    for (auto _ : state) {
        if (GetMagicFromExtension(last.c_str(), &record) != 0) return fail(state, "not found");
    }
    count(state, 0, 1);
}

BENCHMARK(look_up_type)->Arg(750)->Arg(10'000);

}  // namespace
}  // namespace vel::bench
