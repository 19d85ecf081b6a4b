// The C operations of the QoS records: defaults, deep copy and finalize,
// walking each record's policies (platform/dds/qos_records.hpp).
#include "platform/dds/qos.h"

#include <type_traits>

#include "platform/runtime/dds_string.h"
#include "platform/dds/qos_records.hpp"
#include "platform/log/report.h"

namespace vexar::dds {
namespace {

// ---------------------------------------------------------------------------
// Owned members: the entity name's strings, partition names, and the bytes
// of user, topic and group data

constexpr const char *kOutOfMemoryForCopy = "out of memory copying a name or a sequence";

// The sequence that a policy owns, const or not.
template <typename Policy>
requires std::is_same_v<decltype(Policy::value), DDS_OctetSeq>
auto &ownedSequence(Policy &policy) noexcept { return policy.value; }
template <typename Policy>
requires std::is_same_v<std::remove_const_t<Policy>, DDS_PartitionQosPolicy>
auto &ownedSequence(Policy &policy) noexcept { return policy.name; }

template <typename Policy>
concept OwnsSequence = requires(Policy &policy) {
    ownedSequence(policy);
};

// A loaned buffer belongs to its lender: it goes back rather than being freed.
void releaseSequence(DDS_StringSeq &sequence) noexcept {
    if (DDS_StringSeq_has_ownership(&sequence)) {
        DDS_StringSeq_finalize(&sequence);
    } else {
        DDS_StringSeq_unloan(&sequence);
    }
}
void releaseSequence(DDS_OctetSeq &sequence) noexcept {
    if (DDS_OctetSeq_has_ownership(&sequence)) {
        DDS_OctetSeq_finalize(&sequence);
    } else {
        DDS_OctetSeq_unloan(&sequence);
    }
}

bool copySequence(DDS_StringSeq &dst, const DDS_StringSeq &src) noexcept {
    return DDS_StringSeq_copy(&dst, &src) != nullptr;
}
bool copySequence(DDS_OctetSeq &dst, const DDS_OctetSeq &src) noexcept {
    return DDS_OctetSeq_copy(&dst, &src) != nullptr;
}

template <typename Policy>
void release(Policy &) noexcept {}

void release(DDS_EntityNameQosPolicy &policy) noexcept {
    DDS_String_free(policy.name);
    DDS_String_free(policy.role_name);
    policy = {nullptr, nullptr};
}

template <OwnsSequence Policy>
void release(Policy &policy) noexcept {
    releaseSequence(ownedSequence(policy));
}

template <typename Policy>
bool copyPolicy(Policy &dst, const Policy &src) noexcept {
    dst = src;
    return true;
}

// A copy of `text` (null stays null) into `out`; false when out of memory.
bool duplicate(const char *text, char *&out) noexcept {
    out = DDS_String_dup(text);
    return text == nullptr || out != nullptr;
}

bool copyPolicy(DDS_EntityNameQosPolicy &dst, const DDS_EntityNameQosPolicy &src) noexcept {
    return duplicate(src.name, dst.name) && duplicate(src.role_name, dst.role_name);
}

// `dst` is a record's fresh default: an empty sequence of its own.
template <OwnsSequence Policy>
bool copyPolicy(Policy &dst, const Policy &src) noexcept {
    return copySequence(ownedSequence(dst), ownedSequence(src));
}

template <typename Qos>
void releaseRecord(Qos &qos) noexcept {
    visitPolicies<Qos>([&](auto policy) {
        release(qos.*policy);
        return true;
    });
}

// ---------------------------------------------------------------------------
// The C operations

template <typename Qos>
DDS_ReturnCode_t initializeRecord(Qos *self, const char *context) noexcept {
    if (self == nullptr) {
        OBLX_Report_badParameter(context, "self");
        return DDS_RETCODE_BAD_PARAMETER;
    }
    *self = kDefaults<Qos>;
    return DDS_RETCODE_OK;
}

template <typename Qos>
DDS_ReturnCode_t finalizeRecord(Qos *self, const char *context) noexcept {
    if (self == nullptr) {
        OBLX_Report_badParameter(context, "self");
        return DDS_RETCODE_BAD_PARAMETER;
    }
    releaseRecord(*self);
    *self = kDefaults<Qos>;
    return DDS_RETCODE_OK;
}

// Copies into a fresh record first, so that a failed copy leaves dst as it was.
template <typename Qos>
DDS_ReturnCode_t copyRecord(Qos *dst, const Qos *src, const char *context) noexcept {
    if (dst == nullptr || src == nullptr) {
        OBLX_Report_badParameter(context, dst == nullptr ? "dst" : "src");
        return DDS_RETCODE_BAD_PARAMETER;
    }
    if (dst == src) return DDS_RETCODE_OK;
    Qos copy = kDefaults<Qos>;
    if (!visitPolicies<Qos>([&](auto policy) { return copyPolicy(copy.*policy, src->*policy); })) {
        releaseRecord(copy);
        OBLX_Report_failure(context, kOutOfMemoryForCopy);
        return DDS_RETCODE_OUT_OF_RESOURCES;
    }
    releaseRecord(*dst);
    *dst = copy;
    return DDS_RETCODE_OK;
}

}  // namespace

template <typename Qos>
void releaseQos(Qos &qos) noexcept {
    releaseRecord(qos);
    qos = kDefaults<Qos>;
}

template <typename Qos>
DDS_ReturnCode_t copyQos(Qos &dst, const Qos &src, const char *context) noexcept {
    return copyRecord(&dst, &src, context);
}

#define VEXAR_QOS_RECORD_TEMPLATES(Qos)          \
    template void releaseQos(Qos &qos) noexcept; \
    template DDS_ReturnCode_t copyQos(Qos &dst, const Qos &src, const char *context) noexcept
VEXAR_QOS_RECORD_TEMPLATES(DDS_DomainParticipantQos);
VEXAR_QOS_RECORD_TEMPLATES(DDS_PublisherQos);
VEXAR_QOS_RECORD_TEMPLATES(DDS_SubscriberQos);
VEXAR_QOS_RECORD_TEMPLATES(DDS_TopicQos);
VEXAR_QOS_RECORD_TEMPLATES(DDS_DataWriterQos);
VEXAR_QOS_RECORD_TEMPLATES(DDS_DataReaderQos);
#undef VEXAR_QOS_RECORD_TEMPLATES

}  // namespace vexar::dds

using vexar::dds::copyRecord;
using vexar::dds::finalizeRecord;
using vexar::dds::initializeRecord;

// The C names, thin wrappers over the templates above.
#define VEXAR_QOS_RECORD_OPERATIONS(Qos)                                                                \
    DDS_ReturnCode_t Qos##_initialize(Qos *self) { return initializeRecord(self, #Qos "_initialize"); } \
    DDS_ReturnCode_t Qos##_finalize(Qos *self) { return finalizeRecord(self, #Qos "_finalize"); }       \
    DDS_ReturnCode_t Qos##_copy(Qos *dst, const Qos *src) { return copyRecord(dst, src, #Qos "_copy"); }

extern "C" {
VEXAR_QOS_RECORD_OPERATIONS(DDS_DomainParticipantQos)
VEXAR_QOS_RECORD_OPERATIONS(DDS_PublisherQos)
VEXAR_QOS_RECORD_OPERATIONS(DDS_SubscriberQos)
VEXAR_QOS_RECORD_OPERATIONS(DDS_TopicQos)
VEXAR_QOS_RECORD_OPERATIONS(DDS_DataWriterQos)
VEXAR_QOS_RECORD_OPERATIONS(DDS_DataReaderQos)
}
