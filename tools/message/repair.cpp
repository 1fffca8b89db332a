#include "tools/message/repair.h"

#include <algorithm>
#include <filesystem>
#include <utility>

#include "tools/io/line_numbers.h"
#include "tools/io/private_copy.h"
#include "tools/message/refused_fields.h"

namespace vel::command {
namespace {

// A field that the end of the file cuts off is refused, and the one before it would be next.
constexpr std::string_view kBlankLine = "\r\n";

}  // namespace

std::string description_of(const RemovedField& removed) {
    const std::string text = removed.field.name + " (line " + std::to_string(removed.line);
    switch (removed.field.trouble) {
        case Trouble::no_boundary: return text + ", a multipart without a boundary)";
        case Trouble::no_first_delimiter: return text + ", a multipart whose first delimiter line never comes)";
        case Trouble::refused:
        case Trouble::corrected: break;
    }
    return text + ")";
}

bool Repair::make_copy() {
    const std::vector<TroubledField> found = troubled_fields(path(), nested_, session_.journal).kept;
    const std::vector<Range> refused = refused_ranges(found);
    if (refused.empty()) return false;
    const bool reaches_end = refused.back().end == std::filesystem::file_size(path());
    PrivateFile next = copy_without(refused, path(), reaches_end ? kBlankLine : "", session_.scratch);
    for (const TroubledField& field : found) {
        if (!field.refuses_message()) continue;
        fields_.push_back(field);
        fields_.back().range = ranges_.in_file(field.range);
    }
    ranges_.remove(refused);
    copy_.emplace(std::move(next));
    return true;
}

std::vector<RemovedField> Repair::fields() const {
    std::vector<TroubledField> all = fields_;
    std::sort(all.begin(), all.end(),
              [](const TroubledField& a, const TroubledField& b) { return a.range.start < b.range.start; });
    std::vector<uint32_t> starts;
    for (const TroubledField& field : all) starts.push_back(field.range.start);
    const std::vector<uint64_t> lines = line_numbers(path_, starts);
    std::vector<RemovedField> result;
    for (std::size_t i = 0; i < all.size(); ++i) result.push_back({std::move(all[i]), lines[i]});
    return result;
}

}  // namespace vel::command
