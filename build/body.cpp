#include "build/body.h"

#include <algorithm>
#include <iterator>
#include <string>

#include "build/copy_lines.h"
#include "build/envelope_line.h"
#include "frame/access.h"
#include "frame/log.h"
#include "frame/open_handle.h"
#include "frame/settings.h"
#include "vel/codec.h"
#include "vel/japanese.h"

namespace vel {
namespace {

constexpr Setting<32> kInvalidMark{"Options", "InvalidCharacterMark", ""};
constexpr const char* kUuMode = "666";

bool write_base64(const Content&, int in, int out) { return to64(in, out) == 0; }

bool write_quoted_printable(const Content& content, int in, int out) {
    const bool has_lines = content.is("text") || content.is("message");
    return (has_lines ? textToQp : binaryToQp)(in, out) == 1;
}

// Kept: of several names the first one counts here.
bool write_uuencoded(const Content& content, int in, int out) {
    const char* parameter = content.parameter(kNameParameter);
    if (!parameter) return uuencode(in, out, nullptr, kUuMode) == 1;
    std::string_view name = parameter + kNameParameter.size();
    name.remove_prefix(static_cast<std::size_t>(
        std::distance(name.begin(), std::find_if_not(name.begin(), name.end(), ascii::is_space))));
    if (name.starts_with('"')) name.remove_prefix(1);
    if (name.ends_with('"')) name.remove_suffix(1);
    return uuencode(in, out, std::string(name).c_str(), kUuMode) == 1;
}

bool is_jis(const Content& content) {
    constexpr std::string_view kCharset = "charset=";
    const char* parameter = content.parameter(kCharset);
    if (!parameter) return false;
    const std::string_view charset = parameter + kCharset.size();
    return ascii::equals_ignoring_case(charset, "ISO-2022-JP") ||
           ascii::equals_ignoring_case(charset, "\"ISO-2022-JP\"");
}

bool write_jis(int in, int out) {
    log_text(kLogNotice, "Attempting to convert text file in ShiftJIS format.");
    const bool converted = ShiftJIS2JIS(in, out, read(kInvalidMark).data()) == 0;
    log_text(converted ? kLogNotice : kLogError, converted ? "...Done." : "ShiftJIS2JIS conversion failed.");
    return converted;
}

// A message from the queue may have its envelope before the first header line.
class WithoutEnvelope {
  public:
    bool is_over() const { return !in_front_; }
    std::string_view operator()(std::string_view line, bool begins) {
        if (begins) in_front_ = in_front_ && is_envelope_line(line);
        return in_front_ ? std::string_view() : line;
    }

  private:
    bool in_front_ = true;
};

bool write_7bit(const Content& content, int in, int out) {
    if (is_jis(content)) return write_jis(in, out);
    const Copied copied =
        content.is("message", "rfc822") ? copy_lines(in, out, WithoutEnvelope()) : copy_lines(in, out);
    return copied == Copied::whole;
}

struct BodyEncoding {
    std::string_view name;
    bool (*write)(const Content& content, int in, int out);
};

constexpr BodyEncoding kEncodings[] = {
    {"base64", write_base64},   {"quoted-printable", write_quoted_printable},
    {"x-uue", write_uuencoded}, {"x-uuencode", write_uuencoded},
    {"7bit", write_7bit},
};

}  // namespace

bool write_body(const Content& content, const char* path, int out) {
    const OpenHandle in(fileopen(path, kForReading, kUnbuffered));
    if (!in) return false;
    const auto found = std::find_if(std::begin(kEncodings), std::end(kEncodings), [&](const BodyEncoding& encoding) {
        return ascii::equals_ignoring_case(encoding.name, content.encoding);
    });
    if (found != std::end(kEncodings)) return found->write(content, in.get(), out);
    log_text(kLogError, "Cannot send unencoded binary via Mime.");
    return false;
}

}  // namespace vel
