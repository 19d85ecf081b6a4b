/* Topics and content-filtered topics, and the topic description that both
 * are. A description names what a reader reads: a plain topic or a
 * filtered view of one. Writers write to plain topics only.
 *
 * Narrowing is checked: DDS_Topic_narrow of a content-filtered topic's
 * description gives null (not reported), and the other way round. */
#ifndef VEXAR_PLATFORM_TOPIC_H
#define VEXAR_PLATFORM_TOPIC_H

#include "platform/dds/entity.h"
#include "platform/dds/qos.h"
#include "platform/types/sequence.h"

VEXAR_BEGIN_DECLS

/* ---- Any topic description ---------------------------------------------- */

/* Borrowed strings that live as long as the description; null for null. */
VEXAR_API const char *DDS_TopicDescription_get_name(DDS_TopicDescription *self);
VEXAR_API const char *DDS_TopicDescription_get_type_name(DDS_TopicDescription *self);
VEXAR_API DDS_DomainParticipant *DDS_TopicDescription_get_participant(DDS_TopicDescription *self);

/* ---- Topics --------------------------------------------------------------- */

/* The topic behind `description`, or null when it is not a plain topic. */
VEXAR_API DDS_Topic *DDS_Topic_narrow(DDS_TopicDescription *description);
VEXAR_API DDS_TopicDescription *DDS_Topic_as_topicdescription(DDS_Topic *self);
VEXAR_API DDS_Entity *DDS_Topic_as_entity(DDS_Topic *self);
VEXAR_API DDS_ReturnCode_t DDS_Topic_get_qos(DDS_Topic *self, DDS_TopicQos *qos);

/* ---- Content-filtered topics ---------------------------------------------- */

/* The filtered topic behind `description`, or null when it is not one. */
VEXAR_API DDS_ContentFilteredTopic *DDS_ContentFilteredTopic_narrow(DDS_TopicDescription *description);
VEXAR_API DDS_TopicDescription *DDS_ContentFilteredTopic_as_topicdescription(DDS_ContentFilteredTopic *self);
VEXAR_API DDS_Topic *DDS_ContentFilteredTopic_get_related_topic(DDS_ContentFilteredTopic *self);
/* Borrowed; null for null. */
VEXAR_API const char *DDS_ContentFilteredTopic_get_filter_expression(DDS_ContentFilteredTopic *self);
/* Copies the parameters into `parameters` (grown as needed). */
VEXAR_API DDS_ReturnCode_t DDS_ContentFilteredTopic_get_expression_parameters(DDS_ContentFilteredTopic *self,
                                                                              DDS_StringSeq *parameters);

VEXAR_END_DECLS

#endif
