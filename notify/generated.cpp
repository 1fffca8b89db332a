// Messages of the gateway's own programs: lines of text, and files.
//
// Kept: the parts of files that hold no byte above 127 are text/basic; a submission that is refused is not told.
#include <string>
#include <string_view>

#include "build/heading.h"
#include "build/texts.h"
#include "frame/at_boundary.h"
#include "notify/ascii_file.h"
#include "notify/original.h"
#include "notify/parts.h"
#include "notify/submission.h"
#include "vel/magic.h"
#include "vel/notify.h"

namespace vel {
namespace {

constexpr const char* kOutOfMemory = "GenerateMimeMessage failed: out of memory.";
constexpr Complaints kComplaints{.no_name = kOutOfMemory,
                                 .no_file = "GenerateMimeMessage failed: filecreate failed.",
                                 .unopened = nullptr,
                                 .unreadable = nullptr,
                                 .unwritten = "GenerateMimeMessage failed: putline failed.",
                                 .unbuilt = "GenerateMimeMessage failed: MimeBuildMessage failed."};

Trouble add_lines(Parts& parts, const ms* lines) {
    return parts.add_text({"text", "plain", "7bit"},
                          [&](NewFile& file) { return unless_written(put_lines(lines, kLineEnd, file)); });
}

// What the table of types is asked for; empty when there is no extension. Kept: a "." in a folder's name begins one.
std::string extension_of(std::string_view path) {
    constexpr std::size_t kLongest = 9;
    const std::size_t dot = path.rfind('.');
    if (dot == path.npos) return {};
    const std::string_view extension = path.substr(dot + 1, kLongest);
    return std::string(extension.substr(0, extension.find(' ')));
}

bool find_type(const char* path, MagicRecord& record) {
    const std::string extension = extension_of(path);
    return !extension.empty() && GetMagicFromExtension(extension.c_str(), &record) == 0;
}

Trouble add_file(Parts& parts, const char* path) {
    const std::optional<bool> is_ascii = tell_whether_ascii(path);
    if (!is_ascii) return Trouble::unbuilt;  // It might be opened now, and not be text.
    const OneText name(std::string("name=\"").append(last_part(path)).append("\""));
    if (*is_ascii) return parts.add({"text", "basic", "7bit", name.chain()}, path);
    MagicRecord record{};
    if (!find_type(path, record)) return parts.add({"application", "x-unknown", "base64", name.chain()}, path);
    return parts.add({record.contentType, record.contentSubtype, record.secondContentType, name.chain()}, path);
}

Trouble add_files(Parts& parts, const ms* paths) {
    Trouble trouble = Trouble::none;
    for (; paths && trouble == Trouble::none; paths = paths->next) {
        if (paths->text) trouble = add_file(parts, paths->text);
    }
    return trouble;
}

std::vector<_envRecip> recipients_of(const ms* to) {
    std::vector<_envRecip> recipients;
    for (; to; to = to->next) recipients.push_back(recipient_of(to->text));
    return recipients;
}

int generate(const Heading& heading, const char* channel, intptr_t submission, const ms* lines, const ms* files) {
    Parts parts;
    Trouble trouble = lines ? add_lines(parts, lines) : Trouble::none;
    if (trouble == Trouble::none) trouble = add_files(parts, files);
    if (trouble != Trouble::none) return failed(kComplaints.of(trouble));
    const BuiltFile message = parts.join(heading, "mixed");
    if (!message) return failed("GenerateMimeMessage failed: MimeBuildMultipartMessage failed.");
    submit({.sender = heading.from, .channel = channel, .file = message.get(), .submission = submission},
           recipients_of(heading.to));
    return 0;
}

}  // namespace
}  // namespace vel

extern "C" int GenerateMimeMessage(const char* sender, const char* channel, const ms* to, const char* subject,
                                   intptr_t submission, const ms* lines, const ms* files, int) {
    return vel::at_boundary(
        -1, [] { vel::failed(vel::kOutOfMemory); },
        [&] {
            return vel::generate({.from = sender, .to = to, .subject = subject}, channel, submission, lines, files);
        });
}
