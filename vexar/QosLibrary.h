/* The logger's built-in QoS library, "VexarQosLibrary": profiles for the
 * logger's entities and for the applications that read its topics, present
 * in the participant factory without any XML file.
 *
 *   Lossless  the log writer (topic "qtv/vexar") and every reader keep all
 *             their samples. Cyclone bounds what a writer holds
 *             unacknowledged in bytes and then blocks the write for up to
 *             reliability.max_blocking_time, so a slow subscriber slows the
 *             write thread down: the queue fills, and messages are dropped
 *             only there, each one reported and counted.
 *   Bounded   the log writer keeps the last 1000 messages of each instance
 *             (an application and a level) for 10 s at most: fresh logs
 *             before complete ones.
 *
 * A logger whose options name this library loads it itself; so does
 * `vexar config save`. */
#ifndef VEXAR_VEXAR_QOSLIBRARY_H
#define VEXAR_VEXAR_QOSLIBRARY_H

#include "platform/dds_types.h"
#include "platform/export.h"

VEXAR_BEGIN_DECLS

#define QTV_VX_QOS_LIBRARY_NAME "VexarQosLibrary"
#define QTV_VX_QOS_PROFILE_LOSSLESS "Lossless"
#define QTV_VX_QOS_PROFILE_BOUNDED "Bounded"

/* Loads the library into the participant factory unless it is there
 * already (again after DDS_DomainParticipantFactory_unload_xml). Returns
 * DDS_RETCODE_OK when it is loaded; otherwise the factory's code, with the
 * factory's report. Any thread; not from an XML extension callback. */
VEXAR_API DDS_ReturnCode_t QTV_VX_QosLibrary_load(void);

VEXAR_END_DECLS

#endif
