// How the web console names an application wherever it shows one: its
// HOST:APP and, once a State has named it, its kind. One function, so that
// a richer identity changes every place at once.
#pragma once

#include <string>
#include <string_view>

#include "app_id.hpp"

namespace vexar::cli {

// "01100f3a:8b2c4d1e demo", or just the ids while the kind is unknown.
std::string appLabel(AppId id, std::string_view kind);

}  // namespace vexar::cli
