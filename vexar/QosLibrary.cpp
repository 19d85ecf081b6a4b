#include "vexar/QosLibrary.h"

#include <mutex>

#include "platform/dds/domain_participant_factory.h"
#include "platform/dds/xml_configuration.h"

namespace {

// No resource limits on the writer: Cyclone does not honour them (it bounds
// a writer's unacknowledged data in bytes), and asking would be reported on
// every writer made. Readers' limits are honoured, and unlimited by default.
// Lossless keeps all for live readers but only the last 1000 per application
// and level for late joiners, so a long-running logger does not grow.
constexpr const char *kLibraryXml = R"(<dds>
  <qos_library name=")" QTV_VX_QOS_LIBRARY_NAME R"(">
    <qos_profile name=")" QTV_VX_QOS_PROFILE_LOSSLESS R"(">
      <datawriter_qos topic_filter="qtv/vexar">
        <history><kind>KEEP_ALL_HISTORY_QOS</kind></history>
        <durability_service>
          <history_kind>KEEP_LAST_HISTORY_QOS</history_kind><history_depth>1000</history_depth>
        </durability_service>
      </datawriter_qos>
      <datareader_qos>
        <history><kind>KEEP_ALL_HISTORY_QOS</kind></history>
      </datareader_qos>
    </qos_profile>
    <qos_profile name=")" QTV_VX_QOS_PROFILE_BOUNDED R"(">
      <datawriter_qos topic_filter="qtv/vexar">
        <history><kind>KEEP_LAST_HISTORY_QOS</kind><depth>1000</depth></history>
        <lifespan><duration><sec>10</sec><nanosec>0</nanosec></duration></lifespan>
      </datawriter_qos>
    </qos_profile>
  </qos_library>
</dds>
)";

bool isLoaded(DDS_DomainParticipantFactory *factory) noexcept {
    DDS_StringSeq names = DDS_SEQUENCE_INITIALIZER;
    const bool listed =
        DDS_DomainParticipantFactory_get_qos_profiles(factory, &names, QTV_VX_QOS_LIBRARY_NAME) == DDS_RETCODE_OK &&
        DDS_StringSeq_get_length(&names) > 0;
    DDS_StringSeq_finalize(&names);
    return listed;
}

}  // namespace

extern "C" {

DDS_ReturnCode_t QTV_VX_QosLibrary_load(void) {
    // Two threads must not both find it missing and load it twice.
    static std::mutex loading;
    std::lock_guard lock(loading);
    DDS_DomainParticipantFactory *factory = DDS_DomainParticipantFactory_get_instance();
    if (isLoaded(factory)) return DDS_RETCODE_OK;
    return DDS_DomainParticipantFactory_load_xml_string(factory, kLibraryXml);
}

}  // extern "C"
