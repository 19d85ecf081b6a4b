#include "vexar/Options.h"

#include <cstdlib>

#include "platform/runtime/dds_string.h"
#include "vexar/VexarUtility.h"
#include "vexar/logger_core.hpp"
#include "vexar/report_line.hpp"

namespace {

constexpr DDS_Long kDefaultFilterLevel = QTV_VX_LOG_LEVEL_INFO;
constexpr DDS_UnsignedLong kDefaultQueueSize = 128;

using vexar::reportError;

bool present(const QTV_VX_Options *self, const char *source) noexcept {
    return vexar::present(self, source, "QTV_VX_Options is null");
}

DDS_ReturnCode_t refuse(const char *text, const char *source) noexcept {
    reportError(text, source);
    return DDS_RETCODE_BAD_PARAMETER;
}

// Stores `value` in `field` of a present record, unless `refusal` names
// what is wrong with it.
template <typename Field>
DDS_ReturnCode_t store(QTV_VX_Options *self, const char *source, Field QTV_VX_Options::*field, Field value,
                       const char *refusal = nullptr) noexcept {
    if (!present(self, source)) {
        return DDS_RETCODE_NO_DATA;
    }
    if (refusal != nullptr) {
        return refuse(refusal, source);
    }
    self->*field = value;
    return DDS_RETCODE_OK;
}

// Replaces an owned text with a duplicate of `text`. The duplicate is made
// before the old text is freed, so `text` may be the old text itself. On
// failure the field is left null. True when the duplicate was made.
bool replaceText(char *&field, const char *text) noexcept {
    char *duplicate = DDS_String_dup(text);
    DDS_String_free(field);
    field = duplicate;
    return duplicate != nullptr;
}

DDS_ReturnCode_t storeText(QTV_VX_Options *self, const char *source, char *QTV_VX_Options::*field, const char *text,
                           const char *nullRefusal, const char *allocationFailure) noexcept {
    if (!present(self, source)) {
        return DDS_RETCODE_NO_DATA;
    }
    if (text == nullptr) {
        return refuse(nullRefusal, source);
    }
    if (!replaceText(self->*field, text)) {
        reportError(allocationFailure, source);
        return DDS_RETCODE_ERROR;
    }
    return DDS_RETCODE_OK;
}

// Copies one text of the origin unless it is null there.
bool copyText(char *&destination, const char *origin, const char *failure) noexcept {
    if (origin == nullptr || replaceText(destination, origin)) {
        return true;
    }
    reportError(failure, "QTV_VX_Options_copy");
    return false;
}

void setDefaults(QTV_VX_Options *self) noexcept {
    self->domainParticipant = nullptr;
    self->enabled = 1;
    self->remoteAdministrationEnabled = 1;
    self->filterLevel = kDefaultFilterLevel;
    self->domainId = 0;
    self->queueSize = kDefaultQueueSize;
    self->echoToStdout = 0;
    self->logInfrastructureMessages = 1;
}

}  // namespace

extern "C" {

QTV_VX_Options *QTV_VX_Options_createDefault(void) {
    auto *self = static_cast<QTV_VX_Options *>(std::calloc(1, sizeof(QTV_VX_Options)));
    if (self == nullptr || !DDS_ThreadSettings_t_initialize(&self->threadSettings)) {
        std::free(self);
        vexar::reportWarning("Unable to allocate memory for QTV_VX_Options", "QTV_VX_Options_createDefault");
        return nullptr;
    }
    setDefaults(self);
    return self;
}

DDS_Long QTV_VX_Options_copy(QTV_VX_Options *destination, const QTV_VX_Options *origin) {
    constexpr const char *source = "QTV_VX_Options_copy";
    if (destination == nullptr) {
        reportError("Pointer to destination QTV_VX_Options is NULL", source);
        return 0;
    }
    if (origin == nullptr) {
        // "QTV_VX_Option s" is deliberate: the published report text.
        reportError("Pointer to origin QTV_VX_Option s is NULL", source);
        return 0;
    }
    destination->enabled = origin->enabled;
    destination->remoteAdministrationEnabled = origin->remoteAdministrationEnabled;
    destination->filterLevel = origin->filterLevel;
    destination->queueSize = origin->queueSize;
    destination->domainId = origin->domainId;
    // "to to" is deliberate: the published report text.
    if (!copyText(destination->applicationKind, origin->applicationKind, "Unable to to copy Application Kind") ||
        !copyText(destination->qosLibrary, origin->qosLibrary, "Unable to copy QoS library") ||
        !copyText(destination->qosProfile, origin->qosProfile, "Unable to copy QoS profile")) {
        return 0;
    }
    // A failed copy leaves the destination's settings usable; it is not fatal.
    DDS_ThreadSettings_t_copy(&destination->threadSettings, &origin->threadSettings);
    destination->domainParticipant = origin->domainParticipant;
    return 1;
}

QTV_VX_Options *QTV_VX_Options_delete(QTV_VX_Options *self) {
    if (self == nullptr) {
        vexar::reportNote("QTV_VX_Options was already NULL", "QTV_VX_Options_delete");
        return nullptr;
    }
    DDS_ThreadSettings_t_finalize(&self->threadSettings);
    DDS_String_free(self->qosLibrary);
    DDS_String_free(self->qosProfile);
    DDS_String_free(self->applicationKind);
    std::free(self);
    return nullptr;
}

DDS_DomainParticipant *QTV_VX_Options_getDomainParticipant(const QTV_VX_Options *self) {
    return present(self, "QTV_VX_Options_getDomainParticipant") ? self->domainParticipant : nullptr;
}

DDS_ReturnCode_t QTV_VX_Options_setDomainParticipant(QTV_VX_Options *self, DDS_DomainParticipant *participant) {
    return store(self, "QTV_VX_Options_setDomainParticipant", &QTV_VX_Options::domainParticipant, participant,
                 participant == nullptr ? "domainParticipant is null" : nullptr);
}

DDS_Long QTV_VX_Options_isRemoteAdministrationEnabled(const QTV_VX_Options *self) {
    return present(self, "QTV_VX_Options_isRemoteAdministrationEnabled") ? self->remoteAdministrationEnabled : 0;
}

DDS_ReturnCode_t QTV_VX_Options_setRemoteAdministrationEnabled(QTV_VX_Options *self, DDS_Long enabled) {
    return store(self, "QTV_VX_Options_setRemoteAdministrationEnabled", &QTV_VX_Options::remoteAdministrationEnabled,
                 enabled);
}

DDS_Long QTV_VX_Options_getFilterLevel(const QTV_VX_Options *self) {
    return present(self, "QTV_VX_Options_getFilterLevel") ? self->filterLevel : -1;
}

DDS_ReturnCode_t QTV_VX_Options_setFilterLevel(QTV_VX_Options *self, DDS_Long level) {
    return store(self, "QTV_VX_Options_setFilterLevel", &QTV_VX_Options::filterLevel, level,
                 level < 0 ? "Filter Level must be positive or zero" : nullptr);
}

DDS_Long QTV_VX_Options_getDomainId(const QTV_VX_Options *self) {
    // "hetDomainId" is deliberate: the published report names the getter so.
    return present(self, "QTV_VX_Options_hetDomainId") ? static_cast<DDS_Long>(self->domainId) : -1;
}

DDS_ReturnCode_t QTV_VX_Options_setDomainId(QTV_VX_Options *self, DDS_Long domainId) {
    return store(self, "QTV_VX_Options_setDomainId", &QTV_VX_Options::domainId, static_cast<DDS_UnsignedLong>(domainId),
                 domainId < 0 ? "Domain Id must be positive or zero" : nullptr);
}

const char *QTV_VX_Options_getQosLibrary(const QTV_VX_Options *self) {
    return present(self, "QTV_VX_Options_getQoSLibrary") ? self->qosLibrary : nullptr;
}

DDS_ReturnCode_t QTV_VX_Options_setQosLibrary(QTV_VX_Options *self, const char *qosLibrary) {
    return storeText(self, "QTV_VX_Options_setQoSLibrary", &QTV_VX_Options::qosLibrary, qosLibrary,
                     "QoS Library is NULL", "Unable to allocate memory for qosLibrary");
}

const char *QTV_VX_Options_getQosProfile(const QTV_VX_Options *self) {
    return present(self, "QTV_VX_Options_getQoSProfile") ? self->qosProfile : nullptr;
}

DDS_ReturnCode_t QTV_VX_Options_setQosProfile(QTV_VX_Options *self, const char *qosProfile) {
    return storeText(self, "QTV_VX_Options_setQoSProfile", &QTV_VX_Options::qosProfile, qosProfile,
                     "QoS Profile is NULL", "Unable to allocate memory for qosProfile");
}

DDS_Long QTV_VX_Options_getQueueSize(const QTV_VX_Options *self) {
    return present(self, "QTV_VX_Options_getQueueSize") ? static_cast<DDS_Long>(self->queueSize) : -1;
}

DDS_ReturnCode_t QTV_VX_Options_setQueueSize(QTV_VX_Options *self, DDS_Long queueSize) {
    return store(self, "QTV_VX_Options_setQueueSize", &QTV_VX_Options::queueSize,
                 static_cast<DDS_UnsignedLong>(queueSize), queueSize < 1 ? "Queue Size must be positive" : nullptr);
}

const DDS_ThreadSettings_t *QTV_VX_Options_getThreadSettings(const QTV_VX_Options *self) {
    return present(self, "QTV_VX_Options_getThreadSettings") ? &self->threadSettings : nullptr;
}

DDS_ReturnCode_t QTV_VX_Options_setThreadSettings(QTV_VX_Options *self, const DDS_ThreadSettings_t *settings) {
    constexpr const char *source = "QTV_VX_Options_setThreadSettings";
    if (!present(self, source)) {
        return DDS_RETCODE_NO_DATA;
    }
    if (settings == nullptr || !DDS_ThreadSettings_t_copy(&self->threadSettings, settings)) {
        reportError("couldn't copy thread settings", source);
        return DDS_RETCODE_ERROR;
    }
    return DDS_RETCODE_OK;
}

const char *QTV_VX_Options_getApplicationKind(const QTV_VX_Options *self) {
    return present(self, "QTV_VX_Options_getApplicationKind") ? self->applicationKind : nullptr;
}

DDS_ReturnCode_t QTV_VX_Options_setApplicationKind(QTV_VX_Options *self, const char *applicationKind) {
    return storeText(self, "QTV_VX_Options_setApplicationKind", &QTV_VX_Options::applicationKind, applicationKind,
                     "application kind is NULL", "Unable to allocate memory for Application Kind");
}

DDS_Long QTV_VX_Options_getEchoToStdout(const QTV_VX_Options *self) {
    return present(self, "QTV_VX_Options_getEchoToStdout") ? self->echoToStdout : 0;
}

DDS_ReturnCode_t QTV_VX_Options_setEchoToStdout(QTV_VX_Options *self, DDS_Long echo) {
    DDS_ReturnCode_t result = store(self, "QTV_VX_Options_setEchoToStdout", &QTV_VX_Options::echoToStdout, echo);
    if (result == DDS_RETCODE_OK) vexar::refreshLevelGateFor(self);
    return result;
}

DDS_Long QTV_VX_Options_getLogInfrastructureMessages(const QTV_VX_Options *self) {
    return present(self, "QTV_VX_Options_getLogInfrastructureMessages") ? self->logInfrastructureMessages : 0;
}

DDS_ReturnCode_t QTV_VX_Options_setLogInfrastructureMessages(QTV_VX_Options *self, DDS_Long enabled) {
    return store(self, "QTV_VX_Options_setLogInfrastructureMessages", &QTV_VX_Options::logInfrastructureMessages,
                 enabled);
}

}  // extern "C"
