/* What became of the messages logged in this process, so that an
 * application knows what it lost: every logging call is accepted, refused
 * or dropped, and every accepted message is in the end published, failed or
 * discarded.
 *
 * The figures count over the life of the process, across every logger it
 * has had, and only grow. Reading them takes a lock that logging calls do
 * not take; while messages flow they are a snapshot. A message published is
 * handed to the middleware: whether each subscriber got it is the
 * subscriber's to tell (QTV_VX_Vexar_flush waits for the reliable ones).
 *
 * A running logger also publishes these figures for remote tools, as a
 * QTV_VX_ADMIN_Statistics sample keyed by its application on the topic
 * below (reliable, transient-local, the last sample per application): at
 * most once a second when a figure changed, and once more when it is
 * finalized. */
#ifndef VEXAR_VEXAR_STATISTICS_H
#define VEXAR_VEXAR_STATISTICS_H

#include "platform/dds_types.h"
#include "platform/export.h"

VEXAR_BEGIN_DECLS

/* The topic of the published figures and the type name registered for it. */
#define QTV_VX_STATISTICS_TOPIC_NAME "qtv/vexar/administration/statistics"
#define QTV_VX_STATISTICS_REGISTERED_TYPE_NAME "com::qtv::vx::admin::Statistics"

typedef struct QTV_VX_Statistics {
    DDS_UnsignedLongLong accepted;  /* calls whose message was copied into a queue */
    DDS_UnsignedLongLong refused;   /* calls not offered to a queue: above the filter level, no running
                                       logger, not OPERATIONAL, invalid arguments, or made on the write thread */
    DDS_UnsignedLongLong dropped;   /* calls whose message was lost at once: the queue was full, or the copy
                                       failed (each one also reported by a line) */
    DDS_UnsignedLongLong published; /* accepted messages written to the log writer */
    DDS_UnsignedLongLong failed;    /* accepted messages whose write failed (each one reported) */
    DDS_UnsignedLongLong discarded; /* accepted messages still queued when their logger was finalized */
} QTV_VX_Statistics;

/* Fills `statistics`. DDS_RETCODE_OK, or DDS_RETCODE_BAD_PARAMETER (with a
 * printed line) for a null record. Any thread, at any time, with or without
 * a logger. */
VEXAR_API DDS_ReturnCode_t QTV_VX_Vexar_getStatistics(QTV_VX_Statistics *statistics);

VEXAR_END_DECLS

#endif
