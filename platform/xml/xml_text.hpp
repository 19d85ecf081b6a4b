// Reading values out of element text.
#pragma once

#include <optional>
#include <string_view>

namespace vexar::xml {

// `text` without white space (space, tab, CR, LF) at its ends.
std::string_view trimmed(std::string_view text) noexcept;

// true/false, 1/0 or yes/no in any case, white space around allowed.
std::optional<bool> parseBoolean(std::string_view text) noexcept;

}  // namespace vexar::xml
