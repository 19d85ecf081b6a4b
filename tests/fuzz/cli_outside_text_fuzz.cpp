// Text that reaches the vexar tool from outside: the query of a console
// URL ("a=1&b=2", read as /api/logs reads it), an identity announced in a
// participant's user data, and a message text with a source location at
// its end. A refused input is a UsageError; anything else must not happen.
#include <cstddef>
#include <cstdint>
#include <string_view>

#include "app_identity.hpp"
#include "line_format.hpp"
#include "usage_error.hpp"
#include "web_json.hpp"

namespace {

vexar::cli::QueryParameters parametersOf(std::string_view query) {
    vexar::cli::QueryParameters parameters;
    while (!query.empty()) {
        std::string_view pair = query.substr(0, query.find('&'));
        query.remove_prefix(std::min(query.size(), pair.size() + 1));
        std::size_t equals = pair.find('=');
        parameters.emplace(std::string(pair.substr(0, equals)),
                           equals == std::string_view::npos ? std::string() : std::string(pair.substr(equals + 1)));
    }
    return parameters;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size) {
    std::string_view text(reinterpret_cast<const char *>(data), size);
    (void)vexar::cli::AppIdentity::parse(text);
    (void)vexar::cli::splitLocation(text);
    try {
        (void)vexar::cli::logsQuery(parametersOf(text));
    } catch (const vexar::cli::UsageError &) {}
    return 0;
}
