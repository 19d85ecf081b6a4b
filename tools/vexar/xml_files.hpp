// The middleware's XML configuration as the tool uses it: the `vexar`
// element's class registered with the participant factory, files loaded
// one by one with each error on standard error as "FILE:LINE: message",
// and everything unloaded again when the holder goes.
#pragma once

#include <string>
#include <vector>

#include "config/XMLConfig.h"

namespace vexar::cli {

class XmlFiles {
public:
    XmlFiles();
    ~XmlFiles();
    XmlFiles(const XmlFiles &) = delete;
    XmlFiles &operator=(const XmlFiles &) = delete;

    // Loads one file; false when it was refused (its errors are printed).
    bool load(const std::string &path);

    // The first `vexar` element loaded, or null.
    QTV_VX_XMLConfig *vexarElement() const;

private:
    DDS_XMLExtensionClass *vexarClass_;
};

// What one loaded file holds, in document order: "qos_library NAME",
// "qos_profile LIBRARY::NAME", "vexar" (with its line).
struct XmlEntry {
    std::string kind;
    std::string name;
    unsigned long line;
};
std::vector<XmlEntry> entriesOf(const std::string &path);

}  // namespace vexar::cli
