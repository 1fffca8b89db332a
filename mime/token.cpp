#include "mime/token.h"

#include <algorithm>
#include <string_view>

#include "frame/settings.h"

namespace {

constexpr std::string_view kTspecials = "()<>@,;\\:\"/[]?=";
constexpr vel::Setting<32> kAcceptBlankValue{"Options", "AcceptBlankValueInContentTypeParm", "NO"};

bool ends_token(char c) { return vel::ascii::is_control(c) || kTspecials.find(c) != std::string_view::npos; }

}  // namespace

int IsValidToken(const char* text) {
    const std::string_view token = text;
    return !token.empty() && std::none_of(token.begin(), token.end(), ends_token);
}

int IsValidTokenValue(const char* text) {
    const bool accepts_blank = vel::is(vel::read(kAcceptBlankValue), "YES");
    return *text ? IsValidToken(text) : accepts_blank;
}

int IsValidMsgId(const char* text) {
    const std::string_view id = text;
    return id.starts_with('<') && id.ends_with('>') && std::none_of(id.begin(), id.end(), vel::ascii::is_control);
}
