// Which log messages `vexar tail` and `vexar query` show: --level, --app,
// --category and --grep, less --exclude-category and --exclude-grep.
// Different kinds must all hold; of one kind given several times, one must
// (an empty list holds for every message); an exclusion that matches hides
// the message whatever else holds.
#pragma once

#include <regex.h>

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "app_id.hpp"
#include "line_format.hpp"

namespace vexar::cli {

// A POSIX extended regular expression, searched for anywhere in a text.
class Regex {
public:
    // Throws UsageError naming the expression and what is wrong with it.
    explicit Regex(const std::string &pattern);
    bool search(std::string_view text) const;

private:
    struct Free {
        void operator()(regex_t *compiled) const;
    };
    std::unique_ptr<regex_t, Free> compiled_;
};

struct MessageFilter {
    std::optional<std::int32_t> mostVerboseLevel;  // show this level and more severe ones
    std::vector<AppSelector> apps;
    std::vector<std::string> categoryPatterns;  // exact text or a shell glob
    std::vector<Regex> textPatterns;            // searched in the message text
    std::vector<std::string> excludedCategoryPatterns;
    std::vector<Regex> excludedTextPatterns;

    // Whether matches() needs more than the level and the application.
    bool looksAtTexts() const;

    bool matches(const LogLine &line) const;
};

}  // namespace vexar::cli
