#include "app_identity.hpp"

#include <charconv>

namespace vexar::cli {

std::optional<AppIdentity> AppIdentity::parse(std::string_view announced) {
    // The executable's name may hold '@', the host name may not: split at the last.
    std::size_t at = announced.rfind('@');
    std::size_t open = announced.rfind('[');
    if (at == std::string_view::npos || at == 0 || open == std::string_view::npos || open <= at + 1 ||
        !announced.ends_with(']')) {
        return std::nullopt;
    }
    std::string_view digits = announced.substr(open + 1, announced.size() - open - 2);
    std::int64_t pid = 0;
    auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), pid);
    if (digits.empty() || error != std::errc() || end != digits.data() + digits.size() || pid <= 0) {
        return std::nullopt;
    }
    return AppIdentity{std::string(announced.substr(0, at)), std::string(announced.substr(at + 1, open - at - 1)), pid};
}

std::string AppIdentity::label() const { return exe + "@" + host + "[" + std::to_string(pid) + "]"; }

bool AppIdentities::learn(AppId id, std::string_view announced) {
    std::optional<AppIdentity> identity = AppIdentity::parse(announced);
    if (!identity) return false;
    auto [known, added] = byId_.try_emplace(id, *identity);
    if (added || known->second == *identity) return added;
    known->second = *identity;
    return true;
}

const AppIdentity *AppIdentities::find(AppId id) const {
    auto found = byId_.find(id);
    return found == byId_.end() ? nullptr : &found->second;
}

std::string AppIdentities::labelOf(AppId id) const {
    const AppIdentity *identity = find(id);
    return identity != nullptr ? identity->label() : std::string();
}

}  // namespace vexar::cli
