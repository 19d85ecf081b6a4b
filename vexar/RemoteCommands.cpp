// Remote commands: the requests addressed to this logger are taken from its
// filtered reader, applied through the logger's own setters and answered
// once each on the response topic.
#include <cstring>

#include "platform/runtime/dds_string.h"
#include "platform/dds/sample_info.h"
#include "type/vexarSupport.h"
#include "vexar/DDSEntities.h"
#include "vexar/EnumTranslators.h"
#include "vexar/admin_state.hpp"
#include "vexar/logger_core.hpp"
#include "vexar/report_line.hpp"

namespace {

using vexar::reportError;

constexpr const char *kOnDataAvailable = "QTV_VX_Vexar_CommandRequestListener_on_data_available";
constexpr const char *kProcessCommand = "QTV_VX_Vexar_processCommand";
constexpr const char *kFilterLevelRefused = "Vexar: Trouble setting new Filter Level.";

// C code may store any number in an enumeration field: read it as the
// integer it is stored as (a value outside the enumeration is not a valid
// C++ value of it), so that unknown values reach the translators' defaults.
template <typename Enumeration>
DDS_Long storedValue(const Enumeration &field) noexcept {
    static_assert(sizeof(Enumeration) == sizeof(DDS_Long));
    DDS_Long value;
    std::memcpy(&value, &field, sizeof value);
    return value;
}

QTV_VX_ADMIN_CommandResult setFilterLevel(QTV_VX_Vexar &self, DDS_Long level,
                                          QTV_VX_ADMIN_CommandResponse &response) noexcept {
    if (QTV_VX_Vexar_setFilterLevel(&self, level) == 0) return QTV_VX_COMMAND_RESULT_OK;
    vexar::reportWarning(kFilterLevelRefused, kProcessCommand);
    // Into the response's own buffer: finalizing the response frees it.
    DDS_String_copy_bounded(response.message, kFilterLevelRefused,
                            QTV_VX_ADMIN_COMMAND_RESPONSE_MESSAGE_MAX_LENGTH + 1);
    return QTV_VX_COMMAND_RESULT_ERROR;
}

// Each pair is applied, and the State written, in the order given.
void setVerbosities(QTV_VX_Vexar &self, const QTV_VX_ADMIN_QTVLoggerCategoryAndVerbositySeq &pairs) noexcept {
    // The accessors take a mutable record but leave an initialized one alone.
    auto &sequence = const_cast<QTV_VX_ADMIN_QTVLoggerCategoryAndVerbositySeq &>(pairs);
    for (DDS_Long i = 0; i < QTV_VX_ADMIN_QTVLoggerCategoryAndVerbositySeq_get_length(&sequence); ++i) {
        const QTV_VX_ADMIN_QTVLoggerCategoryAndVerbosity *pair =
            QTV_VX_ADMIN_QTVLoggerCategoryAndVerbositySeq_get_reference(&sequence, i);
        const auto category = static_cast<OBLX_Config_LogCategory>(
            QTV_VX_translateFromVXCategoryToQTVLoggerCategory(storedValue(pair->category)));
        const auto verbosity = static_cast<OBLX_Config_LogVerbosity>(
            QTV_VX_translateFromVXVerbosityToQTVLoggerVerbosity(storedValue(pair->verbosity)));
        QTV_VX_Vexar_setQTVLoggerVerbosityByCategory(&self, category, verbosity);
    }
}

void setPrintFormat(QTV_VX_Vexar &self, const QTV_VX_ADMIN_QTVLoggerPrintFormat &format) noexcept {
    const auto middlewareFormat = static_cast<OBLX_Config_LogPrintFormat>(
        QTV_VX_translateFromVXPrintFormatToQTVLoggerPrintFormat(storedValue(format)));
    (void)QTV_VX_Vexar_setQTVLoggerPrintFormat(&self, middlewareFormat);
}

QTV_VX_ADMIN_CommandResult apply(QTV_VX_Vexar &self, const QTV_VX_ADMIN_Command &command,
                                 QTV_VX_ADMIN_CommandResponse &response) noexcept {
    switch (storedValue(command._d)) {
    case QTV_VX_SET_LOG_LEVEL:
        return setFilterLevel(self, command._u.filterLevel, response);
    case QTV_VX_SET_QTV_LOGGER_LEVEL:
        setVerbosities(self, command._u.categoryAndVerbosity);
        return QTV_VX_COMMAND_RESULT_OK;
    case QTV_VX_SET_QTV_LOGGER_PRINT_FORMAT:
        setPrintFormat(self, command._u.printFormat);
        return QTV_VX_COMMAND_RESULT_OK;
    default:
        return QTV_VX_COMMAND_RESULT_NOT_SUPPORTED;
    }
}

QTV_VX_HostAndAppId identityOf(const QTV_VX_Vexar &self) noexcept {
    auto stateLock = vexar::lockState();
    return self.state->hostAndAppId;
}

void processValidRequests(QTV_VX_Vexar &self, QTV_VX_ADMIN_CommandRequestSeq &requests,
                          DDS_SampleInfoSeq &infos) noexcept {
    for (DDS_Long i = 0; i < QTV_VX_ADMIN_CommandRequestSeq_get_length(&requests); ++i) {
        const DDS_SampleInfo *info = DDS_SampleInfoSeq_get_reference(&infos, i);
        if (info != nullptr && info->valid_data) {
            QTV_VX_Vexar_processCommand(&self, QTV_VX_ADMIN_CommandRequestSeq_get_reference(&requests, i));
        }
    }
}

}  // namespace

extern "C" {

// Runs on a listener thread. Before the logger is OPERATIONAL nothing is
// taken: the requests wait in the reader for the next data-available event.
void QTV_VX_Vexar_CommandRequestListener_on_data_available(void *listener_data, DDS_DataReader *reader) {
    auto *self = static_cast<QTV_VX_Vexar *>(listener_data);
    if (self == nullptr || vexar::stateKind(*self) != QTV_VX_STATE_OPERATIONAL) return;
    QTV_VX_ADMIN_CommandRequestDataReader *requestReader = QTV_VX_ADMIN_CommandRequestDataReader_narrow(reader);
    if (requestReader == nullptr) {
        reportError("Unable to narrow DataReader", kOnDataAvailable);
        return;
    }
    QTV_VX_ADMIN_CommandRequestSeq requests = DDS_SEQUENCE_INITIALIZER;
    DDS_SampleInfoSeq infos = DDS_SEQUENCE_INITIALIZER;
    DDS_ReturnCode_t result =
        QTV_VX_ADMIN_CommandRequestDataReader_take(requestReader, &requests, &infos, DDS_LENGTH_UNLIMITED,
                                                   DDS_ANY_SAMPLE_STATE, DDS_ANY_VIEW_STATE, DDS_ANY_INSTANCE_STATE);
    if (result == DDS_RETCODE_NO_DATA) return;
    if (result != DDS_RETCODE_OK) {
        // "ComandRequest" is deliberate: the published report text.
        reportError("Unable to take ComandRequest from DataReader", kOnDataAvailable);
        return;
    }
    processValidRequests(*self, requests, infos);
    if (QTV_VX_ADMIN_CommandRequestDataReader_return_loan(requestReader, &requests, &infos) != DDS_RETCODE_OK) {
        reportError("Unable to return loan in CommandRequest's DataReader", kOnDataAvailable);
    }
}

void QTV_VX_Vexar_processCommand(QTV_VX_Vexar *self, const QTV_VX_ADMIN_CommandRequest *request) {
    if (!vexar::present(self, kProcessCommand, "QTV_VX_Vexar is NULL") ||
        !vexar::present(request, kProcessCommand, "CommandRequest is NULL")) {
        return;
    }
    QTV_VX_ADMIN_CommandResponse response{};
    if (!QTV_VX_ADMIN_CommandResponse_initialize(&response)) {
        reportError("Unable to initialize Command Response", kProcessCommand);
        QTV_VX_ADMIN_CommandResponse_finalize(&response);
        return;
    }
    response.hostAndAppId = identityOf(*self);
    response.originatorHostAndAppId = request->originatorHostAndAppId;
    response.invocation = request->invocation;
    response.commandResult = apply(*self, request->command, response);
    QTV_VX_ADMIN_CommandResponseDataWriter *writer = QTV_VX_DDSEntities_getCommandResponseWriter(self->_ddsEntities);
    if (QTV_VX_ADMIN_CommandResponseDataWriter_write(writer, &response, DDS_HANDLE_NIL) != DDS_RETCODE_OK) {
        reportError("Unable to write Command Response", kProcessCommand);
    }
    QTV_VX_ADMIN_CommandResponse_finalize(&response);
}

}  // extern "C"
