#include "app_label.hpp"

namespace vexar::cli {

std::string appLabel(AppId id, std::string_view kind) {
    std::string label = formatAppId(id);
    if (!kind.empty()) label.append(" ").append(kind);
    return label;
}

}  // namespace vexar::cli
