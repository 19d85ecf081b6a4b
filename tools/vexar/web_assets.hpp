// The console page's files (tools/vexar/web/), compiled into the program
// by the build, so that `vexar web` serves them without files beside it.
#pragma once

#include <span>
#include <string_view>

namespace vexar::cli {

struct WebAsset {
    std::string_view path;  // "/console.js"
    std::string_view contentType;
    std::string_view content;
};

std::span<const WebAsset> webAssets();

}  // namespace vexar::cli
