/* Remote commands: requests on "qtv/vexar/administration/command_request"
 * addressed to this application (the reader sits on the content-filtered
 * topic, so requests for other applications never arrive) change the
 * filter level or the middleware logger's verbosity or print format, and
 * each is answered once on "qtv/vexar/administration/command_response".
 * They exist only with remote administration on. */
#ifndef VEXAR_VEXAR_REMOTECOMMANDS_H
#define VEXAR_VEXAR_REMOTECOMMANDS_H

#include "platform/dds/data_reader.h"
#include "platform/export.h"
#include "type/vexar.h"
#include "vexar/Vexar.h"

VEXAR_BEGIN_DECLS

/* The CommandRequest reader's on_data_available callback (listener data =
 * the logger). Acts only while the logger is OPERATIONAL; before that the
 * requests stay in the reader. Takes every request and applies each one
 * that carries data. */
VEXAR_API void QTV_VX_Vexar_CommandRequestListener_on_data_available(void *listener_data, DDS_DataReader *reader);

/* Applies one request and writes its response: OK when applied,
 * NOT_SUPPORTED for an unknown command kind, ERROR (with a message) when
 * the filter level was refused. */
VEXAR_API void QTV_VX_Vexar_processCommand(QTV_VX_Vexar *self, const QTV_VX_ADMIN_CommandRequest *request);

VEXAR_END_DECLS

#endif
