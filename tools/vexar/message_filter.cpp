#include "message_filter.hpp"

#include <fnmatch.h>

#include <algorithm>

#include "usage_error.hpp"

namespace vexar::cli {

void Regex::Free::operator()(regex_t *compiled) const {
    regfree(compiled);
    delete compiled;
}

Regex::Regex(const std::string &pattern) {
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
