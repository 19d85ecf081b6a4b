// How the web console names an application wherever it shows one: its
// HOST:APP, its kind once a State has named it, and its identity
// (exe@host[pid]) once discovery has announced it. One function, so that
// every place names it alike.
#pragma once

#include <string>
#include <string_view>

#include "app_id.hpp"

namespace vexar::cli {

// "01100f3a:8b2c4d1e demo demo@rover[4242]", less what is not known yet.
std::string appLabel(AppId id, std::string_view kind, std::string_view identity);

}  // namespace vexar::cli
