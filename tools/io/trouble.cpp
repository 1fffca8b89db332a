#include "tools/io/trouble.h"

#include <array>

namespace vel::command {

bool is_about_field(const LogLine& line) { return line.text.find("\" field invalid") != std::string::npos; }

const char* name_of(Trouble trouble) {
    constexpr std::array kNames{"corrected", "refused", "no_boundary", "no_first_delimiter"};
    return kNames[static_cast<std::size_t>(trouble)];
}

std::vector<Range> refused_ranges(const std::vector<TroubledField>& fields) {
    std::vector<Range> ranges;
    for (const TroubledField& field : fields) {
        if (field.refuses_message()) ranges.push_back(field.range);
    }
    return ranges;
}

}  // namespace vel::command
