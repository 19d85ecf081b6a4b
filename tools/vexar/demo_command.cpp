// vexar demo: an application that logs through the library like a healthy
// service (or at every level in turn, for trying filters), and answers the
// remote commands of `vexar set-*` through its logger.
#include <cstdio>
#include <limits>
#include <optional>
#include <string>
#include <thread>

#include "commands.hpp"
#include "dds_session.hpp"
#include "demo_messages.hpp"
#include "names.hpp"
#include "usage_error.hpp"
#include "platform/dds/domain_participant_factory.h"
#include "vexar/QosLibrary.h"
#include "vexar/Statistics.h"
#include "vexar/Vexar.h"
#include "xml_files.hpp"

namespace vexar::cli {
namespace {

constexpr OptionDescription kDemoOptions[] = {
    {"kind", "NAME", "application kind published in the State (default \"demo\")"},
    {"rate", "N", "messages per second (default 10; 0: as fast as the logger takes them)"},
    {"duration", "SECONDS", "stop after SECONDS (default: when interrupted)"},
    {"level", "LEVEL", "initial filter level (default INFO)"},
    {"queue", "N", "size of the logger's message queue (default 128)"},
    {"burst", "N", "first log N messages at once, then say how many a full queue dropped"},
    {"echo", "", "echo every message on standard output too"},
    {"no-remote-administration", "", "take no remote commands (set-* then get no answer)"},
    {"every-level", "", "log every level and category in turn, every 50th message long (to try filters)"},
    {"config", "FILE",
     "start the logger from the vexar element of FILE (and its QoS profiles); it then decides\n"
     "the level, the queue and the echo"},
    {"qos-library", "NAME", "QoS library of the logger's entities (with --qos-profile; default VexarQosLibrary)"},
    {"qos-profile", "NAME", "QoS profile in that library (default Lossless)"},
    {"default-qos", "", "no QoS profile: the logger's defaults (the last 10 messages per level)"},
};

constexpr std::string_view kDemoDetails =
    "Prints its HOST:APP first, logs until stopped, and takes its logger down on\n"
    "SIGINT or SIGTERM, so that `vexar apps` sees it go.";

// Finalization drops what is still queued: the demo flushes first, waiting
// at most this long for its subscribers to acknowledge.
constexpr DDS_Duration_t kFlushTimeout{5, 0};

struct DemoSettings {
    std::string kind;
    std::int32_t rate;
    double duration;
    std::int32_t filterLevel;
    std::int32_t queueSize;
    std::int32_t burst;
    bool echo;
    bool everyLevel;
    bool remoteAdministration;
    std::int32_t domain;
    std::optional<std::string> configFile;
    std::optional<std::string> qosLibrary;
    std::optional<std::string> qosProfile;
};

DemoSettings settingsFrom(const ParsedArguments &arguments) {
    DemoSettings settings;
    settings.kind = arguments.value("kind").value_or("demo");
    if (settings.kind.empty()) throw UsageError("bad --kind '' (expected a name)");
    settings.rate = arguments.integer("rate", 10, 0, 1000000);
    settings.duration = arguments.seconds("duration", 0);
    settings.filterLevel = parseNameOrThrow(kLevelNames, arguments.value("level").value_or("INFO"));
    if (settings.filterLevel < 0) throw UsageError("bad level: a filter level is 0 or more");
    settings.queueSize = arguments.integer("queue", 128, 1, 1 << 20);
    settings.burst = arguments.integer("burst", 0, 0, 1000000);
    settings.echo = arguments.has("echo");
    settings.everyLevel = arguments.has("every-level");
    settings.remoteAdministration = !arguments.has("no-remote-administration");
    settings.domain = arguments.domain();
    settings.configFile = arguments.value("config");
    settings.qosLibrary = arguments.value("qos-library");
    settings.qosProfile = arguments.value("qos-profile");
    if (settings.qosLibrary.has_value() != settings.qosProfile.has_value()) {
        throw UsageError("--qos-library and --qos-profile go together");
    }
    if (arguments.has("default-qos")) {
        if (settings.qosLibrary) throw UsageError("--default-qos and --qos-profile exclude each other");
    } else if (!settings.qosLibrary) {
        // A demo shows what we recommend: nothing lost without a count.
        settings.qosLibrary = QTV_VX_QOS_LIBRARY_NAME;
        settings.qosProfile = QTV_VX_QOS_PROFILE_LOSSLESS;
    }
    return settings;
}

void nameQosProfile(QTV_VX_Options *options, const DemoSettings &settings) {
    if (!settings.qosLibrary) return;
    if (QTV_VX_Options_setQosLibrary(options, settings.qosLibrary->c_str()) != DDS_RETCODE_OK ||
        QTV_VX_Options_setQosProfile(options, settings.qosProfile->c_str()) != DDS_RETCODE_OK) {
        throw DdsFailure("cannot set the QoS profile's names");
    }
}

// Options made from the command line. The logger keeps them by pointer:
// they live as long as it does.
class CommandLineOptions {
public:
    explicit CommandLineOptions(const DemoSettings &settings) : options_(QTV_VX_Options_createDefault()) {
        if (options_ == nullptr) throw DdsFailure("cannot create the logger's options");
        QTV_VX_Options_setDomainId(options_, settings.domain);
        QTV_VX_Options_setApplicationKind(options_, settings.kind.c_str());
        QTV_VX_Options_setFilterLevel(options_, settings.filterLevel);
        QTV_VX_Options_setQueueSize(options_, settings.queueSize);
        QTV_VX_Options_setEchoToStdout(options_, settings.echo ? 1 : 0);
        QTV_VX_Options_setRemoteAdministrationEnabled(options_, settings.remoteAdministration ? 1 : 0);
        try {
            nameQosProfile(options_, settings);
        } catch (...) {
            QTV_VX_Options_delete(options_);
            throw;
        }
    }
    ~CommandLineOptions() { QTV_VX_Options_delete(options_); }
    CommandLineOptions(const CommandLineOptions &) = delete;
    CommandLineOptions &operator=(const CommandLineOptions &) = delete;

    QTV_VX_Vexar *start() {
        if (QTV_VX_Vexar_setOptions(options_) != 1) return nullptr;
        return QTV_VX_Vexar_getInstance();
    }

private:
    QTV_VX_Options *options_;
};

// Options from the vexar element of a file, on a participant of the demo's
// own: the element and the participant outlive the logger.
class XmlOptions {
public:
    explicit XmlOptions(const DemoSettings &settings) : settings_(settings) {
        if (!files_.load(*settings.configFile)) throw DdsFailure("cannot load " + *settings.configFile);
        QTV_VX_XMLConfig *element = files_.vexarElement();
        options_ = QTV_VX_XMLConfig_getVXOptions(element);
        if (options_ == nullptr) throw DdsFailure(*settings.configFile + " holds no vexar element");
        if (options_->enabled == 0)
            throw DdsFailure("the vexar element of " + *settings.configFile + " is not enabled");
        nameQosProfile(options_, settings);
        participant_ = DDS_DomainParticipantFactory_create_participant(DDS_DomainParticipantFactory_get_instance(),
                                                                       settings.domain, nullptr, nullptr, 0);
        if (participant_ == nullptr) throw DdsFailure("cannot create a participant");
    }
    ~XmlOptions() {
        if (participant_ != nullptr) {
            DDS_DomainParticipantFactory_delete_participant(DDS_DomainParticipantFactory_get_instance(), participant_);
        }
    }
    XmlOptions(const XmlOptions &) = delete;
    XmlOptions &operator=(const XmlOptions &) = delete;

    QTV_VX_Vexar *start() {
        if (QTV_VX_XMLConfig_startWithXMLConfiguration(participant_, options_, settings_.kind.c_str()) != 1) {
            return nullptr;
        }
        return QTV_VX_Vexar_getInstance();
    }

private:
    const DemoSettings &settings_;
    XmlFiles files_;
    QTV_VX_Options *options_ = nullptr;
    DDS_DomainParticipant *participant_ = nullptr;
};

template <class Options>
class DemoLogger {
public:
    explicit DemoLogger(const DemoSettings &settings)
        : options_(settings),
          logger_(options_.start()),
          message_(settings.everyLevel ? everyLevelDemoMessage : healthyDemoMessage) {
        if (logger_ == nullptr) throw DdsFailure("cannot start the logger");
    }
    ~DemoLogger() { QTV_VX_Vexar_finalizeInstance(); }
    DemoLogger(const DemoLogger &) = delete;
    DemoLogger &operator=(const DemoLogger &) = delete;

    AppId id() const {
        return {QTV_VX_DDSEntities_getRtpsHostId(logger_->_ddsEntities),
                QTV_VX_DDSEntities_getRtpsAppId(logger_->_ddsEntities)};
    }
    // Whether every message reached the reliable subscribers in time.
    bool flush() { return QTV_VX_Vexar_flush(logger_, &kFlushTimeout) == DDS_RETCODE_OK; }
    void log(std::uint64_t index) {
        DemoMessage message = message_(index);
        QTV_VX_Vexar_logMessageWithLevelCategory(logger_, message.level, message.text.c_str(), message.category);
    }

private:
    Options options_;
    QTV_VX_Vexar *logger_;
    DemoMessage (*message_)(std::uint64_t index);
};

std::uint64_t droppedSoFar() {
    QTV_VX_Statistics statistics{};
    QTV_VX_Vexar_getStatistics(&statistics);
    return statistics.dropped;
}

// Logs `count` messages without pause and says what the queue dropped of
// them (each drop has its own warning line too). Flushed first, so that the
// paced messages that follow find the queue empty.
template <class Logger>
void logBurst(Logger &logger, std::int32_t count, std::uint64_t &logged) {
    const std::uint64_t droppedBefore = droppedSoFar();
    for (std::int32_t i = 0; i < count; ++i) logger.log(logged++);
    logger.flush();
    std::printf("demo %s: burst of %d messages, %llu dropped by the full queue\n", formatAppId(logger.id()).c_str(),
                count, static_cast<unsigned long long>(droppedSoFar() - droppedBefore));
    std::fflush(stdout);
}

template <class Options>
int runDemoWith(const DemoSettings &settings) {
    DemoLogger<Options> logger(settings);
    std::printf("demo %s kind %s on domain %d: %d messages/s%s\n", formatAppId(logger.id()).c_str(),
                settings.kind.c_str(), settings.domain, settings.rate,
                settings.duration > 0 ? "" : " until interrupted");
    std::fflush(stdout);

    std::uint64_t logged = 0;
    if (settings.burst > 0) logBurst(logger, settings.burst, logged);
    Clock::time_point start = Clock::now();
    auto elapsed = [&] { return std::chrono::duration<double>(Clock::now() - start).count(); };
    const std::uint64_t firstPaced = logged;
    while (!stopRequested() && (settings.duration <= 0 || elapsed() < settings.duration)) {
        logger.log(logged++);
        if (settings.rate > 0) {
            std::this_thread::sleep_until(
                start + std::chrono::duration_cast<Clock::duration>(
                            std::chrono::duration<double>(double(logged - firstPaced) / settings.rate)));
        }
    }
    const bool flushed = logger.flush();
    std::printf("demo %s: logged %llu messages%s\n", formatAppId(logger.id()).c_str(),
                static_cast<unsigned long long>(logged), flushed ? "" : " (not all acknowledged)");
    std::fflush(stdout);
    return 0;
}

}  // namespace

const CommandDescription kDemoCommand{
    "demo", "", "Run a demo application that logs through Vexar.", kDemoDetails, kDemoOptions, 0, 0};

int runDemo(const ParsedArguments &arguments) {
    DemoSettings settings = settingsFrom(arguments);
    installStopHandlers();
    return settings.configFile ? runDemoWith<XmlOptions>(settings) : runDemoWith<CommandLineOptions>(settings);
}

}  // namespace vexar::cli
