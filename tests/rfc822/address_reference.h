// A second address parser, slow and plain: LALR(1) tables made from the grammar's rows, an engine that
// fetches a look-ahead only in states that need one, a lexer and a list loop on std::string.
#ifndef VEL_TESTS_RFC822_ADDRESS_REFERENCE_H
#define VEL_TESTS_RFC822_ADDRESS_REFERENCE_H

#include <algorithm>
#include <map>
#include <set>
#include <string>
#include <utility>
#include <vector>

namespace vel::test {

// Terminals: a atom, q quoted string, l domain literal, $ end, ! error, punctuation as itself.
// S start, A address, G group, M mailbox, R route-addr, T route, X addr-spec, L local-part, D domain,
// U sub-domain, P phrase, W word.
struct GrammarRow {
    char left;
    std::string right;
};
inline const std::map<int, GrammarRow> kGrammar{
    {0, {'Z', "S"}},     {1, {'S', "A"}},     {2, {'S', "!"}},      {3, {'S', "S,A"}},  {4, {'A', "W"}},
    {5, {'A', "M"}},     {6, {'A', "G;"}},    {7, {'G', "P:M"}},    {8, {'G', "G,M"}},  {9, {'M', "X"}},
    {10, {'M', "X!"}},   {11, {'M', "!X"}},   {12, {'M', "PR"}},    {13, {'M', "PR!"}}, {14, {'M', "P!R"}},
    {15, {'M', "R"}},    {16, {'M', "R!"}},   {17, {'R', "<T:X>"}}, {18, {'R', "T:X"}}, {19, {'R', "<X>"}},
    {20, {'R', "<L>"}},  {21, {'X', "L@D"}},  {22, {'X', "L"}},     {23, {'L', "W"}},   {24, {'L', "L.W"}},
    {25, {'L', "L."}},   {26, {'D', "U"}},    {27, {'D', "D.U"}},   {28, {'P', "W"}},   {29, {'P', "PW"}},
    {31, {'W', "a"}},    {32, {'W', "q"}},    {33, {'U', "a"}},     {34, {'U', "l"}},   {35, {'T', "@D"}},
    {36, {'T', "T,@D"}}, {37, {'T', "T:@D"}},
};

// States are sets of rows with a dot and their look-aheads, merged where they differ in look-aheads only.
class LalrTables {
  public:
    static constexpr int kNone = -1;
    struct State {
        std::map<char, int> go;      // shifts and gotos
        std::map<char, int> reduce;  // rows by look-ahead
        int always = kNone;          // the only thing to do here: reduce this row
    };

    LalrTables() {
        find_or_add({{{0, 0}, {'$'}}});
        for (changed_ = true; changed_;) {
            changed_ = false;
            for (std::size_t i = 0; i < kernels_.size(); ++i) connect(i);
        }
        for (std::size_t i = 0; i < kernels_.size(); ++i) fill_in(i);
    }
    const State& operator[](int state) const { return states_[static_cast<std::size_t>(state)]; }

  private:
    using Item = std::pair<int, std::size_t>;  // row, dot
    using Items = std::map<Item, std::set<char>>;

    static char behind_dot(const Item& item) { return kGrammar.at(item.first).right.c_str()[item.second]; }

    static std::set<char> first_of(char symbol) {
        std::set<char> symbols{symbol};
        for (std::size_t size = 0; size != symbols.size();) {
            size = symbols.size();
            for (const auto& [number, row] : kGrammar) {
                if (symbols.contains(row.left)) symbols.insert(row.right[0]);
            }
        }
        return symbols;  // non-terminals among them do no harm
    }

    static Items closure(Items items) {
        for (bool grown = true; grown;) {
            grown = false;
            for (const auto& [item, ahead] : Items(items)) {
                const char behind = behind_dot({item.first, item.second + (behind_dot(item) != 0)});
                for (const auto& [number, row] : kGrammar) {
                    if (row.left != behind_dot(item)) continue;
                    std::set<char>& set = items[{number, 0}];
                    const std::size_t size = set.size();
                    set.merge(behind ? first_of(behind) : std::set<char>(ahead));
                    grown |= set.size() != size;
                }
            }
        }
        return items;
    }

    int find_or_add(const Items& kernel) {
        for (std::size_t i = 0; i < kernels_.size(); ++i) {
            const auto same = [](const auto& a, const auto& b) { return a.first == b.first; };
            if (!std::equal(kernel.begin(), kernel.end(), kernels_[i].begin(), kernels_[i].end(), same)) continue;
            for (const auto& [item, ahead] : kernel) {
                std::set<char>& set = kernels_[i][item];
                const std::size_t size = set.size();
                set.insert(ahead.begin(), ahead.end());
                changed_ |= set.size() != size;
            }
            return static_cast<int>(i);
        }
        kernels_.push_back(kernel);
        states_.emplace_back();
        changed_ = true;
        return static_cast<int>(kernels_.size() - 1);
    }

    void connect(std::size_t i) {
        std::map<char, Items> next;
        for (const auto& [item, ahead] : closure(kernels_[i])) {
            if (behind_dot(item)) next[behind_dot(item)][{item.first, item.second + 1}] = ahead;
        }
        for (const auto& [symbol, kernel] : next) {
            const int target = find_or_add(kernel);
            states_[i].go[symbol] = target;
        }
    }

    // A shift comes before a reduction, a row before those with higher numbers.
    void fill_in(std::size_t i) {
        std::set<int> rows;
        for (const auto& [item, ahead] : kernels_[i]) {
            if (behind_dot(item)) continue;
            rows.insert(item.first);
            for (const char c : ahead) {
                if (!states_[i].go.contains(c)) states_[i].reduce.emplace(c, item.first);
            }
        }
        if (rows.size() == 1 && states_[i].go.empty()) states_[i].always = *rows.begin();
    }

    std::vector<Items> kernels_;
    std::vector<State> states_;
    bool changed_ = false;
};

struct ReferenceAddress {
    std::string canon, orig, phrase, comment, local, domain;
    bool operator==(const ReferenceAddress&) const = default;
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
            if (!address.canon.empty()) {
                address.orig = text_.substr(at, stop - at);
                address.orig.erase(0, address.orig.find_first_not_of(kBetween));
                address.orig.erase(address.orig.find_last_not_of(kBetween) + 1);
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
        route_.clear();
        ahead_ = 0;
        if (!parse()) return std::min(text_.find(',', ahead_ == ',' ? at_ - 1 : at_), text_.size());
        if (!parts_.canon.empty()) address = parts_;
        return at_;
    }

  private:
    static constexpr const char* kSpace = " \t\n\v\f\r";
    static constexpr const char* kBetween = ", \t\n\v\f\r";
    static constexpr std::size_t kPart = 255;
    static constexpr char kBroken = -1;
    struct TooLong {};

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

    std::string cut(std::size_t end) {
        const std::string token = text_.substr(at_, end - at_);
        at_ = end;
        return token;
    }

    char lex() {
        at_ = std::min(text_.find_first_not_of(kSpace, at_), text_.size());
        if (at_ == text_.size()) return '$';
        const char c = text_[at_];
        if (c == '(') return comment() ? lex() : kBroken;
        if (c == '"') {
            token_ = cut(std::min(text_.find('"', at_ + 1), text_.size() - 1) + 1);
            if (token_.back() == ' ') token_.pop_back();
            return 'q';
        }
        if (c == '[') {
            std::size_t end = text_.find(']', at_);
            while (end != std::string::npos && text_[end - 1] == '\\') end = text_.find(']', end + 1);
            if (end == std::string::npos) return ++at_, kBroken;
            token_ = cut(end + 1);
            return 'l';
        }
        if (c == ',' || c == '>' || c == '@') dot_skip_ = false;
        if (std::string(",:;<>@").find(c) != std::string::npos || (c == '.' && !dot_skip_)) return ++at_, c;
        token_ = cut(std::min(text_.find_first_of(dot_skip_ ? "\",:;<@>[ \t\n\v\f\r" : "\",:;<@>[. \t\n\v\f\r", at_),
                              text_.size()));
        return 'a';
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
                parts_.comment = text_.substr(open + 1, at_ - open - 1).substr(0, kPart);
                ++at_;
                return true;
            }
        }
        return false;
    }

    static std::string put(std::string& part, const std::string& text) {
        if (text.size() > kPart) throw TooLong();
        return part = text;
    }

    // The value of a row that is reduced, from the values of its symbols.
    std::string value(int number, const std::vector<std::string>& v) {
        std::string other;  // parts that no field shows: their length counts
        switch (number) {
            case 4: put(parts_.canon, v[0]); return put(parts_.local, v[0]);
            case 6: return put(parts_.canon, v[0] + ";");
            case 7: return put(parts_.canon, v[0] + ": " + v[2]);
            case 8: return put(parts_.canon, v[0] + ", " + v[2]);
            case 9: return put(parts_.canon, v[0]);
            case 12: return put(parts_.canon, v[1]);
            case 15: return put(parts_.canon, v[0]);
            case 17: return put(other, "<" + v[1] + ":" + v[3] + ">");
            case 18: return put(other, "<" + v[0] + ":" + v[2] + ">");
            case 19:
            case 20: return v[1];
            case 21: return put(other, v[0] + "@" + v[2]);
            case 22: return put(other, v[0]);
            case 23: return put(parts_.local, v[0]);
            case 24: return put(parts_.local, v[0] + "." + v[2]);
            case 25: return put(parts_.local, v[0] + ".");
            case 26: return put(parts_.domain, v[0]);
            case 27: return put(parts_.domain, v[0] + "." + v[2]);
            case 28: return put(parts_.phrase, v[0]);
            case 29: return put(parts_.phrase, v[0] + " " + v[1]);
            case 31:
            case 32: return put(other, v[0]);
            case 35: return put(route_, "@" + v[1]);
            case 36: return put(route_, v[0] + ",@" + v[3]);
            case 37: return put(route_, v[0] + ":@" + v[3]);
            default: return v[0];
        }
    }

    // True also when a broken token ends the parse; ahead_ is the look-ahead that is not consumed.
    bool parse() try {
        static const LalrTables tables;
        std::vector<int> states{0};
        std::vector<std::string> values;
        for (;;) {
            const LalrTables::State& state = tables[states.back()];
            int row = state.always;
            if (row == LalrTables::kNone) {
                if (ahead_ == 0) ahead_ = lex();
                if (ahead_ == kBroken) return true;
                if (const auto shift = state.go.find(ahead_); shift != state.go.end()) {
                    states.push_back(shift->second);
                    values.push_back(token_);
                    ahead_ = 0;
                    continue;
                }
                const auto reduce = state.reduce.find(ahead_);
                if (reduce == state.reduce.end()) return false;
                row = reduce->second;
            }
            const GrammarRow& rule = kGrammar.at(row);
            const std::size_t rest = values.size() - rule.right.size();
            std::string result = value(row, {values.begin() + static_cast<long>(rest), values.end()});
            if (row >= 4 && row <= 6) return true;
            values.resize(rest);
            states.resize(rest + 1);
            values.push_back(std::move(result));
            states.push_back(tables[states.back()].go.at(rule.left));
        }
    } catch (const TooLong&) {
        return false;
    }

    std::string& text_;
    std::size_t at_ = 0;
    bool dot_skip_ = true;
    char ahead_ = 0;
    std::string token_, route_;
    ReferenceAddress parts_;
};

}  // namespace vel::test

#endif
