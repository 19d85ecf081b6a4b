#include "message_filter.hpp"

#include <fnmatch.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>

#include "usage_error.hpp"

namespace vexar::cli {

void Regex::Free::operator()(regex_t *compiled) const {
    regfree(compiled);
    delete compiled;
}

namespace {

constexpr std::size_t kPatternMost = 1024;
constexpr long kRepeatMost = 255;

bool isQuantifier(char c) { return c == '*' || c == '+' || c == '?' || c == '{'; }

// The end of the bracket expression that starts at `at` ('['): a ']' right
// after the '[' or '[^' is a member, and "[:class:]" is one element.
std::size_t bracketEnd(const std::string &pattern, std::size_t at) {
    std::size_t i = at + 1;
    if (i < pattern.size() && pattern[i] == '^') ++i;
    if (i < pattern.size() && pattern[i] == ']') ++i;
    while (i < pattern.size() && pattern[i] != ']') {
        if (pattern[i] == '[' && i + 1 < pattern.size() && std::strchr(":.=", pattern[i + 1]) != nullptr) {
            std::size_t close = pattern.find(std::string(1, pattern[i + 1]) + "]", i + 2);
            i = close == std::string::npos ? pattern.size() : close + 2;
        } else {
            ++i;
        }
    }
    return i;
}

// glibc's regcomp builds its automaton eagerly: stacked quantifiers
// ("a+++..."), large repeat counts and back-references make it take
// memory or time beyond any use, and a pattern can come from a URL. Such
// patterns are refused before it sees them.
void checkShape(const std::string &pattern) {
    auto refuse = [&](const std::string &why) {
        throw UsageError("regular expression refused (" + why + "): '" + pattern.substr(0, 80) +
                         (pattern.size() > 80 ? "...'" : "'"));
    };
    if (pattern.size() > kPatternMost) refuse("longer than " + std::to_string(kPatternMost) + " characters");
    bool afterQuantifier = false;
    for (std::size_t i = 0; i < pattern.size(); ++i) {
        char c = pattern[i];
        if (c == '\\') {
            if (i + 1 < pattern.size() && pattern[i + 1] >= '1' && pattern[i + 1] <= '9') refuse("a back-reference");
            ++i;
            afterQuantifier = false;
        } else if (c == '[') {
            i = bracketEnd(pattern, i);
            afterQuantifier = false;
        } else if (isQuantifier(c)) {
            if (afterQuantifier) refuse("a repetition of a repetition");
            if (c == '{') {
                std::size_t close = pattern.find('}', i);
                if (close == std::string::npos) continue;  // regcomp says what is wrong
                for (std::size_t digit = i + 1; digit < close;) {
                    char *end = nullptr;
                    long count = std::strtol(pattern.c_str() + digit, &end, 10);
                    if (count > kRepeatMost) refuse("a repeat count above " + std::to_string(kRepeatMost));
                    digit = static_cast<std::size_t>(end - pattern.c_str()) + 1;
                }
                i = close;
            }
            afterQuantifier = true;
        } else {
            afterQuantifier = false;
        }
    }
}

}  // namespace

Regex::Regex(const std::string &pattern) {
    checkShape(pattern);
    auto compiled = std::make_unique<regex_t>();
    int error = regcomp(compiled.get(), pattern.c_str(), REG_EXTENDED | REG_NOSUB);
    if (error != 0) {
        char reason[256];
        regerror(error, compiled.get(), reason, sizeof reason);
        throw UsageError("bad regular expression '" + pattern + "': " + reason);
    }
    compiled_.reset(compiled.release());
}

bool Regex::search(std::string_view text) const {
    // REG_STARTEND bounds the search by the match record, so the text need
    // not end with a NUL.
    regmatch_t bounds{0, static_cast<regoff_t>(text.size())};
    return regexec(compiled_.get(), text.data(), 1, &bounds, REG_STARTEND) == 0;
}

namespace {

template <class Criteria, class Holds>
bool anyHolds(const Criteria &criteria, Holds holds) {
    return criteria.empty() || std::ranges::any_of(criteria, holds);
}

bool globMatches(const std::string &pattern, const std::string &text) {
    return fnmatch(pattern.c_str(), text.c_str(), 0) == 0;
}

}  // namespace

bool MessageFilter::looksAtTexts() const {
    return !categoryPatterns.empty() || !textPatterns.empty() || !excludedCategoryPatterns.empty() ||
           !excludedTextPatterns.empty();
}

bool MessageFilter::matches(const LogLine &line) const {
    if (mostVerboseLevel && line.level > *mostVerboseLevel) return false;
    if (!anyHolds(apps, [&](const AppSelector &app) { return app.matches(line.app, line.kind, line.identity); }))
        return false;
    if (!categoryPatterns.empty() || !excludedCategoryPatterns.empty()) {
        // fnmatch wants a NUL-terminated text: copied only when asked for.
        const std::string category(line.category);
        auto matchesCategory = [&](const std::string &pattern) { return globMatches(pattern, category); };
        if (!anyHolds(categoryPatterns, matchesCategory)) return false;
        if (std::ranges::any_of(excludedCategoryPatterns, matchesCategory)) return false;
    }
    auto matchesText = [&](const Regex &pattern) { return pattern.search(line.message); };
    return anyHolds(textPatterns, matchesText) && std::ranges::none_of(excludedTextPatterns, matchesText);
}

}  // namespace vexar::cli
