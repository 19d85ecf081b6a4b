// Who an application is beyond its ids: the executable, host name and
// process id that a logger puts in its participant's user data,
// "exe@host[pid]", which discovery announces. Kept by HOST:APP, so that
// every command (and anything that shows applications) labels them alike.
#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <string_view>

#include "app_id.hpp"

namespace vexar::cli {

struct AppIdentity {
    std::string exe;
    std::string host;
    std::int64_t pid = 0;

    // Nothing for a name of another form (a participant the application
    // created and named itself, or none).
    static std::optional<AppIdentity> parse(std::string_view entityName);
    // "exe@host[pid]"
    std::string label() const;
    bool operator==(const AppIdentity &) const = default;
};

// The identities that discovery announced, by HOST:APP.
class AppIdentities {
public:
    // Records the identity a discovered participant announced; true when
    // it told something new.
    bool learn(AppId id, std::string_view announced);
    const AppIdentity *find(AppId id) const;
    // "exe@host[pid]", or empty while unknown.
    std::string labelOf(AppId id) const;
    const std::map<AppId, AppIdentity> &all() const { return byId_; }

private:
    std::map<AppId, AppIdentity> byId_;
};

}  // namespace vexar::cli
