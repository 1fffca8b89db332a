// A second address parser, slow and plain: tables made from the grammar's rows, an engine that fetches a
// look-ahead only in states that need one, a lexer and a list loop on std::string.
#ifndef VEL_TESTS_RFC822_ADDRESS_REFERENCE_H
#define VEL_TESTS_RFC822_ADDRESS_REFERENCE_H

#include <algorithm>
#include <map>
#include <set>
#include <string>
#include <utility>
#include <vector>

namespace vel::test {

// c canonical text, o original, p phrase, m comment, l local part, d domain, r route.
using ReferenceAddress = std::map<char, std::string>;

// Terminals: a atom, q quoted string, l domain literal, $ end, punctuation as itself; ! never comes, but
// a state that could take it fetches a look-ahead. S list, A address, G group, M mailbox, R route-addr,
// T route, X addr-spec, L local-part, D domain, U sub-domain, P phrase, W word.
struct GrammarRow {
    std::string left_and_right;
    std::string value;  // a digit stands for the value of that symbol; an address without one is refused
    std::string parts;  // which hold the value
    char left() const { return left_and_right[0]; }
    const char* right() const { return left_and_right.c_str() + 2; }
    std::size_t size() const { return left_and_right.size() - 2; }
};
inline const std::vector<GrammarRow> kGrammar{
    {"Z=S", "", ""},        {"A=W", "0", "cl"},      {"A=W;", "", ""},       {"A=M", "0", ""},
    {"A=G;", "0;", "c"},    {"S=A", "", ""},         {"S=S,A", "", ""},      {"G=P:M", "0: 2", "c"},
    {"G=G,M", "0, 2", "c"}, {"M=X", "0", "c"},       {"M=X!", "", ""},       {"M=PR", "1", "c"},
    {"M=PR!", "", ""},      {"M=R", "0", "c"},       {"M=R!", "", ""},       {"R=<T:X>", "<1:3>", ""},
    {"R=T:X", "<0:2>", ""}, {"R=<X>", "1", ""},      {"R=<L>", "1", ""},     {"X=L@D", "0@2", ""},
    {"X=L", "0", ""},       {"L=W", "0", "l"},       {"L=L.W", "0.2", "l"},  {"L=L.", "0.", "l"},
    {"D=U", "0", "d"},      {"D=D.U", "0.2", "d"},   {"P=W", "0", "p"},      {"P=PW", "0 1", "p"},
    {"W=a", "0", ""},       {"W=q", "0", ""},        {"U=a", "0", ""},       {"U=l", "0", ""},
    {"T=@D", "@1", "r"},    {"T=T,@D", "0,@3", "r"}, {"T=T:@D", "0:@3", "r"}};

// States are sets of rows with a dot. A shift comes before a reduction, a row before those behind it.
class GrammarTables {
  public:
    static constexpr int kNone = -1;
    struct State {
        std::map<char, int> go;      // shifts and gotos
        std::map<char, int> reduce;  // rows by look-ahead
        int always = kNone;          // the only thing to do here: reduce this row
    };

    GrammarTables() {
        number_of({{0, 0}});
        for (std::size_t i = 0; i < kernels_.size(); ++i) states_.push_back(connected(kernels_[i]));
    }
    const State& operator[](int state) const { return states_[static_cast<std::size_t>(state)]; }

  private:
    using Item = std::pair<int, std::size_t>;  // row, dot
    using Items = std::set<Item>;

    static const GrammarRow& row(int number) { return kGrammar[static_cast<std::size_t>(number)]; }
    static char behind_dot(const Item& item) { return row(item.first).right()[item.second]; }

    // What a symbol may begin with. Non-terminals among them do no harm.
    static std::set<char> first_of(char symbol) {
        std::set<char> symbols{symbol};
        for (std::size_t size = 0; size != symbols.size();) {
            size = symbols.size();
            for (const GrammarRow& row : kGrammar) {
                if (symbols.contains(row.left())) symbols.insert(row.right()[0]);
            }
        }
        return symbols;
    }

    // What may stand behind a symbol.
    static std::set<char> follow_of(char symbol) {
        std::set<char> found, ended{symbol};  // what ends where the symbol ends
        for (std::size_t size = 0; size != ended.size();) {
            size = ended.size();
            for (const GrammarRow& row : kGrammar) {
                if (ended.contains(row.left_and_right.back())) ended.insert(row.left());
            }
        }
        for (const GrammarRow& row : kGrammar) {
            for (std::size_t i = 1; i < row.size(); ++i) {
                if (ended.contains(row.right()[i - 1])) found.merge(first_of(row.right()[i]));
            }
        }
        if (ended.contains('Z')) found.insert('$');
        return found;
    }

    int number_of(const Items& kernel) {
        const auto at = std::find(kernels_.begin(), kernels_.end(), kernel);
        const auto number = static_cast<int>(at - kernels_.begin());
        if (at == kernels_.end()) kernels_.push_back(kernel);
        return number;
    }

    State connected(Items items) {
        for (std::size_t size = 0; size != items.size();) {
            size = items.size();
            for (const Item& item : Items(items)) {
                for (int i = 0; i < static_cast<int>(kGrammar.size()); ++i) {
                    if (row(i).left() == behind_dot(item)) items.insert({i, 0});
                }
            }
        }
        State state;
        std::map<char, Items> next;
        Items complete;
        for (const Item& item : items) {
            (behind_dot(item) ? next[behind_dot(item)] : complete).insert({item.first, item.second + 1});
        }
        for (const auto& [symbol, kernel] : next) state.go[symbol] = number_of(kernel);
        for (const Item& item : complete) {
            for (const char c : follow_of(row(item.first).left())) {
                if (!state.go.contains(c)) state.reduce.emplace(c, item.first);
            }
        }
        if (complete.size() == 1 && next.empty()) state.always = complete.begin()->first;
        return state;
    }

    std::vector<Items> kernels_;
    std::vector<State> states_;
};

class ReferenceParser {
  public:
    explicit ReferenceParser(std::string& text) : text_(text) {}

    // The addresses of the list.
    std::vector<ReferenceAddress> list() {
        std::vector<ReferenceAddress> found;
        const std::size_t first = text_.find_first_not_of(kSpace);
        if (first == std::string::npos || odd_quotes()) return found;
        for (std::size_t at = first; at < text_.size();) {
            if (text_[at] == ',') ++at;
            ReferenceAddress address;
            const std::size_t stop = one(at, address);
            if (!address['c'].empty()) {
                address['o'] = text_.substr(at, stop - at);
                address['o'].erase(0, address['o'].find_first_not_of(kBetween));
                address['o'].erase(address['o'].find_last_not_of(kBetween) + 1);
                found.push_back(address);
            }
            at = stop;
        }
        return found;
    }

    // The address at a position; returns where it stops.
    std::size_t one(std::size_t at, ReferenceAddress& address) {
        for (std::size_t pair = at; (pair = text_.find("\\\"", pair)) != std::string::npos;) {
            text_[pair] = text_[pair + 1] = ' ';
        }
        at_ = at;
        dot_skip_ = true;
        parts_ = {};
        ahead_ = 0;
        if (!parse()) return std::min(text_.find(',', ahead_ == ',' ? at_ - 1 : at_), text_.size());
        if (!parts_['c'].empty()) address = parts_;
        return at_;
    }

  private:
    static constexpr const char* kSpace = " \t\n\v\f\r";
    static constexpr const char* kBetween = ", \t\n\v\f\r";
    static constexpr std::size_t kPart = 255;
    static constexpr char kBroken = -1;

    bool odd_quotes() const {
        bool odd = false;
        for (std::size_t i = 0; i < text_.size(); ++i) {
            if (text_[i] == '\\')
                ++i;
            else if (text_[i] == '"')
                odd = !odd;
        }
        return odd;
    }

    char token(std::size_t end, char kind) {
        token_ = text_.substr(at_, end - at_);
        at_ = std::min(end, text_.size());
        return kind;
    }

    char lex() {
        at_ = std::min(text_.find_first_not_of(kSpace, at_), text_.size());
        if (at_ == text_.size()) return '$';
        const char c = text_[at_];
        if (c == '(') return comment() ? lex() : kBroken;
        if (c == '"') {
            token(std::min(text_.find('"', at_ + 1), text_.size() - 1) + 1, 'q');
            if (token_.back() == ' ') token_.pop_back();
            return 'q';
        }
        if (c == '[') {
            std::size_t end = text_.find(']', at_);
            while (end != std::string::npos && text_[end - 1] == '\\') end = text_.find(']', end + 1);
            return end == std::string::npos ? (++at_, kBroken) : token(end + 1, 'l');
        }
        if (c == ',' || c == '>' || c == '@') dot_skip_ = false;
        if (std::string(",:;<>@").find(c) != std::string::npos || (c == '.' && !dot_skip_)) return ++at_, c;
        return token(text_.find_first_of(dot_skip_ ? "\",:;<@>[ \t\n\v\f\r" : "\",:;<@>[. \t\n\v\f\r", at_), 'a');
    }

    bool comment() {
        const std::size_t open = at_;
        int depth = 0;
        bool quoted = false;
        for (; at_ < text_.size(); ++at_) {
            const char c = text_[at_];
            if (c == '\\' && at_ + 1 < text_.size())
                ++at_;
            else if (c == '"')
                quoted = !quoted;
            else if (!quoted && c == '(')
                ++depth;
            else if (!quoted && c == ')' && --depth == 0) {
                parts_['m'] = text_.substr(open + 1, at_ - open - 1).substr(0, kPart);
                ++at_;
                return true;
            }
        }
        return false;
    }

    // The value of a row, made from those of its symbols, goes into its part; false when it is too long.
    bool reduce(const GrammarRow& row) {
        const std::size_t rest = values_.size() - row.size();
        std::string value;
        for (const char c : row.value) {
            if (c >= '0' && c <= '9') {
                value += values_[rest + static_cast<std::size_t>(c - '0')];
            } else {
                value += c;
            }
        }
        if (value.size() > kPart) return false;
        for (const char part : row.parts) parts_[part] = value;
        values_.resize(rest);
        values_.push_back(value);
        return true;
    }

    // True also when a broken token ends the parse; ahead_ is the look-ahead that is not consumed.
    bool parse() {
        static const GrammarTables tables;
        std::vector<int> states{0};
        for (values_.clear();;) {
            const GrammarTables::State& state = tables[states.back()];
            int number = state.always;
            if (number == GrammarTables::kNone) {
                if (ahead_ == 0) ahead_ = lex();
                if (ahead_ == kBroken) return true;
                if (const auto shift = state.go.find(ahead_); shift != state.go.end()) {
                    states.push_back(shift->second);
                    values_.push_back(token_);
                    ahead_ = 0;
                    continue;
                }
                const auto reduced = state.reduce.find(ahead_);
                if (reduced == state.reduce.end()) return false;
                number = reduced->second;
            }
            const GrammarRow& row = kGrammar[static_cast<std::size_t>(number)];
            if (!reduce(row)) return false;
            if (row.left() == 'A') return !row.value.empty();
            states.resize(states.size() - row.size());
            states.push_back(tables[states.back()].go.at(row.left()));
        }
    }

    std::string& text_;
    std::size_t at_ = 0;
    bool dot_skip_ = true;
    char ahead_ = 0;
    std::string token_;
    std::vector<std::string> values_;
    ReferenceAddress parts_;
};

}  // namespace vel::test

#endif
