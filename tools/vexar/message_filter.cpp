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

}  // namespace

bool MessageFilter::matches(const LogLine &line) const {
    if (mostVerboseLevel && line.level > *mostVerboseLevel) return false;
    if (!anyHolds(apps, [&](const AppSelector &app) { return app.matches(line.app, line.kind); })) return false;
    if (!categoryPatterns.empty()) {
        // fnmatch wants a NUL-terminated text: copied only when asked for.
        const std::string category(line.category);
        if (!anyHolds(categoryPatterns,
                      [&](const std::string &pattern) { return fnmatch(pattern.c_str(), category.c_str(), 0) == 0; })) {
            return false;
        }
    }
    return anyHolds(textPatterns, [&](const Regex &pattern) { return pattern.search(line.message); });
}

}  // namespace vexar::cli
