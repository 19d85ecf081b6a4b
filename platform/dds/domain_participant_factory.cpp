// The participant factory: participants on Cyclone, the default participant
// QoS (the profile look-ups are in factory_profiles.cpp).
#include "platform/dds/entity.hpp"

#include "platform/dds/factory_profiles.hpp"
#include "platform/dds/qos_cyclone.hpp"
#include "platform/log/failure_causes.hpp"
#include "platform/log/logger.h"

struct DDS_DomainParticipantFactoryImpl {
    std::mutex mutex;
    // The application's default, once it set one; until then the default
    // profile over the record's defaults, read anew each time.
    bool defaultQosSet = false;                                                  // under mutex
    DDS_DomainParticipantQos defaultQos = DDS_DomainParticipantQos_INITIALIZER;  // under mutex
};

namespace vexar::dds {
namespace {

DDS_DomainParticipantFactoryImpl theFactory;

}  // namespace

bool isFactory(const DDS_DomainParticipantFactory *factory, const char *context) noexcept {
    if (factory != &theFactory) {
        reportBadEntity(context, "self");
        return false;
    }
    return true;
}

namespace {

// The profile is read without the factory's mutex: an XML extension callback
// holds the XML lock and may ask for the default.
DDS_ReturnCode_t copyDefaultParticipantQos(DDS_DomainParticipantQos &qos, const char *context) {
    {
        std::lock_guard lock(theFactory.mutex);
        if (theFactory.defaultQosSet) return copyQos(qos, theFactory.defaultQos, context);
    }
    OwnedQos<DDS_DomainParticipantQos> defaults;
    const DDS_ReturnCode_t overlaid = overlayDefaultProfile(defaults.qos, nullptr, context);
    return overlaid == DDS_RETCODE_OK ? copyQos(qos, defaults.qos, context) : overlaid;
}

// Cyclone answers a participant it refuses (a certificate or permissions
// that do not verify, a configuration it cannot read) with a bare "Error"
// and says why only in its log: those lines go into our report of it, as
// " (because ...)". The report is raised after they were collected, so a
// caller's FailureCauses keeps it.
std::string joined(const log::FailureCauses &causes) {
    std::string text;
    for (const std::string &cause : causes.lines()) text.append(text.empty() ? " (because " : "; ").append(cause);
    if (causes.omitted() > 0) text.append("; ").append(std::to_string(causes.omitted())).append(" more lines");
    return text.empty() ? text : text.append(")");
}

DDS_DomainParticipant *createParticipant(DDS_DomainId_t domainId, const DDS_DomainParticipantQos *qos,
                                         const char *context) {
    OwnedQos<DDS_DomainParticipantQos> defaults;
    if (qos == nullptr && copyDefaultParticipantQos(defaults.qos, context) != DDS_RETCODE_OK) return nullptr;
    CycloneQos cycloneQos = toCyclone(qos != nullptr ? *qos : defaults.qos, context);
    if (cycloneQos == nullptr) return nullptr;
    std::string reasons;
    dds_entity_t handle;
    {
        log::FailureCauses causes;
        handle = dds_create_participant(static_cast<dds_domainid_t>(domainId), cycloneQos.get(), nullptr);
        if (handle < 0) reasons = joined(causes);
    }
    if (handle < 0) {
        reportCycloneFailure(context, "dds_create_participant", handle, reasons.c_str());
        return nullptr;
    }
    auto participant = std::make_unique<DDS_DomainParticipantImpl>(handle, domainId, false);
    return participant.release();
}

}  // namespace
}  // namespace vexar::dds

using namespace vexar::dds;

extern "C" {

DDS_DomainParticipantFactory *DDS_DomainParticipantFactory_get_instance(void) {
    // Cyclone's diagnostics flow through the middleware logger from the
    // first participant on.
    static const bool hooked = OBLX_Config_Logger_get_instance() != nullptr;
    (void)hooked;
    return &theFactory;
}

DDS_DomainParticipant *DDS_DomainParticipantFactory_create_participant(DDS_DomainParticipantFactory *self,
                                                                       DDS_DomainId_t domain_id,
                                                                       const DDS_DomainParticipantQos *qos,
                                                                       const DDS_DomainParticipantListener *listener,
                                                                       DDS_StatusMask mask) {
    const char *context = "DDS_DomainParticipantFactory_create_participant";
    if (!isFactory(self, context) || !acceptsNoCallbacks(listener, mask, context)) return nullptr;
    if (domain_id < 0) {
        OBLX_Report_badParameter(context, "domain_id");
        return nullptr;
    }
    return guarded(context, static_cast<DDS_DomainParticipant *>(nullptr),
                   [&] { return createParticipant(domain_id, qos, context); });
}

DDS_ReturnCode_t DDS_DomainParticipantFactory_delete_participant(DDS_DomainParticipantFactory *self,
                                                                 DDS_DomainParticipant *participant) {
    const char *context = "DDS_DomainParticipantFactory_delete_participant";
    if (!isFactory(self, context) || checked(participant, context, "participant") == nullptr) {
        return DDS_RETCODE_BAD_PARAMETER;
    }
    return guarded(context, DDS_RETCODE_ERROR, [&] {
        std::map<std::string, TypeRegistration> types;
        {
            std::lock_guard lock(participant->mutex);
            if (!participant->isEmpty()) {
                OBLX_Report_failure(context, "the participant still contains entities");
                return DDS_RETCODE_PRECONDITION_NOT_MET;
            }
            types.swap(participant->types);
        }
        for (auto &[name, type] : types) detachParticipant(type);
        DDS_ReturnCode_t result = DDS_RETCODE_OK;
        if (participant->discoveryReader > 0) (void)dds_delete(participant->discoveryReader);
        if (!participant->adopted) {
            dds_return_t deleted = dds_delete(participant->handle);
            if (deleted < 0) result = reportCycloneFailure(context, "dds_delete", deleted);
        }
        delete participant;
        return result;
    });
}

DDS_ReturnCode_t DDS_DomainParticipantFactory_get_default_participant_qos(DDS_DomainParticipantFactory *self,
                                                                          DDS_DomainParticipantQos *qos) {
    const char *context = "DDS_DomainParticipantFactory_get_default_participant_qos";
    if (!isFactory(self, context) || !isGiven(qos, context, "qos")) return DDS_RETCODE_BAD_PARAMETER;
    return guarded(context, DDS_RETCODE_ERROR, [&] { return copyDefaultParticipantQos(*qos, context); });
}

DDS_ReturnCode_t DDS_DomainParticipantFactory_set_default_participant_qos(DDS_DomainParticipantFactory *self,
                                                                          const DDS_DomainParticipantQos *qos) {
    const char *context = "DDS_DomainParticipantFactory_set_default_participant_qos";
    if (!isFactory(self, context)) return DDS_RETCODE_BAD_PARAMETER;
    return guarded(context, DDS_RETCODE_ERROR, [&] {
        std::lock_guard lock(theFactory.mutex);
        const DDS_ReturnCode_t copied = DDS_DomainParticipantQos_copy(&theFactory.defaultQos, qos);
        if (copied == DDS_RETCODE_OK) theFactory.defaultQosSet = true;
        return copied;
    });
}

}  // extern "C"
