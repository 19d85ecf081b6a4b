// A subscriber in a process of its own (tests/helpers/log_counter.cpp) that
// counts the log messages reaching it: what a collecting application on
// another process sees, acknowledgments over the loopback and all.
#pragma once

#include <unistd.h>

#include <chrono>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <string>
#include <thread>

#include "platform/dds/data_writer.h"
#include "support/child_process.hpp"
#include "type/vexarSupport.h"
#include "vexar/QosLibrary.h"
#include "vexar/Vexar.h"

namespace vexar_test {

class RemoteLogCounter {
public:
    // Counts until `expected` messages arrived or none came for `quiet`.
    RemoteLogCounter(int domain, long expected, std::chrono::milliseconds quiet)
        : directory_(madeDirectory(domain)),
          ready_(directory_ / "ready"),
          result_(directory_ / "result"),
          child_("log_counter", {std::to_string(domain), std::to_string(expected), std::to_string(quiet.count()),
                                 ready_.string(), result_.string()}) {}
    ~RemoteLogCounter() {
        std::error_code ignored;
        std::filesystem::remove_all(directory_, ignored);
    }
    RemoteLogCounter(const RemoteLogCounter &) = delete;
    RemoteLogCounter &operator=(const RemoteLogCounter &) = delete;

    // Whether the child's reader exists, within 10 s.
    bool waitUntilReady() const {
        for (int i = 0; i < 1000 && child_.started(); ++i) {
            if (std::filesystem::exists(ready_)) return true;
            std::this_thread::sleep_for(std::chrono::milliseconds(10));
        }
        return false;
    }

    bool signal(int signal) const { return child_.signal(signal); }

    // How many messages the child counted; -1 when it failed.
    long received() {
        if (child_.wait(std::chrono::seconds(90)) != 0) return -1;
        std::ifstream in(result_);
        std::string word;
        long count = -1;
        in >> word >> count;
        return word == "received" ? count : -1;
    }

private:
    static std::filesystem::path madeDirectory(int domain) {
        std::filesystem::path directory =
            std::filesystem::temp_directory_path() /
            ("vexar_log_counter_" + std::to_string(getpid()) + "_" + std::to_string(domain));
        std::filesystem::create_directories(directory);
        return directory;
    }

    std::filesystem::path directory_;
    std::filesystem::path ready_;
    std::filesystem::path result_;
    ChildProcess child_;
};

// The logger of a helper process that logs for a subscriber elsewhere: the
// options (kept by the logger until finalized, deleted by the caller) on
// `domain` with `kind` and `queueSize`, Lossless if asked. Null when the
// options or the logger could not be made.
inline QTV_VX_Vexar *startHelperLogger(QTV_VX_Options *options, int domain, const char *kind, int queueSize,
                                       bool lossless) {
    if (options == nullptr) return nullptr;
    QTV_VX_Options_setDomainId(options, domain);
    QTV_VX_Options_setApplicationKind(options, kind);
    QTV_VX_Options_setQueueSize(options, queueSize);
    if (lossless) {
        QTV_VX_Options_setQosLibrary(options, QTV_VX_QOS_LIBRARY_NAME);
        QTV_VX_Options_setQosProfile(options, QTV_VX_QOS_PROFILE_LOSSLESS);
    }
    if (QTV_VX_Vexar_setOptions(options) != 1) return nullptr;
    return QTV_VX_Vexar_getInstance();
}

// Whether the logger's log writer has matched a reader, within 10 s. Ever:
// a subscriber that got all it expected leaves at once.
inline bool logWriterMatched(const QTV_VX_Vexar *logger) {
    DDS_DataWriter *writer =
        QTV_VX_LogMessageDataWriter_as_datawriter(QTV_VX_DDSEntities_getLogMessageWriter(logger->_ddsEntities));
    for (int i = 0; i < 1000; ++i) {
        DDS_PublicationMatchedStatus status = DDS_PublicationMatchedStatus_INITIALIZER;
        if (DDS_DataWriter_get_publication_matched_status(writer, &status) == DDS_RETCODE_OK &&
            status.total_count > 0) {
            return true;
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
    return false;
}

}  // namespace vexar_test
