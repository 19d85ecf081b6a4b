// The C operations of the QoS records: defaults, deep copy and finalize,
// walking each record's policies (platform/dds/qos_records.hpp).
#include "platform/dds/qos.h"

#include "platform/runtime/dds_string.h"
#include "platform/dds/qos_records.hpp"
#include "platform/log/report.h"

namespace vexar::dds {
namespace {

// ---------------------------------------------------------------------------
// Owned strings: only the entity name holds any

constexpr const char *kOutOfMemoryForString = "out of memory copying a name string";

template <typename Policy>
void release(Policy &) noexcept {}

void release(DDS_EntityNameQosPolicy &policy) noexcept {
    DDS_String_free(policy.name);
    DDS_String_free(policy.role_name);
    policy = {nullptr, nullptr};
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
        OBLX_Report_failure(context, kOutOfMemoryForString);
        return DDS_RETCODE_OUT_OF_RESOURCES;
    }
    releaseRecord(*dst);
    *dst = copy;
    return DDS_RETCODE_OK;
}

}  // namespace
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
