// The participants that discovery announced, read from Cyclone's built-in
// participant topic, so that tools can tell applications apart by what
// they announce: the entity name and the user data of their participants.
#include "platform/dds/entity.hpp"

#include <vector>

#include "platform/dds/qos_cyclone.hpp"

namespace vexar::dds {
namespace {

// Samples read per call. Constant, since Cyclone 0.10.2 mishandles a
// loaned read after one with a larger count.
constexpr int32_t kMostParticipants = 1024;

dds_entity_t discoveryReaderOf(DDS_DomainParticipantImpl &participant, const char *context) {
    std::lock_guard lock(participant.mutex);
    if (participant.discoveryReader > 0) return participant.discoveryReader;
    dds_entity_t reader = dds_create_reader(participant.handle, DDS_BUILTIN_TOPIC_DCPSPARTICIPANT, nullptr, nullptr);
    if (reader < 0) {
        reportCycloneFailure(context, "dds_create_reader", reader);
        return reader;
    }
    participant.discoveryReader = reader;
    return reader;
}

void visitSample(const dds_builtintopic_participant_t &sample, OBLX_DiscoveredParticipantVisitor visit, void *context) {
    char *name = nullptr;
    if (sample.qos == nullptr || !dds_qget_entity_name(sample.qos, &name)) name = nullptr;
    void *userData = nullptr;
    size_t userDataSize = 0;
    if (sample.qos == nullptr || !dds_qget_userdata(sample.qos, &userData, &userDataSize)) userData = nullptr;
    DDS_WireProtocolQosPolicy ids = wireProtocolFromGuid(sample.key);
    OBLX_DiscoveredParticipant discovered{ids.rtps_host_id,
                                          ids.rtps_app_id,
                                          ids.rtps_instance_id,
                                          name,
                                          static_cast<const DDS_Octet *>(userData),
                                          userData != nullptr ? static_cast<DDS_Long>(userDataSize) : 0};
    visit(context, &discovered);
    dds_free(name);
    dds_free(userData);
}

}  // namespace
}  // namespace vexar::dds

using namespace vexar::dds;

extern "C" {

DDS_ReturnCode_t OBLX_DomainParticipant_visit_discovered_participants(DDS_DomainParticipant *self,
                                                                      OBLX_DiscoveredParticipantVisitor visit,
                                                                      void *context) {
    const char *where = "OBLX_DomainParticipant_visit_discovered_participants";
    if (checked(self, where) == nullptr || !isGiven(reinterpret_cast<const void *>(visit), where, "visit"))
        return DDS_RETCODE_BAD_PARAMETER;
    return guarded(where, DDS_RETCODE_ERROR, [&] {
        dds_entity_t reader = discoveryReaderOf(*self, where);
        if (reader < 0) return DDS_RETCODE_ERROR;
        // On the heap: the caller's thread may have a small stack.
        std::vector<void *> samples(kMostParticipants, nullptr);
        std::vector<dds_sample_info_t> infos(kMostParticipants);
        int32_t count = dds_read_mask(reader, samples.data(), infos.data(), kMostParticipants, kMostParticipants,
                                      DDS_ANY_SAMPLE_STATE | DDS_ANY_VIEW_STATE | DDS_IST_ALIVE);
        if (count < 0) return reportCycloneFailure(where, "dds_read_mask", count);
        for (int32_t i = 0; i < count; ++i) {
            if (infos[i].valid_data)
                visitSample(*static_cast<dds_builtintopic_participant_t *>(samples[i]), visit, context);
        }
        (void)dds_return_loan(reader, samples.data(), count);
        return DDS_RETCODE_OK;
    });
}

}  // extern "C"
