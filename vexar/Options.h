/* The options record: how the logger is to be built. Registered with
 * QTV_VX_Vexar_setOptions before the logger's first use, or made by the
 * logger itself with QTV_VX_Options_createDefault. */
#ifndef VEXAR_VEXAR_OPTIONS_H
#define VEXAR_VEXAR_OPTIONS_H

#include "platform/dds_types.h"
#include "platform/export.h"
#include "platform/dds/thread_settings.h"

VEXAR_BEGIN_DECLS

/* Fields in their fixed order; the defaults are those of createDefault. */
typedef struct QTV_VX_Options {
    /* Borrowed, never deleted here; null (default) makes the logger create
     * its own participant in `domainId`. */
    DDS_DomainParticipant *domainParticipant;
    /* Whether to start the logger at all; read by the start from XML. 1. */
    DDS_Long enabled;
    /* Remote commands are served. 1. */
    DDS_Long remoteAdministrationEnabled;
    /* Initial filter level. 600 (INFO). */
    DDS_Long filterLevel;
    /* Domain of a participant that the logger creates. 0. */
    DDS_UnsignedLong domainId;
    /* Owned texts naming the QoS library and profile of the entities; the
     * profile is used only when both are set. Null. */
    char *qosLibrary;
    char *qosProfile;
    /* Capacity of the message queue. 128. */
    DDS_UnsignedLong queueSize;
    /* How the write thread is created; owned contents. Platform defaults. */
    DDS_ThreadSettings_t threadSettings;
    /* Owned free-form kind of application, published in the state. Null. */
    char *applicationKind;
    /* Echo every logged message to stdout; only the value 1 turns it on. 0.
     * A running logger sees a change made through the setter. */
    DDS_Long echoToStdout;
    /* Capture the middleware's own diagnostics into the log. 1. */
    DDS_Long logInfrastructureMessages;
} QTV_VX_Options;

/* Every failure below prints a line through QTV_VX_Vexar_printMessage. A
 * null record prints "QTV_VX_Options is null"; its getters then return the
 * value given, its setters DDS_RETCODE_NO_DATA. Refused values leave the
 * record unchanged and return DDS_RETCODE_BAD_PARAMETER. */

/* A new record with the defaults, or null when out of memory. */
VEXAR_API QTV_VX_Options *QTV_VX_Options_createDefault(void);

/* Copies `origin` into `destination`, an initialized record (from
 * createDefault): every field except echoToStdout and
 * logInfrastructureMessages, which keep the destination's values. A text
 * that is null in the origin leaves the destination's text as it was; the
 * participant pointer is shared. Returns 1, or 0 for a null argument or
 * when a text cannot be duplicated (fields before it are then copied). */
VEXAR_API DDS_Long QTV_VX_Options_copy(QTV_VX_Options *destination, const QTV_VX_Options *origin);

/* Frees the record and everything that it owns; returns null so that the
 * caller can clear its pointer in one statement. Null is noted, harmless. */
VEXAR_API QTV_VX_Options *QTV_VX_Options_delete(QTV_VX_Options *self);

/* Null for a null record. */
VEXAR_API DDS_DomainParticipant *QTV_VX_Options_getDomainParticipant(const QTV_VX_Options *self);
/* The participant must not be null. */
VEXAR_API DDS_ReturnCode_t QTV_VX_Options_setDomainParticipant(QTV_VX_Options *self,
                                                               DDS_DomainParticipant *participant);

/* 0 for a null record. */
VEXAR_API DDS_Long QTV_VX_Options_isRemoteAdministrationEnabled(const QTV_VX_Options *self);
VEXAR_API DDS_ReturnCode_t QTV_VX_Options_setRemoteAdministrationEnabled(QTV_VX_Options *self, DDS_Long enabled);

/* -1 for a null record. */
VEXAR_API DDS_Long QTV_VX_Options_getFilterLevel(const QTV_VX_Options *self);
/* The level must be zero or more. */
VEXAR_API DDS_ReturnCode_t QTV_VX_Options_setFilterLevel(QTV_VX_Options *self, DDS_Long level);

/* -1 for a null record. */
VEXAR_API DDS_Long QTV_VX_Options_getDomainId(const QTV_VX_Options *self);
/* The id must be zero or more. */
VEXAR_API DDS_ReturnCode_t QTV_VX_Options_setDomainId(QTV_VX_Options *self, DDS_Long domainId);

/* Borrowed texts; null when unset or for a null record. */
VEXAR_API const char *QTV_VX_Options_getQosLibrary(const QTV_VX_Options *self);
VEXAR_API const char *QTV_VX_Options_getQosProfile(const QTV_VX_Options *self);
VEXAR_API const char *QTV_VX_Options_getApplicationKind(const QTV_VX_Options *self);

/* The text setters store a duplicate (the caller keeps its own string) and
 * free the text that they replace, so a text taken from the record's own
 * getter may be passed back. A null text is refused. If the duplicate
 * cannot be made the field is left null and DDS_RETCODE_ERROR returned. */
VEXAR_API DDS_ReturnCode_t QTV_VX_Options_setQosLibrary(QTV_VX_Options *self, const char *qosLibrary);
VEXAR_API DDS_ReturnCode_t QTV_VX_Options_setQosProfile(QTV_VX_Options *self, const char *qosProfile);
VEXAR_API DDS_ReturnCode_t QTV_VX_Options_setApplicationKind(QTV_VX_Options *self, const char *applicationKind);

/* -1 for a null record. */
VEXAR_API DDS_Long QTV_VX_Options_getQueueSize(const QTV_VX_Options *self);
/* The size must be at least 1. */
VEXAR_API DDS_ReturnCode_t QTV_VX_Options_setQueueSize(QTV_VX_Options *self, DDS_Long queueSize);

/* The record's own settings (borrowed); null for a null record. */
VEXAR_API const DDS_ThreadSettings_t *QTV_VX_Options_getThreadSettings(const QTV_VX_Options *self);
/* Deep-copies `settings`; DDS_RETCODE_ERROR when the copy fails. */
VEXAR_API DDS_ReturnCode_t QTV_VX_Options_setThreadSettings(QTV_VX_Options *self, const DDS_ThreadSettings_t *settings);

/* 0 for a null record. */
VEXAR_API DDS_Long QTV_VX_Options_getEchoToStdout(const QTV_VX_Options *self);
VEXAR_API DDS_ReturnCode_t QTV_VX_Options_setEchoToStdout(QTV_VX_Options *self, DDS_Long echo);

/* 0 for a null record. */
VEXAR_API DDS_Long QTV_VX_Options_getLogInfrastructureMessages(const QTV_VX_Options *self);
VEXAR_API DDS_ReturnCode_t QTV_VX_Options_setLogInfrastructureMessages(QTV_VX_Options *self, DDS_Long enabled);

VEXAR_END_DECLS

#endif
