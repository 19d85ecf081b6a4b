/* The `vexar` element of the middleware's XML configuration: the logger's
 * options written as XML, read by the middleware's parser through an
 * extension class, used to start the logger and written back when the
 * configuration is saved.
 *
 *   <vexar>
 *       <enabled>true</enabled>
 *       <filter_level>WARNING</filter_level>
 *       <thread>
 *           <mask>STDIO | REALTIME_PRIORITY</mask>
 *           <priority>20</priority>
 *           <stack_size>0x10000</stack_size>
 *           <cpu_list><element>0</element><element>2</element></cpu_list>
 *           <cpu_rotation>THREAD_SETTINGS_CPU_RR_ROTATION</cpu_rotation>
 *       </thread>
 *       <queue_size>256</queue_size>
 *       <echo_to_stdout>false</echo_to_stdout>
 *       <log_infrastructure_messages>true</log_infrastructure_messages>
 *   </vexar>
 *
 * Use: create the class with QTV_VX_XMLConfig_createXMLExtensionClass,
 * register it with DDS_DomainParticipantFactory_register_xml_extension_class,
 * load the documents, find the element from the factory's XML root with
 * QTV_VX_XMLConfig_getXMLConfigFromXMLRoot, and start the logger with
 * QTV_VX_XMLConfig_startWithXMLConfiguration. A logger started that way
 * reads the element's options for its whole life: keep the document loaded
 * until the logger is finalized. Unload, unregister, then destroy the class.
 *
 * A value that cannot be converted is reported through the application's
 * parse-error function, with the name of the reporting function and the
 * line of the document, and marks the parse as failed; the parser then
 * refuses the document. The option keeps its former value, except that a
 * priority that is not a number is stored as 0 and a queue size that cannot
 * be converted is passed to QTV_VX_Options_setQueueSize as 0 (which refuses
 * it with a line of its own). Other failures are printed through
 * QTV_VX_Vexar_printMessage. */
#ifndef VEXAR_CONFIG_XMLCONFIG_H
#define VEXAR_CONFIG_XMLCONFIG_H

#include "platform/dds_types.h"
#include "platform/export.h"
#include "platform/dds/thread_settings.h"
#include "platform/types/sequence.h"
#include "platform/xml/xml_helper.h"
#include "platform/xml/xml_object.h"
#include "vexar/Options.h"

VEXAR_BEGIN_DECLS

/* The element's tag. */
#define QTV_VX_XMLCONFIG_TAG_NAME "vexar"

/* The thread mask's text is worked on in a buffer of this size: a text of
 * QTV_VX_XMLCONFIG_MASK_BUFFER_SIZE characters or more is refused with
 * "thread settings mask string too long", leaving the mask 0. */
#define QTV_VX_XMLCONFIG_MASK_BUFFER_SIZE 2048

/* Receives every conversion error: the message, the name of the function
 * that reports it and the line of the document being parsed. */
typedef void (*QTV_VX_XMLConfig_ParseErrorLogFunction)(const char *message, const char *reportingFunctionName,
                                                       DDS_UnsignedLong lineNumber);

/* The extension class's user data, owned by the class. */
typedef struct QTV_VX_XMLConfig_ExtensionClassListener {
    QTV_VX_XMLConfig_ParseErrorLogFunction parserErrorLogFunction;
} QTV_VX_XMLConfig_ExtensionClassListener;

/* Which child tag of the element is open while it is parsed. */
typedef enum VX_XMLConfig_TagType {
    VX_XMLCONFIG_OTHER = 0,
    VX_XMLCONFIG_FILTER_LEVEL_TAG = 1,
    VX_XMLCONFIG_ENABLED_TAG = 2,
    VX_XMLCONFIG_THREAD_TAG = 3,
    VX_XMLCONFIG_THREAD_MASK_TAG = 4,
    VX_XMLCONFIG_THREAD_PRIORITY_TAG = 5,
    VX_XMLCONFIG_THREAD_STACK_SIZE_TAG = 6,
    VX_XMLCONFIG_THREAD_CPU_LIST_TAG = 7, /* and its <element> children */
    VX_XMLCONFIG_THREAD_CPU_ROTATION_TAG = 8,
    VX_XMLCONFIG_QUEUE_SIZE_TAG = 9,
    VX_XMLCONFIG_ECHO_TO_STDOUT_TAG = 10,
    VX_XMLCONFIG_LOG_INFRASTRUCTURE_MESSAGES_TAG = 11
} VX_XMLConfig_TagType;

/* One parsed element. The XML object comes first, so that the record is
 * the object that the parser holds. */
typedef struct QTV_VX_XMLConfig {
    DDS_XMLObject baseObject;
    /* Owned: the options read so far. Made with the defaults except
     * `enabled`, which is 0, so that an element without <enabled> does not
     * start the logger. */
    QTV_VX_Options *parsedVXOptions;
    VX_XMLConfig_TagType currentStatus;
    /* Borrowed from the extension class: where parse errors go. */
    QTV_VX_XMLConfig_ExtensionClassListener *extensionListener;
} QTV_VX_XMLConfig;

/* ---- the extension class ----------------------------------------------- */

/* The class of the element `vexar`: not a root class, duplicates not
 * allowed, its parse errors sent to `errorFunction`. Null (printed) for a
 * null function or when memory runs out. */
VEXAR_API DDS_XMLExtensionClass *
QTV_VX_XMLConfig_createXMLExtensionClass(QTV_VX_XMLConfig_ParseErrorLogFunction errorFunction);
/* Frees the class's listener and deletes the class. Unregister the class
 * and unload its documents first. Null is ignored. */
VEXAR_API void QTV_VX_XMLConfig_destroyXMLExtensionClass(DDS_XMLExtensionClass *extensionClass);

/* ---- element objects --------------------------------------------------- */

/* A zeroed record, or null (printed). */
VEXAR_API QTV_VX_XMLConfig *QTV_VX_XMLConfig_create(void);
/* The class's new-object callback: an element object for `extensionClass`
 * under `parent`, returned as its XML object; null (printed) on failure. */
VEXAR_API DDS_XMLObject *QTV_VX_XMLConfig_new(const DDS_XMLExtensionClass *extensionClass, DDS_XMLObject *parent,
                                              const char **attributes, DDS_XMLContext *context);
/* The class's delete-object callback: the same as finalize. */
VEXAR_API void QTV_VX_XMLConfig_delete(DDS_XMLObject *object);
/* Deletes the options, finalizes the XML object and frees the record made
 * by QTV_VX_XMLConfig_new. Null is ignored. */
VEXAR_API void QTV_VX_XMLConfig_finalize(DDS_XMLObject *object);

/* ---- finding the element and starting from it --------------------------- */

/* The first object tagged `vexar` in document order, searching `root`, its
 * descendants and its following siblings with theirs; null when none. */
VEXAR_API DDS_XMLObject *QTV_VX_XMLConfig_getVXXMLObjectFromRoot(DDS_XMLObject *root);
/* The same search, the result as the element's record. */
VEXAR_API QTV_VX_XMLConfig *QTV_VX_XMLConfig_getXMLConfigFromXMLRoot(DDS_XMLObject *root);
/* The element's options (borrowed); null (printed) for a null element. */
VEXAR_API QTV_VX_Options *QTV_VX_XMLConfig_getVXOptions(const QTV_VX_XMLConfig *self);

/* Starts the logger from the element's options on `participant`, setting
 * the application kind when one is given. The options are registered by
 * pointer, so the element must outlive the logger. Returns 1 when the
 * logger now runs, when the options do not enable it, or when a logger was
 * already running (the options then do not apply); 0 (printed) on failure. */
VEXAR_API DDS_Long QTV_VX_XMLConfig_startWithXMLConfiguration(DDS_DomainParticipant *participant,
                                                              QTV_VX_Options *options, const char *applicationKind);

/* ---- saving ------------------------------------------------------------ */

/* The class's save callback: writes the element with its options (the
 * running logger's filter level, when a logger runs). Failures set the
 * save context's error flag. */
VEXAR_API void QTV_VX_XMLConfig_save(const DDS_XMLObject *object, DDS_XMLSaveContext *context);
/* Writes `settings` as the element `elementName`; writes nothing when they
 * are the platform's defaults. */
VEXAR_API void QTV_VX_XMLConfig_saveThreadSettings(const char *elementName, const DDS_ThreadSettings_t *settings,
                                                   DDS_XMLSaveContext *context);

/* ---- the parser's callbacks -------------------------------------------- */

/* A start tag inside the element: notes which child is open. */
VEXAR_API void QTV_VX_XMLConfig_onStartElement(DDS_XMLObject *object, const char *tagName, const char **attributes,
                                               DDS_XMLContext *context);
/* An end tag inside the element: converts the child's text into the
 * options. */
VEXAR_API void QTV_VX_XMLConfig_onEndElement(DDS_XMLObject *object, const char *tagName, const char *elementText,
                                             DDS_XMLContext *context);

/* ---- converters ----------------------------------------------------------
 * Each reports a failure through `errorFunction` (printed instead when it
 * is null) with the context's current line and sets the context's error
 * flag (a null context gives line 0). Unless said otherwise the target is
 * written only on success, and the result is true on success. The numeric
 * ones do not clear errno first: a range error left over from an earlier
 * call on the thread reads as "integer out of bounds in XML text". */

/* A level name (SILENT, FATAL, ..., TRACE, exactly in capitals) or a
 * decimal number of zero or more (leading digits; the rest is ignored).
 * Returns the level, or -1. */
VEXAR_API DDS_Long QTV_VX_XMLConfig_getFilterLevelFromString(const char *text, DDS_XMLContext *context,
                                                             QTV_VX_XMLConfig_ParseErrorLogFunction errorFunction);
/* Kind names (FLOATING_POINT, STDIO, REALTIME_PRIORITY, PRIORITY_ENFORCE,
 * MASK_DEFAULT, each also with a THREAD_SETTINGS_ or
 * DDS_THREAD_SETTINGS_ prefix; any case) separated by "|". The mask is set
 * to 0 first; on an unknown name it keeps the bits of the names before it. */
VEXAR_API DDS_Boolean QTV_VX_XMLConfig_getThreadSettingsKindMask(const char *text, DDS_XMLContext *context,
                                                                 QTV_VX_XMLConfig_ParseErrorLogFunction errorFunction,
                                                                 DDS_Long *mask);
/* A priority name (every name is the platform's default priority,
 * -9999999) or a decimal number, stored as it is; a text with no digits
 * stores 0 and fails. */
VEXAR_API DDS_Boolean QTV_VX_XMLConfig_getThreadPriority(const char *text, DDS_XMLContext *context,
                                                         QTV_VX_XMLConfig_ParseErrorLogFunction errorFunction,
                                                         DDS_Long *priority);
/* THREAD_STACK_SIZE_DEFAULT (any case, also with a DDS_ prefix; -1) or a
 * number of zero or more in C notation (decimal, 0x hexadecimal, 0 octal). */
VEXAR_API DDS_Boolean QTV_VX_XMLConfig_getThreadStackSize(const char *text, DDS_XMLContext *context,
                                                          QTV_VX_XMLConfig_ParseErrorLogFunction errorFunction,
                                                          DDS_Long *stackSize);
/* Appends one CPU number (zero or more, C notation). The list grows even
 * when the text is refused; the new entry is then left unwritten. */
VEXAR_API DDS_Boolean QTV_VX_XMLConfig_addElementToThreadCpuList(const char *text, DDS_XMLContext *context,
                                                                 QTV_VX_XMLConfig_ParseErrorLogFunction errorFunction,
                                                                 DDS_LongSeq *cpuList);
/* CPU_NO_ROTATION (0) or CPU_RR_ROTATION (1), each also with a
 * THREAD_SETTINGS_ or DDS_THREAD_SETTINGS_ prefix; any case. */
VEXAR_API DDS_Boolean QTV_VX_XMLConfig_getThreadCpuRotation(const char *text, DDS_XMLContext *context,
                                                            QTV_VX_XMLConfig_ParseErrorLogFunction errorFunction,
                                                            DDS_Long *rotation);
/* A number of one or more in C notation. */
VEXAR_API DDS_Boolean QTV_VX_XMLConfig_getQueueSize(const char *text, DDS_XMLContext *context,
                                                    QTV_VX_XMLConfig_ParseErrorLogFunction errorFunction,
                                                    DDS_Long *queueSize);
/* Ends `text` at its first "|" and returns what follows it; null when the
 * text has no "|" or is null. */
VEXAR_API char *QTV_VX_XMLConfig_separateFirstElementFromMask(char *text);

VEXAR_END_DECLS

#endif
