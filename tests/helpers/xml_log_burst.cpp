// An application that starts its logger from an XML file (or from default
// options), waits for a subscriber, logs a burst as fast as it can, and
// finalizes the logger only once its queue is empty.
//
//   xml_log_burst <domain> <count> [<file> [<qos library> <qos profile>]]
//
// Prints "queued Q dropped D published P failed F" on its last line. Each
// failure has its own exit status.
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <thread>

#include "config/XMLConfig.h"
#include "platform/dds/data_writer.h"
#include "platform/dds/domain_participant_factory.h"
#include "type/vexarSupport.h"
#include "vexar/Vexar.h"
#include "vexar/message_counts.hpp"

namespace {

enum Exit { kOk = 0, kUsage = 2, kSetup = 3, kNoSubscriber = 4, kNotDrained = 5 };

using Clock = std::chrono::steady_clock;

template <typename Condition>
bool eventually(std::chrono::seconds limit, Condition condition) {
    const auto deadline = Clock::now() + limit;
    while (!condition()) {
        if (Clock::now() > deadline) return false;
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    return true;
}

void printParseError(const char *message, const char *function, DDS_UnsignedLong line) {
    std::fprintf(stderr, "line %lu: %s (%s)\n", static_cast<unsigned long>(line), message, function);
}

DDS_DomainParticipantFactory *factory() { return DDS_DomainParticipantFactory_get_instance(); }

// The logger's options: the vexar element of a file, or the defaults.
class Configuration {
public:
    Configuration(int domain, int argc, char **argv) {
        if (argc < 4) {
            owned_ = QTV_VX_Options_createDefault();
            options_ = owned_;
            QTV_VX_Options_setDomainId(options_, domain);
            return;
        }
        vexarClass_ = QTV_VX_XMLConfig_createXMLExtensionClass(printParseError);
        if (vexarClass_ == nullptr ||
            DDS_DomainParticipantFactory_register_xml_extension_class(factory(), vexarClass_) != DDS_RETCODE_OK ||
            DDS_DomainParticipantFactory_load_xml_file(factory(), argv[3]) != DDS_RETCODE_OK) {
            return;
        }
        options_ = QTV_VX_XMLConfig_getVXOptions(
            QTV_VX_XMLConfig_getXMLConfigFromXMLRoot(DDS_DomainParticipantFactory_get_xml_root(factory())));
        if (options_ != nullptr && argc >= 6) {
            QTV_VX_Options_setQosLibrary(options_, argv[4]);
            QTV_VX_Options_setQosProfile(options_, argv[5]);
        }
        participant_ = DDS_DomainParticipantFactory_create_participant(factory(), domain, nullptr, nullptr, 0);
    }
    ~Configuration() {
        QTV_VX_Vexar_finalizeInstance();
        if (participant_ != nullptr) DDS_DomainParticipantFactory_delete_participant(factory(), participant_);
        if (owned_ != nullptr) QTV_VX_Options_delete(owned_);
        if (vexarClass_ == nullptr) return;
        DDS_DomainParticipantFactory_unload_xml(factory());
        DDS_DomainParticipantFactory_unregister_xml_extension_class(factory(), vexarClass_);
        QTV_VX_XMLConfig_destroyXMLExtensionClass(vexarClass_);
    }
    Configuration(const Configuration &) = delete;
    Configuration &operator=(const Configuration &) = delete;

    QTV_VX_Vexar *start() {
        if (options_ == nullptr) return nullptr;
        if (vexarClass_ == nullptr) {
            return QTV_VX_Vexar_setOptions(options_) == 1 ? QTV_VX_Vexar_getInstance() : nullptr;
        }
        if (participant_ == nullptr ||
            QTV_VX_XMLConfig_startWithXMLConfiguration(participant_, options_, "burst") != 1) {
            return nullptr;
        }
        return QTV_VX_Vexar_getInstance();
    }

private:
    DDS_XMLExtensionClass *vexarClass_ = nullptr;
    QTV_VX_Options *owned_ = nullptr;
    QTV_VX_Options *options_ = nullptr;
    DDS_DomainParticipant *participant_ = nullptr;
};

bool subscriberMatched(const QTV_VX_Vexar *logger) {
    DDS_PublicationMatchedStatus status = DDS_PublicationMatchedStatus_INITIALIZER;
    DDS_DataWriter *writer =
        QTV_VX_LogMessageDataWriter_as_datawriter(QTV_VX_DDSEntities_getLogMessageWriter(logger->_ddsEntities));
    return DDS_DataWriter_get_publication_matched_status(writer, &status) == DDS_RETCODE_OK && status.current_count > 0;
}

}  // namespace

int main(int argc, char **argv) {
    if (argc < 3 || argc == 5) {
        std::fprintf(stderr, "usage: %s DOMAIN COUNT [FILE [QOS_LIBRARY QOS_PROFILE]]\n", argv[0]);
        return kUsage;
    }
    const int domain = std::atoi(argv[1]);
    const long count = std::atol(argv[2]);
    Configuration configuration(domain, argc, argv);
    QTV_VX_Vexar *logger = configuration.start();
    if (logger == nullptr) return kSetup;
    if (!eventually(std::chrono::seconds(30), [&] { return subscriberMatched(logger); })) return kNoSubscriber;

    for (long i = 0; i < count; ++i) {
        std::string text = "burst " + std::to_string(i);
        QTV_VX_Vexar_logMessageWithLevelCategory(logger, QTV_VX_LOG_LEVEL_INFO, text.c_str(), "burst");
    }
    const vexar::CallOutcomes calls = vexar::callOutcomesOfThisThread();
    const bool drained = eventually(std::chrono::seconds(60), [] {
        const vexar::QueueOutcomes queue = vexar::queueOutcomes();
        return queue.settled() == queue.queued;
    });
    const vexar::QueueOutcomes queue = vexar::queueOutcomes();
    std::printf("queued %llu dropped %llu published %llu failed %llu\n", static_cast<unsigned long long>(calls.queued),
                static_cast<unsigned long long>(calls.dropped), static_cast<unsigned long long>(queue.published),
                static_cast<unsigned long long>(queue.failed));
    std::fflush(stdout);
    return drained ? kOk : kNotDrained;
}
