#include "vexar/LogMessageWriteThread.h"

#include <atomic>
#include <cstdlib>

#include "platform/dds/data_writer.h"
#include "platform/log/collapsing_writer.hpp"
#include "type/vexarSupport.h"
#include "vexar/logger_core.hpp"
#include "vexar/message_counts.hpp"
#include "vexar/report_line.hpp"
#include "vexar/statistics_topic.hpp"

namespace {

constexpr const char *kThreadName = "LogMessageWriteThread";

// Just under 100 ms: how long one turn waits for a message, and how often
// delete looks whether the thread has left its loop.
constexpr OBLX_Time_t kTurn{0, 429491200u};

constexpr OBLX_Time_t kNoWait{0, 0};

// Set on every write thread, so that the logger device can drop the
// thread's own lines before it takes any lock.
thread_local bool tOnWriteThread = false;

// The recorded COMMUNICATION verbosity is written by listener and
// application threads alike.
void recordVerbosity(LogMessageWriteThread &self, OBLX_Config_LogVerbosity verbosity) noexcept {
    vexar::shared(self.logVerbosity).store(verbosity);
}

DDS_ReturnCode_t writeWithTimestamp(QTV_VX_LogMessageDataWriter *writer, const QTV_VX_LogMessagePlusTime &item) {
    return QTV_VX_LogMessageDataWriter_write_w_timestamp(writer, &item.message, DDS_HANDLE_NIL, &item.writeTime);
}

std::atomic<vexar::LogMessagePublisher> gPublish{&writeWithTimestamp};

// Publishes the head; a time-out leaves it for a later turn.
void publishHead(LogMessageWriteThread &self, const QTV_VX_LogMessagePlusTime &head) noexcept {
    DDS_ReturnCode_t result = gPublish.load()(self.logMessageWriter, head);
    if (result == DDS_RETCODE_TIMEOUT) return;
    if (result != DDS_RETCODE_OK) {
        vexar::reportError("Unable to write LogMessage in DataWriter", "LogMessageWriteThread_run");
    }
    QTV_VX_MessageQueue_pop(self.q);
    vexar::countInQueues(result == DDS_RETCODE_OK ? vexar::QueueOutcome::published : vexar::QueueOutcome::failed);
}

// The log writer batches samples (see vexar/DDSEntities.cpp): what it holds
// is sent when the queue is found empty and when the loop ends.
void flushWrites(LogMessageWriteThread &self) noexcept {
    if (self.logMessageWriter != nullptr) {
        DDS_DataWriter_flush(QTV_VX_LogMessageDataWriter_as_datawriter(self.logMessageWriter));
    }
}

// The published statistics are looked at on every idle turn and, while the
// queue stays busy, after every so many messages: a clock read for each
// message would cost the write thread more than the look is worth.
class StatisticsLooks {
public:
    void afterMessage() noexcept {
        if (++sinceLook_ == kMessagesBetweenLooks) now();
    }
    void now() noexcept {
        sinceLook_ = 0;
        vexar::publishStatisticsWhenDue();
    }

private:
    static constexpr unsigned kMessagesBetweenLooks = 256;
    unsigned sinceLook_ = 0;
};

// Publishes queued messages one after the other and flushes once the queue
// is empty, before waiting a turn for the next message.
void drainUntilStopped(LogMessageWriteThread &self) noexcept {
    bool unflushed = false;
    StatisticsLooks statistics;
    while (vexar::shared(self.shouldRun).load() == 1) {
        const QTV_VX_LogMessagePlusTime *head = QTV_VX_MessageQueue_front(self.q, &kNoWait);
        if (head == nullptr) {
            if (unflushed) flushWrites(self);
            unflushed = false;
            statistics.now();
            head = QTV_VX_MessageQueue_front(self.q, &kTurn);
        }
        if (head != nullptr) {
            publishHead(self, *head);
            unflushed = true;
            statistics.afterMessage();
        }
    }
    if (unflushed) flushWrites(self);
}

bool startThread(LogMessageWriteThread &self, const DDS_ThreadSettings_t *settings) noexcept {
    const DDS_ThreadSettings_t defaults = DDS_THREAD_SETTINGS_DEFAULT;
    const DDS_ThreadSettings_t &chosen = settings != nullptr ? *settings : defaults;
    self.thread = OBLX_Thread_new(kThreadName, chosen.priority, chosen.mask, chosen.stack_size,
                                  &LogMessageWriteThread_run, &self);
    return self.thread != nullptr;
}

// Everything that needs the middleware logger and the queue; false (with
// its line printed) when one of them is missing.
bool prepare(LogMessageWriteThread &self, DDS_Long queueSize) noexcept {
    constexpr const char *source = "LogMessageWriteThread_create";
    self.qtvLogger = OBLX_Config_Logger_get_instance();
    if (self.qtvLogger == nullptr) {
        // "access to" is deliberate: the published report text.
        vexar::reportError("Unable to access to QTV Logger", source);
        return false;
    }
    recordVerbosity(
        self, OBLX_Config_Logger_get_verbosity_by_category(self.qtvLogger, OBLX_CONFIG_LOG_CATEGORY_COMMUNICATION));
    QTV_VX_MessageQueueProperty property{queueSize};
    self.q = QTV_VX_MessageQueue_new(&property);
    if (self.q == nullptr) {
        vexar::reportError("Unable to create Message Queue", source);
        return false;
    }
    return true;
}

}  // namespace

namespace vexar {

void stopWriteThread(LogMessageWriteThread *thread) noexcept {
    if (thread != nullptr) shared(thread->shouldRun).store(0);
}

DDS_UnsignedLong writeThreadId(const LogMessageWriteThread *thread) noexcept {
    return thread != nullptr ? shared(const_cast<LogMessageWriteThread *>(thread)->threadId).load() : 0;
}

bool onWriteThread() noexcept { return tOnWriteThread; }

LogMessagePublisher replaceLogMessagePublisher(LogMessagePublisher publisher) noexcept {
    return gPublish.exchange(publisher);
}

}  // namespace vexar

extern "C" {

LogMessageWriteThread *LogMessageWriteThread_create(struct QTV_VX_LogMessageDataWriter *writer, DDS_Long queueSize,
                                                    const DDS_ThreadSettings_t *threadSettings) {
    auto *self = static_cast<LogMessageWriteThread *>(std::calloc(1, sizeof(LogMessageWriteThread)));
    if (self == nullptr) {
        vexar::reportError("Unable to allocate memory for LogMessageWriteThread", "LogMessageWriteThread_create");
        return nullptr;
    }
    self->logMessageWriter = writer;
    // Marked exited until a thread runs, so that delete never waits for
    // a thread that was not started.
    self->exitRun = 1;
    if (prepare(*self, queueSize)) {
        self->exitRun = 0;
        self->shouldRun = 1;
        if (startThread(*self, threadSettings)) return self;
        vexar::reportError("Unable to create thread!", "LogMessageWriteThread_create");
        vexar::shared(self->exitRun).store(1);
    }
    LogMessageWriteThread_delete(self);
    return nullptr;
}

void *LogMessageWriteThread_run(void *arg) {
    auto &self = *static_cast<LogMessageWriteThread *>(arg);
    tOnWriteThread = true;
    vexar::log::writeLinesOfThisThreadUncollapsed();
    DDS_UnsignedLong id = OBLX_Thread_currentId();
    vexar::shared(self.threadId).store(id);
    if (id == 0) {
        // "WrteThread" is deliberate: the published report text.
        vexar::reportError("Unable to get WrteThread ID.", "LogMessageWriteThread_run");
    } else {
        drainUntilStopped(self);
    }
    vexar::shared(self.exitRun).store(1);
    return nullptr;
}

void LogMessageWriteThread_delete(LogMessageWriteThread *self) {
    if (self == nullptr) return;
    while (vexar::shared(self->exitRun).load() == 0) OBLX_Thread_sleep(&kTurn);
    OBLX_Thread_delete(self->thread);
    self->thread = nullptr;
    vexar::shared(self->threadId).store(0);
    QTV_VX_MessageQueue_delete(self->q);
    std::free(self);
}

void LogMessageWriteThread_setCommunicationsLogVerbosity(LogMessageWriteThread *self,
                                                         OBLX_Config_LogVerbosity verbosity) {
    if (self == nullptr) return;
    OBLX_Config_Logger_set_verbosity_by_category(self->qtvLogger, OBLX_CONFIG_LOG_CATEGORY_COMMUNICATION, verbosity);
    recordVerbosity(*self, verbosity);
}

}  // extern "C"
