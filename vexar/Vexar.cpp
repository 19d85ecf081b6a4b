#include <cstdio>
#include <cstdlib>

#include "platform/dds/data_reader.h"
#include "platform/dds/domain_participant.h"
#include "platform/runtime/global_lock.h"
#include "type/vexarSupport.h"
#include "vexar/Vexar.h"
#include "vexar/admin_state.hpp"
#include "vexar/logger_core.hpp"
#include "vexar/report_line.hpp"
#include "vexar/statistics_topic.hpp"

extern "C" {
QTV_VX_Vexar *QTV_VX_Vexar_instance = nullptr;
QTV_VX_Options *gQTV_VX_Vexar_currentOptions = nullptr;
volatile DDS_Long gQTV_VX_Vexar_initialized = 0;
}

namespace {

constexpr const char *kCreateSource = "QTV_VX_Vexar_createInstance";
// The getter has always reported under this name, without "VX_"; kept for
// whoever matches on it.
constexpr const char *kGetInstanceSource = "QTV_Vexar_getInstance";
constexpr const char *kFinalizeSource = "QTV_VX_Vexar_finalizeInstance";

QTV_VX_Vexar *currentInstance() noexcept { return vexar::shared(QTV_VX_Vexar_instance).load(); }
QTV_VX_Options *registeredOptions() noexcept { return vexar::shared(gQTV_VX_Vexar_currentOptions).load(); }
void setInitialized(bool initialized) noexcept { vexar::shared(gQTV_VX_Vexar_initialized).store(initialized ? 1 : 0); }

// Prints `text` as a creation failure and takes down what was built.
QTV_VX_Vexar *failCreation(QTV_VX_Vexar *self, const char *text) noexcept {
    vexar::reportError(text, kCreateSource);
    return QTV_VX_Vexar_destroy(self);
}

bool chooseOptions(QTV_VX_Vexar &self) noexcept {
    self.options = registeredOptions();
    if (self.options != nullptr) return true;
    vexar::reportNote("Creating Vexar with default options", kCreateSource);
    self.options = QTV_VX_Options_createDefault();
    return self.options != nullptr;
}

// Longer application kinds are cut to the State's bound.
void describeInState(QTV_VX_Vexar &self) noexcept {
    QTV_VX_ADMIN_State &state = *self.state;
    state.state = QTV_VX_STATE_INITIALIZING;
    if (self.options->applicationKind != nullptr) {
        std::snprintf(state.applicationKind, QTV_VX_ADMIN_STATE_APPLICATION_KIND_MAX_LENGTH + 1, "%s",
                      self.options->applicationKind);
    }
    state.filterLevel = self.options->filterLevel;
    self.loggerStateInstanceHandle = DDS_HANDLE_NIL;
}

// Null without remote administration.
DDS_DataReader *commandRequestReader(const QTV_VX_Vexar &self) noexcept {
    QTV_VX_ADMIN_CommandRequestDataReader *reader = QTV_VX_DDSEntities_getCommandRequestReader(self._ddsEntities);
    return reader != nullptr ? QTV_VX_ADMIN_CommandRequestDataReader_as_datareader(reader) : nullptr;
}

// Without remote administration there is no reader, and nothing to listen to.
bool listenForCommands(QTV_VX_Vexar &self) noexcept {
    DDS_DataReader *reader = commandRequestReader(self);
    if (reader == nullptr) return true;
    DDS_DataReaderListener listener = DDS_DataReaderListener_INITIALIZER;
    listener.listener_data = &self;
    listener.on_data_available = &QTV_VX_Vexar_CommandRequestListener_on_data_available;
    return DDS_DataReader_set_listener(reader, &listener, DDS_DATA_AVAILABLE_STATUS) == DDS_RETCODE_OK;
}

// Waits for a command callback in progress: commands reach the write thread.
void stopListeningForCommands(QTV_VX_Vexar &self) noexcept {
    DDS_DataReader *reader = self._ddsEntities != nullptr ? commandRequestReader(self) : nullptr;
    if (reader != nullptr) DDS_DataReader_set_listener(reader, nullptr, 0);
}

void identifyInState(QTV_VX_Vexar &self) noexcept {
    auto stateLock = vexar::lockState();
    QTV_VX_ADMIN_State &state = *self.state;
    state.administrationDomainId = static_cast<DDS_Long>(
        DDS_DomainParticipant_get_domain_id(QTV_VX_DDSEntities_getDomainParticipant(self._ddsEntities)));
    state.hostAndAppId.rtps_host_id = QTV_VX_DDSEntities_getRtpsHostId(self._ddsEntities);
    state.hostAndAppId.rtps_app_id = QTV_VX_DDSEntities_getRtpsAppId(self._ddsEntities);
    QTV_VX_Vexar_updateQTVLoggerPrintFormatState(&self);
    QTV_VX_Vexar_updateQTVLoggerCategoryAndVerbosityState(&self);
}

bool becomeOperational(QTV_VX_Vexar &self) noexcept {
    auto stateLock = vexar::lockState();
    vexar::setStateKind(self, QTV_VX_STATE_OPERATIONAL);
    return QTV_VX_Vexar_writeState(&self) == 1;
}

bool captureInfrastructureMessages(QTV_VX_Vexar &self) noexcept {
    self.ddsLoggerDevice = &QTV_VX_Vexar_localDevice;
    vexar::attachLoggerDevice(self);
    return OBLX_Config_Logger_set_output_device(OBLX_Config_Logger_get_instance(), self.ddsLoggerDevice);
}

// Restores the middleware's own output, unless someone has replaced ours.
void releaseInfrastructureMessages(QTV_VX_Vexar &self) noexcept {
    if (self.ddsLoggerDevice == nullptr) return;
    OBLX_Config_Logger *logger = OBLX_Config_Logger_get_instance();
    if (self.options != nullptr && self.options->logInfrastructureMessages != 0 &&
        OBLX_Config_Logger_get_output_device(logger) == self.ddsLoggerDevice) {
        OBLX_Config_Logger_set_output_device(logger, nullptr);
    }
    vexar::detachLoggerDevice();
    self.ddsLoggerDevice = nullptr;
}

// The creation steps after the record and its options exist; null when one
// failed (the record is destroyed then).
QTV_VX_Vexar *build(QTV_VX_Vexar *self) noexcept {
    self->clock = OBLX_Clock_newSystemClock();
    if (self->clock == nullptr) return failCreation(self, "Unable to create clock");
    self->state = QTV_VX_ADMIN_StateTypeSupport_create_data();
    if (self->state == nullptr) return failCreation(self, "Unable to initialize QTV_VX_ADMIN_State");
    describeInState(*self);
    self->_ddsEntities = QTV_VX_DDSEntities_create(self);
    if (self->_ddsEntities == nullptr) return failCreation(self, "Unable to create DDSEntities");
    vexar::startPublishingStatistics(*self);
    if (!listenForCommands(*self)) return failCreation(self, "Unable to set listener for CommandRequests");
    self->logMessageWriteThread =
        LogMessageWriteThread_create(QTV_VX_DDSEntities_getLogMessageWriter(self->_ddsEntities),
                                     static_cast<DDS_Long>(self->options->queueSize), &self->options->threadSettings);
    if (self->logMessageWriteThread == nullptr) return failCreation(self, "Unable to create LogMessage Thread");
    self->q = self->logMessageWriteThread->q;
    self->filterLevel = self->options->filterLevel;
    identifyInState(*self);
    // Still INITIALIZING, so this takes nothing; requests waiting already are
    // served at the next data-available event.
    if (self->options->remoteAdministrationEnabled == 1) {
        QTV_VX_Vexar_CommandRequestListener_on_data_available(self, commandRequestReader(*self));
    }
    if (!becomeOperational(*self)) return failCreation(self, "Unable to write State");
    if (self->options->logInfrastructureMessages != 0 && !captureInfrastructureMessages(*self)) {
        // "hoop up" is deliberate: the published report text.
        return failCreation(self, "Unable to hoop up QTV Logger");
    }
    return self;
}

// Under the global lock. The middleware stays silent while the entities are
// built; after a failure it is left silent.
void createSingleton() noexcept {
    OBLX_Config_LogVerbosity saved[OBLX_CONFIG_LOG_CATEGORY_COUNT]{};
    QTV_VX_Vexar_maskSystemVerbosity(saved);
    QTV_VX_Vexar *created = QTV_VX_Vexar_createInstance();
    vexar::shared(QTV_VX_Vexar_instance).store(created);
    if (created == nullptr) {
        vexar::reportError("Unable to create Vexar singleton!", kGetInstanceSource);
        return;
    }
    vexar::refreshLevelGate(*created);
    QTV_VX_Vexar_unmaskSystemVerbosity(saved);
    // "Write" in capitals is deliberate: the published report text.
    if (!vexar::publishVerbosities(*created)) vexar::reportWarning("Unable to Write State", kGetInstanceSource);
    setInitialized(true);
}

// Under the global lock.
void finalizeSingleton(QTV_VX_Vexar *instance) noexcept {
    QTV_VX_Vexar_disable();
    setInitialized(false);
    vexar::shared(QTV_VX_Vexar_instance).store(nullptr);
    vexar::closeLevelGate();
    QTV_VX_Vexar_destroy(instance);
    vexar::shared(gQTV_VX_Vexar_currentOptions).store(nullptr);
}

}  // namespace

extern "C" {

QTV_VX_Vexar *QTV_VX_Vexar_getInstance(void) {
    if (vexar::isInitialized()) return currentInstance();
    if (!OBLX_GlobalLock_take()) {
        vexar::reportError("Unable to lock when creating Vexar singleton!", kGetInstanceSource);
        return currentInstance();
    }
    if (!vexar::isInitialized()) createSingleton();
    if (!OBLX_GlobalLock_give()) {
        vexar::reportError("Unable to unlock when creating Vexar singleton!", kGetInstanceSource);
    }
    return currentInstance();
}

QTV_VX_Vexar *QTV_VX_Vexar_createInstance(void) {
    if (QTV_VX_Vexar *existing = currentInstance()) return existing;
    auto *self = static_cast<QTV_VX_Vexar *>(std::malloc(sizeof(QTV_VX_Vexar)));
    if (self == nullptr) {
        vexar::reportError("Unable to allocate memory for Vexar Instance", kCreateSource);
        return nullptr;
    }
    QTV_VX_Vexar_initialize(self);
    if (!chooseOptions(*self)) return failCreation(self, "Unable to create default options");
    return build(self);
}

void QTV_VX_Vexar_initialize(QTV_VX_Vexar *self) {
    if (!vexar::present(self, "QTV_VX_Vexar_initialize", "QTV_VX_Vexar is NULL")) return;
    *self = QTV_VX_Vexar{};
    self->loggerStateInstanceHandle = DDS_HANDLE_NIL;
}

DDS_Long QTV_VX_Vexar_setOptions(QTV_VX_Options *options) {
    if (currentInstance() != nullptr) return 0;
    vexar::shared(gQTV_VX_Vexar_currentOptions).store(options);
    return 1;
}

DDS_Long QTV_VX_Vexar_finalizeInstance(void) {
    if (!vexar::isInitialized()) return 0;
    if (!OBLX_GlobalLock_take()) {
        vexar::reportError("Unable to lock when finalizing Vexar singleton!", kFinalizeSource);
        return 1;
    }
    if (QTV_VX_Vexar *instance = currentInstance()) finalizeSingleton(instance);
    if (!OBLX_GlobalLock_give()) {
        vexar::reportError("Unable to unlock when finalizing Vexar singleton!", kFinalizeSource);
        return 1;
    }
    return 0;
}

// Options that the caller registered stay the caller's; only defaults made
// by createInstance are deleted.
QTV_VX_Vexar *QTV_VX_Vexar_destroy(QTV_VX_Vexar *self) {
    if (self == nullptr) return nullptr;
    vexar::endFlushes();
    releaseInfrastructureMessages(*self);
    stopListeningForCommands(*self);
    vexar::stopWriteThread(self->logMessageWriteThread);
    LogMessageWriteThread_delete(self->logMessageWriteThread);
    self->logMessageWriteThread = nullptr;
    self->q = nullptr;
    // Now that nothing is queued any more, the counts are final.
    vexar::stopPublishingStatistics();
    QTV_VX_DDSEntities_destroy(self->_ddsEntities);
    self->_ddsEntities = nullptr;
    OBLX_Clock_delete(self->clock);
    if (self->options != registeredOptions()) QTV_VX_Options_delete(self->options);
    if (self->state != nullptr) QTV_VX_ADMIN_StateTypeSupport_delete_data(self->state);
    std::free(self);
    return nullptr;
}

DDS_Long QTV_VX_Vexar_isVexarRunning(void) { return vexar::shared(gQTV_VX_Vexar_initialized).load(); }

QTV_VX_MessageQueue *QTV_VX_Vexar_getMessageQueue(void) {
    QTV_VX_Vexar *instance = currentInstance();
    return instance != nullptr ? instance->q : nullptr;
}

LogMessageWriteThread *QTV_VX_Vexar_getLogMessageWriteThread(void) {
    QTV_VX_Vexar *instance = currentInstance();
    return instance != nullptr ? instance->logMessageWriteThread : nullptr;
}

}  // extern "C"
