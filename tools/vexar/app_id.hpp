// An application as the logs name it: the RTPS host and application ids of
// its participant. The tool prints each id as 8 hexadecimal digits,
// "01100f3a:8b2c4d1e", and reads back that form, 0x-prefixed hexadecimal
// or a signed decimal for each part. An 8-digit part is always hexadecimal,
// since that is how the tool prints ids.
#pragma once

#include <compare>
#include <cstdint>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <variant>

#include "type/vexar.h"

namespace vexar::cli {

struct AppId {
    std::int32_t host = 0;
    std::int32_t app = 0;
    auto operator<=>(const AppId &) const = default;
};

inline AppId appIdOf(const QTV_VX_HostAndAppId &id) { return {id.rtps_host_id, id.rtps_app_id}; }

std::string formatAppId(AppId id);
std::optional<AppId> parseAppId(std::string_view text);

// What --app and the set-* commands accept: HOST:APP, or a name that is
// an application kind, an executable's name or a whole "exe@host[pid]";
// or a glob (with * or ?; [..] too beside them) over those, over HOST:APP ("01100f3a:*") and
// over "hostname:exe" ("myhost:*").
struct AppSelector {
    std::variant<AppId, std::string> target;

    // Throws UsageError for empty text, and for text with ':' and no glob
    // character that is not a valid HOST:APP.
    static AppSelector parse(std::string_view text);

    bool isId() const { return std::holds_alternative<AppId>(target); }
    bool isGlob() const;
    // Whether an application with this id, kind and identity label (each
    // empty when unknown) is meant.
    bool matches(AppId id, std::string_view kind, std::string_view identity) const;
    std::string describe() const;
};

// What a target that names nothing says about what is there: the names
// joined with ", ", or "none".
std::string seenNames(const std::set<std::string> &names);

}  // namespace vexar::cli
