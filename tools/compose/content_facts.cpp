#include "tools/compose/content_facts.h"

#include <algorithm>

#include "tools/compose/line_pieces.h"
#include "tools/text/ascii.h"
#include "tools/text/utf8.h"

namespace vel::command {
namespace {

constexpr std::string_view kUuBegin = "begin ";
constexpr std::string_view kUuEnd = "end";
constexpr std::string_view kBinhexBanner = "(this file must be converted with binhex";
constexpr std::string_view kBoundary = "--VEL.Boundary.";  // how those of the builders begin

// Where quoted-printable may break a line, so that any place of a longer one may begin a line.
constexpr std::size_t kUnbrokenLine = 60;

constexpr bool is_escaped(unsigned char c) { return c > '~' || c == '=' || (c < ' ' && c != '\t' && c != '\r'); }

bool holds(std::string_view line, std::string_view wanted) {
    if (line.size() <= kUnbrokenLine) return begins(line, wanted);
    return std::search(line.begin(), line.end(), wanted.begin(), wanted.end(),
                       [](char a, char b) { return lower(a) == lower(b); }) != line.end();
}

bool ends_within_from(std::string_view line) {
    constexpr std::string_view kFrom = "From";
    for (std::size_t length = 1; length <= kFrom.size(); ++length) {
        if (line.ends_with(kFrom.substr(0, length))) return true;
    }
    return false;
}

class Survey {
  public:
    explicit Survey(bool is_utf8) : is_utf8_(is_utf8) {}

    bool take(const LinePiece& piece) {
        const std::string_view text = piece.without_cr();
        count(text);
        if (!facts_.is_text) return false;
        facts_.size += piece.text.size() + (piece.ends ? 1 : 0);
        facts_.ends_in_crlf = piece.ends_in_crlf();
        facts_.has_bare_lf = facts_.has_bare_lf || (piece.ends && !piece.ends_in_crlf());
        facts_.has_bare_cr = facts_.has_bare_cr || text.find('\r') != text.npos;
        facts_.ends_within_from = ends_within_from(text);
        length_ = text.size() + (piece.begins ? 0 : length_);
        facts_.longest_line = std::max(facts_.longest_line, length_);
        look_for_mail(text);
        return true;
    }

    const ContentFacts& facts() const { return facts_; }

  private:
    // A character that is cut where a piece ends counts with the next one.
    void count(std::string_view text) {
        bool has_nul = false;
        for (const char c : text) {
            const auto byte = static_cast<unsigned char>(c);
            facts_.escapes += is_escaped(byte) ? 1 : 0;
            facts_.is_ascii = facts_.is_ascii && byte < 0x80;
            has_nul = has_nul || byte == 0;
        }
        facts_.is_text = !has_nul && (!is_utf8_ || facts_.is_ascii || is_utf8(text));
    }

    void look_for_mail(std::string_view line) {
        const bool ends_file = begun_ && line.size() >= kUuEnd.size() && same(line.substr(line.size() - 3), kUuEnd);
        begun_ = begun_ || holds(line, kUuBegin);
        facts_.has_embedded_file = facts_.has_embedded_file || ends_file || holds(line, kBinhexBanner);
        facts_.has_delimiter = facts_.has_delimiter || holds(line, kBoundary);
    }

    const bool is_utf8_;
    ContentFacts facts_;
    uint64_t length_ = 0;  // of the line so far
    bool begun_ = false;   // what may be the begin line of a uuencoded file was met
};

}  // namespace

ContentFacts facts_of(const std::string& path, bool is_utf8) {
    Survey survey(is_utf8);
    for_each_piece(path, [&](const LinePiece& piece) { return survey.take(piece); });
    return survey.facts();
}

}  // namespace vel::command
