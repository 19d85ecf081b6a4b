/* The administration State: one QTV_VX_ADMIN_State sample per logger that
 * describes it to remote tools, published as a single keyed instance on
 * "qtv/vexar/administration/state" (reliable, transient-local, so a reader
 * that joins late receives the last sample from the writer's history).
 *
 * The sample is first written from the State writer's publication-matched
 * callback, together with the registration of its instance; until then
 * writeState keeps changes in the sample only. After that every change made
 * through the logger's setters or a remote command is written again.
 *
 * The sample is changed and written from application threads and from
 * listener threads. One process-wide recursive mutex guards it: every
 * operation here takes it itself, and code inside the library that changes
 * a State field and then publishes it holds it across both
 * (vexar::lockState() in vexar/admin_state.hpp), so that the first write
 * and later ones never interleave with a half-made change. Nothing that
 * holds it waits for the global lock. */
#ifndef VEXAR_VEXAR_ADMINSTATE_H
#define VEXAR_VEXAR_ADMINSTATE_H

#include "platform/dds_types.h"
#include "platform/export.h"
#include "platform/dds/listener.h"
#include "vexar/Vexar.h"

VEXAR_BEGIN_DECLS

struct QTV_VX_DDSEntities;

/* Publishes `self->state` on the registered instance. Returns 1 on success,
 * also when there is nothing to write yet (no State reader matched so far,
 * or the writer is disabled), and 0 on failure (printed). */
VEXAR_API DDS_Long QTV_VX_Vexar_writeState(QTV_VX_Vexar *self);

/* The State writer's on_publication_matched callback (listener data = the
 * logger): on the first match, registers the State instance and writes the
 * sample. Later matches write nothing: late readers get the sample from
 * the writer's history. */
VEXAR_API void QTV_VX_DDSEntities_stateWriterOnPublicationMatched(void *listener_data, DDS_DataWriter *writer,
                                                                  const DDS_PublicationMatchedStatus *status);

/* 1 once the first State sample has been written since the entities were
 * last created, else 0. The argument is not used. */
VEXAR_API DDS_Long QTV_VX_DDSEntities_hasInitialStateBeenSent(const struct QTV_VX_DDSEntities *entities);

/* Marks the running logger NONOPERATIONAL, stops its write thread's loop
 * and publishes the State (a failure is printed as a warning). Does
 * nothing when no logger runs. */
VEXAR_API void QTV_VX_Vexar_disable(void);

/* Copy the middleware logger's five category verbosities (in category
 * order PLATFORM .. API) or its print format into the sample; they do not
 * write it. */
VEXAR_API void QTV_VX_Vexar_updateQTVLoggerCategoryAndVerbosityState(QTV_VX_Vexar *self);
VEXAR_API void QTV_VX_Vexar_updateQTVLoggerPrintFormatState(QTV_VX_Vexar *self);

VEXAR_END_DECLS

#endif
