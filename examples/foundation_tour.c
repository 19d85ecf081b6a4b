/* A first look at Vexar's foundation: the options record that says how the
 * logger is built, the report lines through which the library speaks, and
 * the bounded queue that carries log messages to the publishing thread. */
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#include "vexar/MessageQueue.h"
#include "vexar/Options.h"
#include "vexar/VexarUtility.h"

#define TOUR_QUEUE_SIZE 3
#define LONG_MESSAGE_LENGTH 5000

static void section(const char *title) { printf("\n== %s ==\n", title); }

static const char *orNone(const char *text) { return text != NULL ? text : "(none)"; }

static void showOptions(const QTV_VX_Options *options) {
    char levelName[QTV_VX_LOG_LEVEL_NAME_SIZE];
    QTV_VX_translateFromVXLogLevelToString(QTV_VX_Options_getFilterLevel(options), levelName);
    printf("  filter level        %d (%s)\n", (int)QTV_VX_Options_getFilterLevel(options), levelName);
    printf("  domain id           %d\n", (int)QTV_VX_Options_getDomainId(options));
    printf("  queue size          %d\n", (int)QTV_VX_Options_getQueueSize(options));
    printf("  application kind    %s\n", orNone(QTV_VX_Options_getApplicationKind(options)));
    printf("  QoS library/profile %s / %s\n", orNone(QTV_VX_Options_getQosLibrary(options)),
           orNone(QTV_VX_Options_getQosProfile(options)));
    printf("  remote admin        %s\n", QTV_VX_Options_isRemoteAdministrationEnabled(options) ? "on" : "off");
    printf("  echo to stdout      %s\n", QTV_VX_Options_getEchoToStdout(options) == 1 ? "on" : "off");
}

static QTV_VX_Options *tourOptions(void) {
    QTV_VX_Options *options = QTV_VX_Options_createDefault();
    if (options == NULL) {
        return NULL;
    }
    puts("Defaults:");
    showOptions(options);
    QTV_VX_Options_setFilterLevel(options, QTV_VX_LOG_LEVEL_DEBUG);
    QTV_VX_Options_setDomainId(options, 7);
    QTV_VX_Options_setQueueSize(options, TOUR_QUEUE_SIZE);
    QTV_VX_Options_setApplicationKind(options, "foundation tour");
    puts("After setting the filter level, domain, queue size and application kind:");
    showOptions(options);
    return options;
}

static void showReportLines(QTV_VX_Options *options) {
    puts("A refused setter prints a report line (level, operation, text):");
    DDS_ReturnCode_t result = QTV_VX_Options_setQueueSize(options, 0);
    printf("  -> returned %d; the queue size is still %d\n", (int)result, (int)QTV_VX_Options_getQueueSize(options));
    puts("The same routine echoes logged messages, with an empty source:");
    QTV_VX_Vexar_printMessage("Hello from the tour", "", QTV_VX_LOG_LEVEL_INFO);
}

static DDS_Long pushMessage(QTV_VX_MessageQueue *queue, DDS_Long level, const char *category, const char *text) {
    QTV_VX_LogMessagePlusTime item;
    memset(&item, 0, sizeof item);
    item.message.level = level;
    item.message.category = (char *)category;
    item.message.message = (char *)text;
    return QTV_VX_MessageQueue_push(queue, &item);
}

static void drain(QTV_VX_MessageQueue *queue) {
    const OBLX_Time_t noWait = OBLX_TIME_ZERO;
    const QTV_VX_LogMessagePlusTime *head;
    while ((head = QTV_VX_MessageQueue_front(queue, &noWait)) != NULL) {
        char levelName[QTV_VX_LOG_LEVEL_NAME_SIZE];
        QTV_VX_translateFromVXLogLevelToString(head->message.level, levelName);
        printf("  %-10s [%s] %zu characters: \"%.40s%s\"\n", levelName, head->message.category,
               strlen(head->message.message), head->message.message, strlen(head->message.message) > 40 ? "..." : "");
        QTV_VX_MessageQueue_pop(queue);
    }
}

static void showQueue(const QTV_VX_Options *options) {
    const QTV_VX_MessageQueueProperty property = {QTV_VX_Options_getQueueSize(options)};
    QTV_VX_MessageQueue *queue = QTV_VX_MessageQueue_new(&property);
    char *longMessage = malloc(LONG_MESSAGE_LENGTH + 1);
    if (queue == NULL || longMessage == NULL) {
        QTV_VX_MessageQueue_delete(queue);
        free(longMessage);
        return;
    }
    memset(longMessage, 'z', LONG_MESSAGE_LENGTH);
    longMessage[LONG_MESSAGE_LENGTH] = '\0';
    memcpy(longMessage, "A long message, cut on the way in: ", 35);

    printf("A queue of %d messages; a short one is copied into its element,\n", (int)property.queueSize);
    puts("a long one onto the heap, at most 4096 characters of it:");
    pushMessage(queue, QTV_VX_LOG_LEVEL_INFO, "tour", "Short and inline");
    pushMessage(queue, QTV_VX_LOG_LEVEL_WARNING, "tour", longMessage);
    pushMessage(queue, QTV_VX_LOG_LEVEL_DEBUG, "tour.details", "Third, which fills the queue");
    puts("One more than it holds is dropped with a warning:");
    pushMessage(queue, QTV_VX_LOG_LEVEL_TRACE, "tour", "Never queued");
    puts("The consumer looks at the head, handles it, then pops it:");
    drain(queue);

    QTV_VX_MessageQueue_delete(queue);
    free(longMessage);
}

int main(void) {
    section("Options");
    QTV_VX_Options *options = tourOptions();
    if (options == NULL) {
        return EXIT_FAILURE;
    }
    section("Report lines");
    showReportLines(options);
    section("Message queue");
    showQueue(options);
    QTV_VX_Options_delete(options);
    return EXIT_SUCCESS;
}
