#include "message_filter.hpp"

#include <fnmatch.h>

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

bool MessageFilter::matches(const LogLine &line) const {
    if (mostVerboseLevel && line.level > *mostVerboseLevel) return false;
    if (app && !app->matches(line.app, line.kind)) return false;
    if (categoryPattern) {
        std::string category(line.category);
        if (fnmatch(categoryPattern->c_str(), category.c_str(), 0) != 0) return false;
    }
    return !textPattern || textPattern->search(line.message);
}

}  // namespace vexar::cli
