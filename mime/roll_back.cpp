// Kept: a delimiter line is looked up by its whole text, so that one with trailing blanks belongs to
// no level and ends the parse.
// Kept: a line that ends in "--" closes, also when its delimiter ends so by itself.
#include "mime/roll_back.h"

#include <string>
#include <string_view>

#include "frame/line_file.h"
#include "mime/message_pool.h"
#include "mime/record.h"

namespace vel {
namespace {

constexpr std::string_view kClosingMark = "--";

std::string without_line_end(std::string_view line) { return std::string(line.substr(0, line.find_first_of("\r\n"))); }

class RollBack {
  public:
    RollBack(VEL_FILE* file, const mime_msg_pool* containers, const boundary_pool* boundaries, int& level, bool nested)
        : file_(file), containers_(containers), boundaries_(boundaries), level_(level), nested_(nested) {}

    int run(std::string line) {
        Outcome outcome = Outcome::again;
        while (outcome == Outcome::again) {
            const std::string delimiter = without_line_end(line);
            outcome = delimiter.ends_with(kClosingMark) ? close(delimiter, line) : reopen(delimiter);
        }
        return outcome == Outcome::done ? 0 : -1;
    }

  private:
    enum class Outcome { again, done, failed };

    // A closing delimiter: the level around takes over at its next delimiter line. When that leads further
    // out, it becomes the line to go on with.
    Outcome close(const std::string& delimiter, std::string& line) {
        const std::string opened = delimiter.substr(0, delimiter.size() - kClosingMark.size());
        leave_for(GetMimeLevelFromBoundary(level_, opened.c_str(), boundaries_, 1), position());
        if (level_ < 0) return Outcome::done;
        const char* around = GetBoundaryFromPool(boundaries_, level_);
        const MimeMsg* container = GetFromMsgPool(containers_, level_);
        if (!around || !container) return Outcome::failed;
        return skip_epilogue(around, *container, line);
    }

    Outcome skip_epilogue(std::string_view around, const MimeMsg& container, std::string& line) {
        LineFile lines(file_);
        std::string_view text;
        const LineResult result = lines.next_with(around, text);
        if (result != LineResult::line) return result == LineResult::end ? Outcome::done : Outcome::failed;
        const bool closes = text.substr(around.size()).starts_with(kClosingMark);
        if (!closes && !(nested_ && has_type(container, "message", "rfc822"))) return Outcome::done;
        line = text;
        return Outcome::again;
    }

    // A delimiter of this level or one further out.
    Outcome reopen(const std::string& delimiter) {
        const int found = GetMimeLevelFromBoundary(level_, delimiter.c_str(), boundaries_, 0);
        leave_for(found, position() - static_cast<uint32_t>(delimiter.size()));
        return Outcome::done;
    }

    // Ends the container of the current level, in any case, and all others above the new level.
    void leave_for(int new_level, uint32_t end) {
        end_container(level_, end);
        for (int left = level_ - 1; left > new_level; --left) end_container(left, end);
        level_ = new_level;
    }

    void end_container(int level, uint32_t end) {
        if (MimeMsg* container = GetFromMsgPool(containers_, level)) container->bodyEnd = end;
    }

    uint32_t position() const { return static_cast<uint32_t>(GetFilePos(file_)); }

    VEL_FILE* file_;
    const mime_msg_pool* containers_;
    const boundary_pool* boundaries_;
    int& level_;
    const bool nested_;
};

}  // namespace
}  // namespace vel

int RollBackMimeLevel(VEL_FILE* file, const mime_msg_pool* containers, const boundary_pool* boundaries, int* level,
                      const char* line, int nested) {
    if (!file || !containers || !boundaries || !level || !line) return -1;
    return vel::RollBack(file, containers, boundaries, *level, nested != 0).run(line);
}
