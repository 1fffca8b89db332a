#include "tools/verbs/option.h"

#include <CLI/CLI.hpp>
#include <utility>

#include "tools/text/instant.h"

namespace vel::command {
namespace {

// It would wrap to a very large one.
std::string not_negative(const std::string& number) {
    if (number.starts_with('-')) throw CLI::ValidationError("must not be negative: " + number);
    return number;
}

std::string seconds_of(const std::string& text) {
    const auto seconds = read_duration(text);
    if (!seconds) throw CLI::ValidationError("no length of time, such as 30s, 5m, 2h or 1d: " + text);
    return std::to_string(*seconds);
}

// The help says in words what a value may be.
CLI::Validator undescribed(CLI::Validator validator) { return validator.description(""); }

}  // namespace

Option& Option::required() {
    option_->required();
    return *this;
}

Option& Option::shows_default() {
    option_->capture_default_str();
    return *this;
}

Option& Option::one_each() {
    option_->allow_extra_args(false);
    return *this;
}

Option& Option::needs(const Option& other) {
    option_->needs(other.option_);
    return *this;
}

Option& Option::excludes(const Option& other) {
    option_->excludes(other.option_);
    return *this;
}

Option& Option::one_of(std::vector<std::string> words, LetterCase letter_case) {
    if (letter_case == LetterCase::counts) {
        option_->check(undescribed(CLI::IsMember(std::move(words))));
    } else {
        option_->transform(undescribed(CLI::IsMember(std::move(words), CLI::ignore_case)));
    }
    return *this;
}

Option& Option::between(int lowest, int highest) {
    option_->check(undescribed(CLI::Range(lowest, highest)));
    return *this;
}

Option& Option::positive() {
    option_->check([](const std::string& number) { return number == "0" ? "must not be 0" : ""; });
    return *this;
}

Option& Option::number() {
    option_->transform(not_negative);
    return *this;
}

Option& Option::size() {
    option_->transform(undescribed(CLI::AsSizeValue(false)));
    return number();
}

Option& Option::duration() {
    option_->transform(seconds_of);
    return *this;
}

Option& Option::channel() {
    option_->check([](const std::string& name) { return name.empty() ? "a channel has a name" : ""; });
    return *this;
}

bool Option::is_given() const { return option_->count() > 0; }

std::string Option::name() const { return option_->get_name(); }

}  // namespace vel::command
