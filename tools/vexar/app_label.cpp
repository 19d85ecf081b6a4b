#include "app_label.hpp"

namespace vexar::cli {

std::string appLabel(AppId id, std::string_view kind, std::string_view identity) {
    std::string label = formatAppId(id);
    if (!kind.empty()) label.append(" ").append(kind);
    if (!identity.empty()) label.append(" ").append(identity);
    return label;
}

}  // namespace vexar::cli
