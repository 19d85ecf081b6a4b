// QoS libraries in the loaded tree: checking a document's libraries before
// it is committed, and reading profiles back out of the tree.
#include "platform/dds/qos_libraries.hpp"

#include <fnmatch.h>

#include <algorithm>
#include <initializer_list>
#include <string_view>
#include <tuple>

#include "platform/dds/qos_records.hpp"
#include "platform/dds/qos_xml.hpp"
#include "platform/xml/parser.hpp"
#include "platform/xml/xml_text.hpp"

namespace vexar::dds {
namespace {

constexpr std::string_view kProfileTag = "qos_profile";
constexpr const char *kTopicFilter = "topic_filter";
// Deeper chains of base profiles are taken for a cycle.
constexpr int kMaxBaseDepth = 64;

using Tops = std::vector<const DDS_XMLObject *>;

std::string_view tagOf(const DDS_XMLObject &object) noexcept { return DDS_XMLObject_get_tag_name(&object); }

std::string_view nameOf(const DDS_XMLObject &object) noexcept {
    const char *name = DDS_XMLObject_get_attribute(&object, "name");
    return name != nullptr ? name : "";
}

template <typename Each>
void forEachChild(const DDS_XMLObject &parent, Each each) {
    for (const DDS_XMLObject *child = DDS_XMLObject_get_first_child(&parent); child != nullptr;
         child = DDS_XMLObject_get_next_sibling(child)) {
        each(*child);
    }
}

bool isLibrary(const DDS_XMLObject &object) noexcept { return tagOf(object) == xml::kQosLibraryTag; }

// Where a profile was first defined, for the error about the second.
std::string placeOf(const DDS_XMLObject &object) {
    const char *document = DDS_XMLObject_get_document_name(&object);
    return std::string(document != nullptr ? document : "") + ":" +
           std::to_string(DDS_XMLObject_get_line_number(&object));
}

// The first profile, in document order, for which `matches(library, profile)` holds.
template <typename Matches>
const DDS_XMLObject *firstProfile(const Tops &tops, Matches matches) {
    for (const DDS_XMLObject *top : tops) {
        if (!isLibrary(*top)) continue;
        for (const DDS_XMLObject *child = DDS_XMLObject_get_first_child(top); child != nullptr;
             child = DDS_XMLObject_get_next_sibling(child)) {
            if (tagOf(*child) == kProfileTag && matches(*top, *child)) return child;
        }
    }
    return nullptr;
}

const DDS_XMLObject *findProfile(const Tops &tops, std::string_view library, std::string_view profile) {
    return firstProfile(tops, [&](const DDS_XMLObject &inLibrary, const DDS_XMLObject &candidate) {
        return nameOf(inLibrary) == library && nameOf(candidate) == profile;
    });
}

// A base is named "Library::Profile", or "Profile" in the profile's own library.
const DDS_XMLObject *findBase(const Tops &tops, const DDS_XMLObject &profile) {
    const char *base = DDS_XMLObject_get_attribute(&profile, "base_name");
    if (base == nullptr) return nullptr;
    const std::string_view name = base;
    const std::size_t separator = name.find("::");
    if (separator == std::string_view::npos) return findProfile(tops, nameOf(*profile.parent), name);
    return findProfile(tops, name.substr(0, separator), name.substr(separator + 2));
}

bool isDefaultProfile(const DDS_XMLObject &profile) {
    const char *flag = DDS_XMLObject_get_attribute(&profile, "is_default_qos");
    return flag != nullptr && xml::parseBoolean(flag).value_or(false);
}

// The one profile marked is_default_qos="true", or null.
const DDS_XMLObject *findDefaultProfile(const Tops &tops) {
    return firstProfile(
        tops, [](const DDS_XMLObject &, const DDS_XMLObject &candidate) { return isDefaultProfile(candidate); });
}

Tops topsOf(const DDS_XMLObject &root) {
    Tops tops;
    forEachChild(root, [&](const DDS_XMLObject &top) { tops.push_back(&top); });
    return tops;
}

template <typename Qos, typename Use>
void useRecord(Use &use) {
    OwnedQos<Qos> record;
    use(record.qos);
}

// Calls `use` with a record of the kind whose element is `tag`, holding its
// defaults; false when no kind has that tag.
template <typename Use>
bool withRecordOf(std::string_view tag, Use use) {
    using Kinds = std::tuple<DDS_DomainParticipantQos, DDS_PublisherQos, DDS_SubscriberQos, DDS_TopicQos,
                             DDS_DataWriterQos, DDS_DataReaderQos>;
    return std::apply(
        [&](auto... kind) {
            return ((tag == kQosTag<decltype(kind)> && (useRecord<decltype(kind)>(use), true)) || ...);
        },
        Kinds{});
}

// Only topics and endpoints are chosen by topic name.
bool takesTopicFilter(std::string_view tag) {
    return tag == kQosTag<DDS_TopicQos> || tag == kQosTag<DDS_DataWriterQos> || tag == kQosTag<DDS_DataReaderQos>;
}

// ---------------------------------------------------------------------------
// Checking

class LibraryCheck {
public:
    // `tops`: the loaded top-level objects, then the document's.
    LibraryCheck(Tops tops, std::vector<xml::XmlError> &errors)
        : tops_(std::move(tops)), errors_(errors), defaultProfile_(findDefaultProfile(tops_)) {}

    void library(const DDS_XMLObject &library) {
        if (nameOf(library).empty()) fail(library, "<qos_library> needs a name");
        knownAttributes(library, {"name"});
        forEachChild(library, [&](const DDS_XMLObject &child) {
            if (tagOf(child) == kProfileTag) {
                profile(child);
            } else {
                fail(child,
                     "unknown element <" + std::string(tagOf(child)) + "> in <qos_library> (expected <qos_profile>)");
            }
        });
    }

private:
    void fail(const DDS_XMLObject &at, const std::string &message) {
        errors_.push_back({DDS_XMLObject_get_line_number(&at), message});
    }

    // An attribute that nothing reads would be a setting silently lost.
    void knownAttributes(const DDS_XMLObject &element, std::initializer_list<std::string_view> known) {
        for (char **attribute = element.attributes; attribute != nullptr && attribute[0] != nullptr; attribute += 2) {
            if (std::ranges::find(known, std::string_view(attribute[0])) != known.end()) continue;
            fail(element,
                 "unknown attribute \"" + std::string(attribute[0]) + "\" of <" + std::string(tagOf(element)) + ">");
        }
    }

    std::string fullName(const DDS_XMLObject &profile) const {
        return std::string(nameOf(*profile.parent)) + "::" + std::string(nameOf(profile));
    }

    void profile(const DDS_XMLObject &profile) {
        if (nameOf(profile).empty()) {
            fail(profile, "<qos_profile> needs a name");
        } else if (const DDS_XMLObject *first = findProfile(tops_, nameOf(*profile.parent), nameOf(profile));
                   first != &profile) {
            fail(profile, "duplicate <qos_profile> named \"" + fullName(profile) + "\" (the first is at " +
                              placeOf(*first) + ")");
        }
        knownAttributes(profile, {"name", "base_name", "is_default_qos"});
        isDefault(profile);
        base(profile);
        forEachChild(profile, [&](const DDS_XMLObject &element) { qosElement(element); });
    }

    void isDefault(const DDS_XMLObject &profile) {
        const char *flag = DDS_XMLObject_get_attribute(&profile, "is_default_qos");
        if (flag == nullptr) return;
        const std::optional<bool> value = xml::parseBoolean(flag);
        if (!value) {
            fail(profile, "is_default_qos expects true or false, not \"" + std::string(flag) + "\"");
        } else if (*value && defaultProfile_ != &profile) {
            fail(profile, "a second default profile \"" + fullName(profile) + "\" (the first is \"" +
                              fullName(*defaultProfile_) + "\")");
        }
    }

    void base(const DDS_XMLObject &profile) {
        const char *baseName = DDS_XMLObject_get_attribute(&profile, "base_name");
        if (baseName == nullptr) return;
        const DDS_XMLObject *base = findBase(tops_, profile);
        if (base == nullptr) {
            return fail(profile,
                        "unknown base profile \"" + std::string(baseName) + "\" of \"" + fullName(profile) + "\"");
        }
        for (int depth = 0; base != nullptr; ++depth, base = findBase(tops_, *base)) {
            if (base == &profile || depth == kMaxBaseDepth) {
                return fail(profile,
                            "profile \"" + fullName(profile) + "\" is its own base through \"" + baseName + "\"");
            }
        }
    }

    void qosElement(const DDS_XMLObject &element) {
        const std::string_view tag = tagOf(element);
        const bool known = withRecordOf(tag, [&](auto &record) { readQos(element, record, errors_); });
        if (!known) return fail(element, "unknown element <" + std::string(tag) + "> in <qos_profile>");
        if (DDS_XMLObject_get_attribute(&element, kTopicFilter) != nullptr && !takesTopicFilter(tag)) {
            fail(element, "<" + std::string(tag) + "> takes no topic_filter");
        }
        knownAttributes(element, {kTopicFilter});
    }

    Tops tops_;
    std::vector<xml::XmlError> &errors_;
    const DDS_XMLObject *defaultProfile_;  // the first of them, when several are marked
};

// ---------------------------------------------------------------------------
// Reading

bool matchesTopic(const DDS_XMLObject &element, const char *topicName) {
    const char *filter = DDS_XMLObject_get_attribute(&element, kTopicFilter);
    return topicName != nullptr && fnmatch(filter, topicName, 0) == 0;
}

// The profile's own elements of the record's kind onto `qos`: those without
// a topic filter first, so that the more particular ones win.
template <typename Qos>
void overlayOwn(const DDS_XMLObject &profile, const char *topicName, Qos &qos) {
    std::vector<xml::XmlError> ignored;  // checked when the document was loaded
    for (bool filtered : {false, true}) {
        forEachChild(profile, [&](const DDS_XMLObject &element) {
            if (tagOf(element) != kQosTag<Qos>) return;
            const bool hasFilter = DDS_XMLObject_get_attribute(&element, kTopicFilter) != nullptr;
            if (hasFilter == filtered && (!hasFilter || matchesTopic(element, topicName))) {
                readQos(element, qos, ignored);
            }
        });
    }
}

template <typename Qos>
void overlayWithBases(const Tops &tops, const DDS_XMLObject &profile, const char *topicName, Qos &qos, int depth) {
    const DDS_XMLObject *base = findBase(tops, profile);
    if (base != nullptr && depth < kMaxBaseDepth) overlayWithBases(tops, *base, topicName, qos, depth + 1);
    overlayOwn(profile, topicName, qos);
}

// The profile that `find` picks among the loaded libraries, with its bases,
// onto `qos`; false when `find` picks none.
template <typename Qos, typename Find>
bool overlayFound(const DDS_XMLObject &root, Find find, const char *topicName, Qos &qos) {
    const Tops tops = topsOf(root);
    const DDS_XMLObject *profile = find(tops);
    if (profile == nullptr) return false;
    overlayWithBases(tops, *profile, topicName, qos, 0);
    return true;
}

}  // namespace

void acceptQosLibraries(const std::vector<xml::OwnedTree> &staged, const DDS_XMLObject &root,
                        std::vector<xml::XmlError> &errors) {
    Tops tops = topsOf(root);
    for (const xml::OwnedTree &object : staged) tops.push_back(object.get());
    LibraryCheck check(tops, errors);
    for (const xml::OwnedTree &object : staged) {
        if (isLibrary(*object)) check.library(*object);
    }
}

std::vector<std::string> profileNames(const DDS_XMLObject &root, std::string_view library) {
    std::vector<std::string> names;
    forEachChild(root, [&](const DDS_XMLObject &top) {
        if (!isLibrary(top) || nameOf(top) != library) return;
        forEachChild(top, [&](const DDS_XMLObject &profile) {
            if (tagOf(profile) == kProfileTag) names.emplace_back(nameOf(profile));
        });
    });
    return names;
}

template <typename Qos>
bool qosFromProfile(const DDS_XMLObject &root, std::string_view library, std::string_view profile,
                    const char *topicName, Qos &qos) {
    return overlayFound(
        root, [&](const Tops &tops) { return findProfile(tops, library, profile); }, topicName, qos);
}

template <typename Qos>
bool defaultQosFromProfiles(const DDS_XMLObject &root, const char *topicName, Qos &qos) {
    return overlayFound(root, findDefaultProfile, topicName, qos);
}

#define VEXAR_INSTANTIATE_PROFILE_READERS(Qos)                                                                    \
    template bool qosFromProfile(const DDS_XMLObject &, std::string_view, std::string_view, const char *, Qos &); \
    template bool defaultQosFromProfiles(const DDS_XMLObject &, const char *, Qos &)

VEXAR_INSTANTIATE_PROFILE_READERS(DDS_DomainParticipantQos);
VEXAR_INSTANTIATE_PROFILE_READERS(DDS_PublisherQos);
VEXAR_INSTANTIATE_PROFILE_READERS(DDS_SubscriberQos);
VEXAR_INSTANTIATE_PROFILE_READERS(DDS_TopicQos);
VEXAR_INSTANTIATE_PROFILE_READERS(DDS_DataWriterQos);
VEXAR_INSTANTIATE_PROFILE_READERS(DDS_DataReaderQos);
#undef VEXAR_INSTANTIATE_PROFILE_READERS

}  // namespace vexar::dds
