#include "tools/message/reading_plan.h"

#include <algorithm>
#include <array>
#include <string_view>

#include "tools/message/entity.h"
#include "tools/text/ascii.h"

namespace vel::command {
namespace {

constexpr std::string_view kHtml = "html";

// Texts that a person does not read as they stand.
constexpr std::array<std::string_view, 10> kForPrograms{"calendar", "css", "directory", "enriched", "javascript",
                                                        "richtext", "rtf", "vcard",     "x-vcard",  "xml"};

bool is_alternative(const MimeMsg& record) {
    return is_multipart(record) && same(text_of(record.contentSubtype), "alternative");
}

// By itself, whatever stands around it.
Reads own_kind(const MimeMsg& record) {
    if (!has_content(record)) return Reads::nothing;
    if (same(trimmed(text_of(record.contentDisposition)), "attachment")) return Reads::listed;
    if (!record.contentType) return Reads::text;
    if (!same(record.contentType, "text")) return Reads::listed;
    const std::string subtype = lower(text_of(record.contentSubtype));
    if (subtype == kHtml) return Reads::html;
    const bool legible = std::find(kForPrograms.begin(), kForPrograms.end(), subtype) == kForPrograms.end();
    return legible ? Reads::text : Reads::listed;
}

class Planner {
  public:
    explicit Planner(const ParsedMessage& message) : tree_(message.tree), message_(message) {
        for (int i = 0; i < tree_.count(); ++i) plan_.push_back(own_kind(message.record(i)));
        has_text_.resize(plan_.size());
        has_html_.resize(plan_.size());
    }

    std::vector<Reads> run() {
        find_texts();
        for (int i = 0; i < tree_.count(); ++i) {
            if (is_alternative(message_.record(i))) choose(i);
        }
        pass_on_choices();
        return std::move(plan_);
    }

  private:
    static std::size_t at(int index) { return static_cast<std::size_t>(index); }

    // Which subtrees hold a text, which HTML; children stand behind their parents. What an enclosed message holds
    // is its own affair.
    void find_texts() {
        for (int i = tree_.count() - 1; i >= 0; --i) {
            has_text_[at(i)] = has_text_[at(i)] || plan_[at(i)] == Reads::text;
            has_html_[at(i)] = has_html_[at(i)] || plan_[at(i)] == Reads::html;
            const int parent = tree_.parent(i);
            if (parent == kNoParent || is_message(message_.record(parent))) continue;
            has_text_[at(parent)] = has_text_[at(parent)] || has_text_[at(i)];
            has_html_[at(parent)] = has_html_[at(parent)] || has_html_[at(i)];
        }
        passed_over_.resize(plan_.size());
    }

    void choose(int alternative) {
        const auto forms = tree_.children(alternative);
        const auto text = std::find_if(forms.begin(), forms.end(), [&](int form) { return has_text_[at(form)]; });
        const auto html = std::find_if(forms.rbegin(), forms.rend(), [&](int form) { return has_html_[at(form)]; });
        const int chosen = text != forms.end() ? *text : html != forms.rend() ? *html : kNoParent;
        for (const int form : forms) passed_over_[at(form)] = form != chosen;
    }

    void pass_on_choices() {
        for (int i = 0; i < tree_.count(); ++i) {
            const int parent = tree_.parent(i);
            if (parent != kNoParent && passed_over_[at(parent)]) passed_over_[at(i)] = true;
            if (passed_over_[at(i)] && plan_[at(i)] != Reads::nothing) plan_[at(i)] = Reads::listed;
        }
    }

    const Tree& tree_;
    const ParsedMessage& message_;
    std::vector<Reads> plan_;
    std::vector<bool> has_text_, has_html_;  // of the part, or one below it
    std::vector<bool> passed_over_;          // for another form of the same
};

}  // namespace

std::vector<Reads> reading_plan(const ParsedMessage& message) { return Planner(message).run(); }

bool begins_message(const ParsedMessage& message, int index) {
    const int parent = message.tree.parent(index);
    return index == 0 || (parent != kNoParent && is_message(message.record(parent)));
}

}  // namespace vel::command
