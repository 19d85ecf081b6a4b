// The administration State: its first write on the first matched State
// reader, later writes, the refresh from the middleware logger, and disable.
#include <atomic>

#include "platform/log/logger.h"
#include "type/vexarSupport.h"
#include "vexar/DDSEntities.h"
#include "vexar/EnumTranslators.h"
#include "vexar/admin_state.hpp"
#include "vexar/logger_core.hpp"
#include "vexar/report_line.hpp"

volatile DDS_Long QTV_VX_DDSEntities_gInitialStateSent = 0;

namespace {

using vexar::reportError;
using vexar::shared;

constexpr const char *kNoStateWriter = "could not get VX state data writer";

// Never destroyed: a late finalization at exit may still take it.
std::recursive_mutex &stateMutex() noexcept {
    static auto *mutex = new std::recursive_mutex;
    return *mutex;
}

// The State writer, checked as the generic writer and entity it also is;
// null after a report.
QTV_VX_ADMIN_StateDataWriter *checkedStateWriter(QTV_VX_Vexar &self, const char *source) noexcept {
    QTV_VX_ADMIN_StateDataWriter *stateWriter = QTV_VX_DDSEntities_getStateWriter(self._ddsEntities);
    if (stateWriter == nullptr) {
        reportError(kNoStateWriter, source);
        return nullptr;
    }
    DDS_DataWriter *writer = QTV_VX_ADMIN_StateDataWriter_as_datawriter(stateWriter);
    if (writer == nullptr) {
        reportError("could not get State DataWriter as DDS DataWriter", source);
        return nullptr;
    }
    if (DDS_DataWriter_as_entity(writer) == nullptr) {
        reportError("could not get DataWriter as DDS Entity", source);
        return nullptr;
    }
    return stateWriter;
}

bool isEnabled(QTV_VX_ADMIN_StateDataWriter *stateWriter) noexcept {
    return DDS_Entity_is_enabled(DDS_DataWriter_as_entity(QTV_VX_ADMIN_StateDataWriter_as_datawriter(stateWriter)));
}

// Registers the State instance unless that was done already; false after a
// report when the registration fails.
bool ensureStateInstance(QTV_VX_Vexar &self, QTV_VX_ADMIN_StateDataWriter *writer, const char *source) noexcept {
    auto handle = shared(self.loggerStateInstanceHandle);
    if (!DDS_InstanceHandle_is_nil(handle.load())) return true;
    handle.store(QTV_VX_ADMIN_StateDataWriter_register_instance(writer, self.state));
    if (!DDS_InstanceHandle_is_nil(handle.load())) return true;
    reportError("Unable to register the State instance", source);
    return false;
}

}  // namespace

namespace vexar {

std::unique_lock<std::recursive_mutex> lockState() noexcept { return std::unique_lock(stateMutex()); }

bool initialStateSent() noexcept { return shared(QTV_VX_DDSEntities_gInitialStateSent).load() != 0; }

void setInitialStateSent(bool sent) noexcept { shared(QTV_VX_DDSEntities_gInitialStateSent).store(sent ? 1 : 0); }

}  // namespace vexar

extern "C" {

// The first write goes with the registration of the instance. A failed
// write is retried on the next match with the instance already registered;
// once one succeeded, readers that join later get the sample from the
// writer's history and nothing is written for them.
void QTV_VX_DDSEntities_stateWriterOnPublicationMatched(void *listener_data, DDS_DataWriter *writer,
                                                        const DDS_PublicationMatchedStatus *) {
    constexpr const char *kSource = "QTV_VX_DDSEntities_stateWriterOnPublicationMatched";
    if (vexar::initialStateSent()) return;
    if (writer == nullptr) {
        reportError(kNoStateWriter, kSource);
        return;
    }
    auto *self = static_cast<QTV_VX_Vexar *>(listener_data);
    auto stateLock = vexar::lockState();
    QTV_VX_ADMIN_StateDataWriter *stateWriter = QTV_VX_ADMIN_StateDataWriter_narrow(writer);
    if (vexar::initialStateSent() || stateWriter == nullptr || !ensureStateInstance(*self, stateWriter, kSource)) {
        return;
    }
    DDS_InstanceHandle_t handle = shared(self->loggerStateInstanceHandle).load();
    if (QTV_VX_ADMIN_StateDataWriter_write(stateWriter, self->state, handle) == DDS_RETCODE_OK) {
        vexar::setInitialStateSent(true);
    }
}

DDS_Long QTV_VX_Vexar_writeState(QTV_VX_Vexar *self) {
    constexpr const char *kSource = "QTV_VX_Vexar_writeState";
    if (!vexar::present(self, kSource, "QTV_VX_Vexar is NULL")) return 0;
    auto stateLock = vexar::lockState();
    if (!vexar::initialStateSent()) return 1;
    QTV_VX_ADMIN_StateDataWriter *stateWriter = checkedStateWriter(*self, kSource);
    if (stateWriter == nullptr) return 0;
    if (!isEnabled(stateWriter)) return 1;
    DDS_InstanceHandle_t handle = shared(self->loggerStateInstanceHandle).load();
    if (QTV_VX_ADMIN_StateDataWriter_write(stateWriter, self->state, handle) == DDS_RETCODE_OK) return 1;
    reportError("Unable to write State in DataWriter", kSource);
    return 0;
}

DDS_Long QTV_VX_DDSEntities_hasInitialStateBeenSent(const QTV_VX_DDSEntities *) {
    return vexar::initialStateSent() ? 1 : 0;
}

void QTV_VX_Vexar_disable(void) {
    QTV_VX_Vexar *self = QTV_VX_Vexar_instance;
    if (self == nullptr) return;
    auto stateLock = vexar::lockState();
    vexar::setStateKind(*self, QTV_VX_STATE_NONOPERATIONAL);
    vexar::refreshLevelGate(*self);
    vexar::stopWriteThread(self->logMessageWriteThread);
    // "Write" in capitals is deliberate: the published report text.
    if (QTV_VX_Vexar_writeState(self) != 1) vexar::reportWarning("Unable to Write State", "QTV_VX_Vexar_disable");
}

void QTV_VX_Vexar_updateQTVLoggerCategoryAndVerbosityState(QTV_VX_Vexar *self) {
    constexpr const char *kSource = "QTV_VX_Vexar_updateQTVLoggerCategoryAndVerbosityState";
    OBLX_Config_Logger *logger = vexar::middlewareLogger(kSource);
    if (logger == nullptr || !vexar::present(self, kSource, "QTV_VX_Vexar is NULL")) return;
    auto stateLock = vexar::lockState();
    for (int category = 0; category < OBLX_CONFIG_LOG_CATEGORY_COUNT; ++category) {
        OBLX_Config_LogVerbosity verbosity =
            OBLX_Config_Logger_get_verbosity_by_category(logger, static_cast<OBLX_Config_LogCategory>(category));
        self->state->qtvLoggerVerbosities[category] = QTV_VX_ADMIN_QTVLoggerCategoryAndVerbosity{
            static_cast<QTV_VX_ADMIN_QTVLoggerCategory>(QTV_VX_translateFromQTVLoggerCategoryToVXCategory(category)),
            static_cast<QTV_VX_ADMIN_QTVLoggerVerbosity>(
                QTV_VX_translateFromQTVLoggerVerbosityToVXVerbosity(verbosity))};
    }
}

void QTV_VX_Vexar_updateQTVLoggerPrintFormatState(QTV_VX_Vexar *self) {
    constexpr const char *kSource = "QTV_VX_Vexar_updateQTVLoggerPrintFormatState";
    OBLX_Config_Logger *logger = vexar::middlewareLogger(kSource);
    if (logger == nullptr || !vexar::present(self, kSource, "QTV_VX_Vexar is NULL")) return;
    auto stateLock = vexar::lockState();
    self->state->qtvLoggerPrintFormat = static_cast<QTV_VX_ADMIN_QTVLoggerPrintFormat>(
        QTV_VX_translateFromQTVLoggerPrintFormatToVXPrintFormat(OBLX_Config_Logger_get_print_format(logger)));
}

}  // extern "C"
