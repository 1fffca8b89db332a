#include "mime/field_text.h"

#include <cstddef>
#include <cstring>
#include <string_view>

#include "frame/line_file.h"
#include "frame/log.h"

namespace vel {
namespace {

bool is_blank_line(std::string_view line) { return line == " \r\n" || line == "\t\r\n"; }

// Reads the next header line and tells where it began.
char* read_header_line(VEL_FILE* file, int32_t& began) {
    LineFile lines(file);
    std::string_view line;
    LineResult result{};
    do {
        began = lines.position();
        result = lines.next(line);
    } while (result == LineResult::line && is_blank_line(line));
    if (result == LineResult::error) log_text(kLogError, "ReadNextHeaderLine: getline failed.");
    return result == LineResult::line ? file->line : nullptr;
}

// Comments nest as deep as a hostile sender likes, so the depth is a number and not a call stack.
//
// Kept: behind an inner comment blanks, comments and folds are passed too; the character that stops
// this closes the outer comment when it is ")", and is otherwise stepped over unexamined.
class Skipper {
  public:
    Skipper(VEL_FILE* file, char* position) : file_(file), at_(position) {}

    // Where the field goes on, or null.
    char* run() {
        Step step = Step::between;
        while (step == Step::between || step == Step::in_comment) {
            step = step == Step::between ? between() : in_comment();
        }
        return step == Step::found ? at_ : nullptr;
    }

  private:
    enum class Step { between, in_comment, found, failed };

    // Blanks, folds and the beginnings of comments.
    Step between() {
        while (is_blank(*at_)) ++at_;
        if (*at_ == '(') {
            ++at_;
            return Step::in_comment;
        }
        if (at_line_end(at_)) {
            if (!read_on()) return Step::failed;
            if (is_blank(*at_)) return Step::between;
            if (!put_back()) return Step::failed;
        }
        return outer_ == 0 ? Step::found : back_to_outer_comment();
    }

    Step back_to_outer_comment() {
        --outer_;
        const char stopped_at = *at_;
        if (stopped_at != '\0') ++at_;
        return stopped_at == ')' ? Step::between : Step::in_comment;
    }

    Step in_comment() {
        for (;;) {
            at_ += std::strcspn(at_, "\\()");
            switch (*at_) {
                case ')': ++at_; return Step::between;
                case '(': ++outer_; return Step::between;
                case '\\':
                    if (at_line_end(at_ + 1)) {
                        at_ += std::strlen(at_);
                    } else {
                        at_ += at_[1] == '\0' ? 1 : 2;
                    }
                    break;
                default:
                    if (!read_on() || !is_blank(*at_)) return Step::failed;
                    ++at_;
            }
        }
    }

    bool read_on() { return (at_ = read_header_line(file_, began_)) != nullptr; }

    // The line belongs to the next field: it will be read again.
    bool put_back() {
        if (LineFile(file_).return_to(began_) == -1) return false;
        std::memcpy(file_->line, "\r\n", sizeof "\r\n");
        at_ = file_->line;
        return true;
    }

    VEL_FILE* file_;
    char* at_;
    int32_t began_ = 0;
    std::size_t outer_ = 0;  // comments that wait for an inner one
};

}  // namespace
}  // namespace vel

char* ReadNextHeaderLine(VEL_FILE* file) {
    int32_t began = 0;
    return vel::read_header_line(file, began);
}

char* EatCommentsAndSpace(VEL_FILE* file, char* position) {
    if (!position || !*position) return nullptr;
    return vel::Skipper(file, position).run();
}
