// Reading QoS policies from XML: one description per policy (its tag and
// its fields), one reader per kind of field value.
#include "platform/dds/qos_xml.hpp"

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <new>
#include <optional>
#include <span>
#include <string_view>
#include <tuple>
#include <type_traits>

#include "platform/dds/qos_records.hpp"
#include "platform/runtime/dds_string.h"
#include "platform/xml/xml_text.hpp"

namespace vexar::dds {
namespace {

// ---------------------------------------------------------------------------
// The descriptions

template <typename Policy, typename Value>
struct Field {
    const char *tag;
    Value Policy::*member;
};
// Spelt out: Clang before 17 deduces no template arguments for aggregates.
template <typename Policy, typename Value>
Field(const char *, Value Policy::*) -> Field<Policy, Value>;

template <typename Policy>
struct PolicyXml;  // for each policy: `tag` and the tuple of its `fields`

#define VEXAR_POLICY_XML(Policy, policyTag, ...)                \
    template <>                                                 \
    struct PolicyXml<Policy> {                                  \
        using P = Policy;                                       \
        static constexpr const char *tag = policyTag;           \
        static constexpr auto fields = std::tuple{__VA_ARGS__}; \
    }

#define VEXAR_FIELD(name) \
    Field { #name, &P::name }

VEXAR_POLICY_XML(DDS_ReliabilityQosPolicy, "reliability", VEXAR_FIELD(kind), VEXAR_FIELD(max_blocking_time));
VEXAR_POLICY_XML(DDS_DurabilityQosPolicy, "durability", VEXAR_FIELD(kind));
VEXAR_POLICY_XML(DDS_HistoryQosPolicy, "history", VEXAR_FIELD(kind), VEXAR_FIELD(depth));
VEXAR_POLICY_XML(DDS_OwnershipQosPolicy, "ownership", VEXAR_FIELD(kind));
VEXAR_POLICY_XML(DDS_OwnershipStrengthQosPolicy, "ownership_strength", VEXAR_FIELD(value));
VEXAR_POLICY_XML(DDS_PresentationQosPolicy, "presentation", VEXAR_FIELD(access_scope), VEXAR_FIELD(coherent_access),
                 VEXAR_FIELD(ordered_access));
VEXAR_POLICY_XML(DDS_DeadlineQosPolicy, "deadline", VEXAR_FIELD(period));
VEXAR_POLICY_XML(DDS_LatencyBudgetQosPolicy, "latency_budget", VEXAR_FIELD(duration));
VEXAR_POLICY_XML(DDS_LivelinessQosPolicy, "liveliness", VEXAR_FIELD(kind), VEXAR_FIELD(lease_duration));
VEXAR_POLICY_XML(DDS_DestinationOrderQosPolicy, "destination_order", VEXAR_FIELD(kind));
VEXAR_POLICY_XML(DDS_ResourceLimitsQosPolicy, "resource_limits", VEXAR_FIELD(max_samples), VEXAR_FIELD(max_instances),
                 VEXAR_FIELD(max_samples_per_instance));
VEXAR_POLICY_XML(DDS_LifespanQosPolicy, "lifespan", VEXAR_FIELD(duration));
VEXAR_POLICY_XML(DDS_DurabilityServiceQosPolicy, "durability_service", VEXAR_FIELD(service_cleanup_delay),
                 VEXAR_FIELD(history_kind), VEXAR_FIELD(history_depth), VEXAR_FIELD(max_samples),
                 VEXAR_FIELD(max_instances), VEXAR_FIELD(max_samples_per_instance));
VEXAR_POLICY_XML(DDS_PartitionQosPolicy, "partition", VEXAR_FIELD(name));
VEXAR_POLICY_XML(DDS_UserDataQosPolicy, "user_data", VEXAR_FIELD(value));
VEXAR_POLICY_XML(DDS_TopicDataQosPolicy, "topic_data", VEXAR_FIELD(value));
VEXAR_POLICY_XML(DDS_GroupDataQosPolicy, "group_data", VEXAR_FIELD(value));
VEXAR_POLICY_XML(DDS_TransportPriorityQosPolicy, "transport_priority", VEXAR_FIELD(value));
VEXAR_POLICY_XML(DDS_WriterDataLifecycleQosPolicy, "writer_data_lifecycle",
                 VEXAR_FIELD(autodispose_unregistered_instances));
VEXAR_POLICY_XML(DDS_ReaderDataLifecycleQosPolicy, "reader_data_lifecycle",
                 VEXAR_FIELD(autopurge_nowriter_samples_delay), VEXAR_FIELD(autopurge_disposed_samples_delay));
VEXAR_POLICY_XML(DDS_TimeBasedFilterQosPolicy, "time_based_filter", VEXAR_FIELD(minimum_separation));
VEXAR_POLICY_XML(DDS_EntityNameQosPolicy, "participant_name", VEXAR_FIELD(name), VEXAR_FIELD(role_name));
VEXAR_POLICY_XML(DDS_WireProtocolQosPolicy, "wire_protocol", VEXAR_FIELD(rtps_host_id), VEXAR_FIELD(rtps_app_id),
                 VEXAR_FIELD(rtps_instance_id));
VEXAR_POLICY_XML(DDS_ProtocolQosPolicy, "protocol", VEXAR_FIELD(vendor_specific_entity));
VEXAR_POLICY_XML(DDS_BatchQosPolicy, "batch", VEXAR_FIELD(enable));

#undef VEXAR_FIELD
#undef VEXAR_POLICY_XML

// The names of each kind, as the OMG format writes them; the C names (with
// "DDS_" in front) are read too.
template <typename Kind>
struct KindName {
    const char *name;
    Kind value;
};

constexpr KindName<DDS_ReliabilityQosPolicyKind> kReliabilityKinds[] = {
    {"BEST_EFFORT_RELIABILITY_QOS", DDS_BEST_EFFORT_RELIABILITY_QOS},
    {"RELIABLE_RELIABILITY_QOS", DDS_RELIABLE_RELIABILITY_QOS}};
constexpr KindName<DDS_DurabilityQosPolicyKind> kDurabilityKinds[] = {
    {"VOLATILE_DURABILITY_QOS", DDS_VOLATILE_DURABILITY_QOS},
    {"TRANSIENT_LOCAL_DURABILITY_QOS", DDS_TRANSIENT_LOCAL_DURABILITY_QOS},
    {"TRANSIENT_DURABILITY_QOS", DDS_TRANSIENT_DURABILITY_QOS},
    {"PERSISTENT_DURABILITY_QOS", DDS_PERSISTENT_DURABILITY_QOS}};
constexpr KindName<DDS_HistoryQosPolicyKind> kHistoryKinds[] = {{"KEEP_LAST_HISTORY_QOS", DDS_KEEP_LAST_HISTORY_QOS},
                                                                {"KEEP_ALL_HISTORY_QOS", DDS_KEEP_ALL_HISTORY_QOS}};
constexpr KindName<DDS_OwnershipQosPolicyKind> kOwnershipKinds[] = {
    {"SHARED_OWNERSHIP_QOS", DDS_SHARED_OWNERSHIP_QOS}, {"EXCLUSIVE_OWNERSHIP_QOS", DDS_EXCLUSIVE_OWNERSHIP_QOS}};
constexpr KindName<DDS_PresentationQosPolicyAccessScopeKind> kAccessScopeKinds[] = {
    {"INSTANCE_PRESENTATION_QOS", DDS_INSTANCE_PRESENTATION_QOS},
    {"TOPIC_PRESENTATION_QOS", DDS_TOPIC_PRESENTATION_QOS},
    {"GROUP_PRESENTATION_QOS", DDS_GROUP_PRESENTATION_QOS}};
constexpr KindName<DDS_LivelinessQosPolicyKind> kLivelinessKinds[] = {
    {"AUTOMATIC_LIVELINESS_QOS", DDS_AUTOMATIC_LIVELINESS_QOS},
    {"MANUAL_BY_PARTICIPANT_LIVELINESS_QOS", DDS_MANUAL_BY_PARTICIPANT_LIVELINESS_QOS},
    {"MANUAL_BY_TOPIC_LIVELINESS_QOS", DDS_MANUAL_BY_TOPIC_LIVELINESS_QOS}};
constexpr KindName<DDS_DestinationOrderQosPolicyKind> kDestinationOrderKinds[] = {
    {"BY_RECEPTION_TIMESTAMP_DESTINATIONORDER_QOS", DDS_BY_RECEPTION_TIMESTAMP_DESTINATIONORDER_QOS},
    {"BY_SOURCE_TIMESTAMP_DESTINATIONORDER_QOS", DDS_BY_SOURCE_TIMESTAMP_DESTINATIONORDER_QOS}};

// Chosen by the kind's type.
std::span<const KindName<DDS_ReliabilityQosPolicyKind>> kindNames(DDS_ReliabilityQosPolicyKind) {
    return kReliabilityKinds;
}
std::span<const KindName<DDS_DurabilityQosPolicyKind>> kindNames(DDS_DurabilityQosPolicyKind) {
    return kDurabilityKinds;
}
std::span<const KindName<DDS_HistoryQosPolicyKind>> kindNames(DDS_HistoryQosPolicyKind) { return kHistoryKinds; }
std::span<const KindName<DDS_OwnershipQosPolicyKind>> kindNames(DDS_OwnershipQosPolicyKind) { return kOwnershipKinds; }
std::span<const KindName<DDS_PresentationQosPolicyAccessScopeKind>>
kindNames(DDS_PresentationQosPolicyAccessScopeKind) {
    return kAccessScopeKinds;
}
std::span<const KindName<DDS_LivelinessQosPolicyKind>> kindNames(DDS_LivelinessQosPolicyKind) {
    return kLivelinessKinds;
}
std::span<const KindName<DDS_DestinationOrderQosPolicyKind>> kindNames(DDS_DestinationOrderQosPolicyKind) {
    return kDestinationOrderKinds;
}

// ---------------------------------------------------------------------------
// Reading

// Collects the errors of one element; reading goes on after each, so that
// a file shows all its mistakes at once.
class Reader {
public:
    explicit Reader(std::vector<xml::XmlError> &errors) noexcept : errors_(errors) {}

    void fail(const DDS_XMLObject &at, const std::string &message) {
        errors_.push_back({DDS_XMLObject_get_line_number(&at), message});
        ok_ = false;
    }
    bool ok() const noexcept { return ok_; }

private:
    std::vector<xml::XmlError> &errors_;
    bool ok_ = true;
};

std::string tagOf(const DDS_XMLObject &element) {
    return std::string("<") + DDS_XMLObject_get_tag_name(&element) + ">";
}

std::string_view textOf(const DDS_XMLObject &element) noexcept {
    const char *text = DDS_XMLObject_get_text(&element);
    return text != nullptr ? text : "";
}

void failValue(const DDS_XMLObject &element, const char *expected, Reader &reader) {
    reader.fail(element, tagOf(element) + " expects " + expected + ", not \"" + std::string(textOf(element)) + "\"");
}

// The text without a "DDS_" in front, so that the C names read as the OMG ones.
std::string_view withoutPrefix(std::string_view text) noexcept {
    return text.starts_with("DDS_") ? text.substr(4) : text;
}

// A decimal integer between `low` and `high`; false for anything else.
bool readInteger(const DDS_XMLObject &element, std::int64_t low, std::int64_t high, std::int64_t &out) {
    const std::string text(textOf(element));
    if (text.empty()) return false;
    char *end = nullptr;
    errno = 0;
    const long long value = std::strtoll(text.c_str(), &end, 10);
    if (errno != 0 || *end != '\0' || value < low || value > high) return false;
    out = value;
    return true;
}

void readValue(const DDS_XMLObject &element, DDS_Long &out, Reader &reader) {
    if (withoutPrefix(textOf(element)) == "LENGTH_UNLIMITED") {
        out = DDS_LENGTH_UNLIMITED;
        return;
    }
    std::int64_t value = 0;
    if (!readInteger(element, std::numeric_limits<DDS_Long>::min(), std::numeric_limits<DDS_Long>::max(), value)) {
        failValue(element, "an integer or LENGTH_UNLIMITED", reader);
        return;
    }
    out = static_cast<DDS_Long>(value);
}

void readValue(const DDS_XMLObject &element, DDS_Boolean &out, Reader &reader) {
    const std::optional<bool> value = xml::parseBoolean(textOf(element));
    if (!value) {
        failValue(element, "true or false", reader);
        return;
    }
    out = *value ? DDS_BOOLEAN_TRUE : DDS_BOOLEAN_FALSE;
}

template <typename Kind>
requires std::is_enum_v<Kind>
void readValue(const DDS_XMLObject &element, Kind &out, Reader &reader) {
    const std::string_view text = withoutPrefix(textOf(element));
    for (const KindName<Kind> &kind : kindNames(Kind{})) {
        if (text == kind.name) {
            out = kind.value;
            return;
        }
    }
    std::string expected = "one of";
    for (const KindName<Kind> &kind : kindNames(Kind{})) expected += std::string(" ") + kind.name;
    failValue(element, expected.c_str(), reader);
}

// <sec> or <nanosec>: a number up to `high`, or a name of the infinite or
// the zero duration.
void readDurationPart(const DDS_XMLObject &element, std::int64_t high, std::int64_t infinite, std::int64_t &out,
                      Reader &reader) {
    const std::string_view text = withoutPrefix(textOf(element));
    if (text == "DURATION_INFINITY" || text == "DURATION_INFINITE_SEC" || text == "DURATION_INFINITE_NSEC") {
        out = infinite;
    } else if (text == "DURATION_ZERO_SEC" || text == "DURATION_ZERO_NSEC") {
        out = 0;
    } else if (!readInteger(element, 0, high, out)) {
        failValue(element, "a number or DURATION_INFINITY", reader);
    }
}

// The element gives the whole duration: a part it leaves out is 0, and
// either part infinite makes it infinite. Mixing a part into what a base
// profile or the default held could give a finite second with an infinite
// nanosecond, which is no duration at all.
void readValue(const DDS_XMLObject &element, DDS_Duration_t &out, Reader &reader) {
    std::int64_t sec = 0;
    std::int64_t nanosec = 0;
    for (const DDS_XMLObject *part = DDS_XMLObject_get_first_child(&element); part != nullptr;
         part = DDS_XMLObject_get_next_sibling(part)) {
        const std::string_view tag = DDS_XMLObject_get_tag_name(part);
        if (tag == "sec") {
            readDurationPart(*part, DDS_DURATION_INFINITE_SEC, DDS_DURATION_INFINITE_SEC, sec, reader);
        } else if (tag == "nanosec") {
            readDurationPart(*part, 999'999'999, DDS_DURATION_INFINITE_NSEC, nanosec, reader);
        } else {
            reader.fail(*part,
                        "unknown element " + tagOf(*part) + " in " + tagOf(element) + " (expected <sec>, <nanosec>)");
        }
    }
    if (sec == DDS_DURATION_INFINITE_SEC || nanosec == DDS_DURATION_INFINITE_NSEC) {
        out = DDS_DURATION_INFINITE_INITIALIZER;
    } else {
        out = {static_cast<DDS_Long>(sec), static_cast<DDS_UnsignedLong>(nanosec)};
    }
}

// A string the record owns.
void readValue(const DDS_XMLObject &element, char *&out, Reader &) {
    char *copy = DDS_String_dup(std::string(textOf(element)).c_str());
    if (copy == nullptr) throw std::bad_alloc();
    DDS_String_free(out);
    out = copy;
}

// <element> children, in order; they replace what the sequence held.
void readValue(const DDS_XMLObject &element, DDS_StringSeq &out, Reader &reader) {
    std::vector<const DDS_XMLObject *> items;
    for (const DDS_XMLObject *item = DDS_XMLObject_get_first_child(&element); item != nullptr;
         item = DDS_XMLObject_get_next_sibling(item)) {
        if (std::string_view(DDS_XMLObject_get_tag_name(item)) != "element") {
            reader.fail(*item, "unknown element " + tagOf(*item) + " in " + tagOf(element) + " (expected <element>)");
            continue;
        }
        items.push_back(item);
    }
    const auto length = static_cast<DDS_Long>(items.size());
    if (!DDS_StringSeq_ensure_length(&out, length, length)) throw std::bad_alloc();
    for (DDS_Long i = 0; i < length; ++i)
        readValue(*items[static_cast<std::size_t>(i)], *DDS_StringSeq_get_reference(&out, i), reader);
}

// The value of a hexadecimal digit, or -1.
int hexDigit(char digit) noexcept {
    if (digit >= '0' && digit <= '9') return digit - '0';
    if (digit >= 'a' && digit <= 'f') return digit - 'a' + 10;
    if (digit >= 'A' && digit <= 'F') return digit - 'A' + 10;
    return -1;
}

// Bytes as pairs of hexadecimal digits, white space between pairs allowed.
void readValue(const DDS_XMLObject &element, DDS_OctetSeq &out, Reader &reader) {
    std::vector<DDS_Octet> bytes;
    const std::string_view text = textOf(element);
    for (std::size_t i = 0; i < text.size();) {
        if (std::strchr(" \t\r\n", text[i]) != nullptr) {
            ++i;
            continue;
        }
        const int high = hexDigit(text[i]);
        const int low = i + 1 < text.size() ? hexDigit(text[i + 1]) : -1;
        if (high < 0 || low < 0) {
            failValue(element, "bytes as pairs of hexadecimal digits", reader);
            return;
        }
        bytes.push_back(static_cast<DDS_Octet>(high * 16 + low));
        i += 2;
    }
    const auto length = static_cast<DDS_Long>(bytes.size());
    if (!DDS_OctetSeq_ensure_length(&out, length, length)) throw std::bad_alloc();
    for (DDS_Long i = 0; i < length; ++i) *DDS_OctetSeq_get_reference(&out, i) = bytes[static_cast<std::size_t>(i)];
}

// A policy: each child sets the field of its tag.
template <typename Policy>
requires requires { PolicyXml<Policy>::fields; }
void readValue(const DDS_XMLObject &element, Policy &policy, Reader &reader) {
    for (const DDS_XMLObject *child = DDS_XMLObject_get_first_child(&element); child != nullptr;
         child = DDS_XMLObject_get_next_sibling(child)) {
        const std::string_view tag = DDS_XMLObject_get_tag_name(child);
        const bool known = std::apply(
            [&](auto... field) {
                return ((tag == field.tag && (readValue(*child, policy.*field.member, reader), true)) || ...);
            },
            PolicyXml<Policy>::fields);
        if (!known) reader.fail(*child, "unknown element " + tagOf(*child) + " in " + tagOf(element));
    }
}

}  // namespace

template <typename Qos>
bool readQos(const DDS_XMLObject &element, Qos &qos, std::vector<xml::XmlError> &errors) {
    Reader reader(errors);
    for (const DDS_XMLObject *child = DDS_XMLObject_get_first_child(&element); child != nullptr;
         child = DDS_XMLObject_get_next_sibling(child)) {
        const std::string_view tag = DDS_XMLObject_get_tag_name(child);
        const bool known = std::apply(
            [&](auto... policy) {
                return ((tag == PolicyXml<std::remove_reference_t<decltype(qos.*policy)>>::tag &&
                         (readValue(*child, qos.*policy, reader), true)) ||
                        ...);
            },
            kPolicies<Qos>);
        if (!known) reader.fail(*child, "unknown QoS policy " + tagOf(*child) + " in " + tagOf(element));
    }
    return reader.ok();
}

template bool readQos(const DDS_XMLObject &, DDS_DomainParticipantQos &, std::vector<xml::XmlError> &);
template bool readQos(const DDS_XMLObject &, DDS_PublisherQos &, std::vector<xml::XmlError> &);
template bool readQos(const DDS_XMLObject &, DDS_SubscriberQos &, std::vector<xml::XmlError> &);
template bool readQos(const DDS_XMLObject &, DDS_TopicQos &, std::vector<xml::XmlError> &);
template bool readQos(const DDS_XMLObject &, DDS_DataWriterQos &, std::vector<xml::XmlError> &);
template bool readQos(const DDS_XMLObject &, DDS_DataReaderQos &, std::vector<xml::XmlError> &);

}  // namespace vexar::dds
