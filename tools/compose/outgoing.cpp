#include "tools/compose/outgoing.h"

#include "tools/compose/field_name.h"
#include "tools/compose/line_pieces.h"
#include "tools/io/scratch_file.h"

namespace vel::command {
namespace {

class Copy {
  public:
    explicit Copy(Scratch& scratch) : file_(scratch) {}

    void take(const LinePiece& piece) {
        number_ += piece.begins ? 1 : 0;
        const std::string_view text = piece.without_cr();
        if (text.find('\0') != text.npos) refuse("holds a NUL byte");
        if (in_header_) read_header(piece, text);
        ends_ = piece.ends;
        if (drops_) return;
        file_.write(text);
        if (piece.ends) file_.write("\r\n");
    }

    PrivateFile finish() {
        if (number_ == 0) throw Failure(Exit::bad_data, "is empty");
        if (!ends_ && !drops_) file_.write("\r\n");
        if (is_too_large(file_.size())) throw_too_large();
        return file_.finish();
    }

  private:
    void read_header(const LinePiece& piece, std::string_view text) {
        if (text.find('\r') != text.npos) refuse("holds a CR within a header field");
        if (!piece.begins) return;
        in_header_ = !text.empty() || !piece.ends;
        const std::string_view field = field_name(text);
        if (number_ == 1 && field.empty()) refuse("is no header field, so this is no message");
        const bool goes_on = text.starts_with(' ') || text.starts_with('\t');
        if (!goes_on) drops_ = same(field, "Bcc") || same(field, "Resent-Bcc");
    }

    [[noreturn]] void refuse(const char* why) const {
        throw Failure(Exit::bad_data, std::string("line ").append(std::to_string(number_)).append(" ").append(why));
    }

    ScratchFile file_;
    uint64_t number_ = 0;
    bool in_header_ = true;
    bool drops_ = false;  // the field that is being read
    bool ends_ = true;
};

}  // namespace

PrivateFile outgoing_copy(const std::string& path, Scratch& scratch) {
    Copy copy(scratch);
    for_each_piece(path, [&](const LinePiece& piece) {
        copy.take(piece);
        return true;
    });
    return copy.finish();
}

}  // namespace vel::command
