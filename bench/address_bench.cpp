// Address lists. The parser changes its text, so each list is copied first; the items are addresses.
#include "bench/run.h"
#include "vel/rfc822.h"

namespace vel::bench {
namespace {

void address_lists(benchmark::State& state) {
    const std::vector<std::string> lists = input_lines("addresses.txt");
    std::size_t bytes = 0, found = 0;
    std::string text;
    for (auto _ : state) {
        bytes = found = 0;
        for (const std::string& list : lists) {
            text = list;
            RecipTbl table{};
            found += RecipParse(text.data(), &table, 1);
            Clear_RT(&table);
            bytes += list.size();
        }
    }
    if (found == 0) return fail(state, "no addresses");
    count(state, bytes, found);
}

BENCHMARK(address_lists);

}  // namespace
}  // namespace vel::bench
