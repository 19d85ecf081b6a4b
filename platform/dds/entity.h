/* What every DDS entity shares: the opaque entity records, instance
 * handles, status masks, sample/view/instance state masks and lengths.
 *
 * Each entity (participant, topic, content-filtered topic, publisher,
 * subscriber, writer, reader, read condition) is a small record of the DDS
 * bridge around one Cyclone DDS entity; the records are opaque to
 * applications. An entity is enabled from its creation: Cyclone creates
 * enabled entities, so there is no separate enable step.
 *
 * The masks carry the OMG values. Cyclone's C API uses several of the same
 * names with other values; in a file that includes both Cyclone's dds.h and
 * this header, the header included last decides. Keep code that uses
 * Cyclone's API and code that uses this one in separate files. */
#ifndef VEXAR_PLATFORM_ENTITY_H
#define VEXAR_PLATFORM_ENTITY_H

#include "platform/dds_types.h"
#include "platform/export.h"

VEXAR_BEGIN_DECLS

/* ---- Entity records --------------------------------------------------- */

typedef struct DDS_EntityImpl DDS_Entity;
typedef struct DDS_DomainParticipantFactoryImpl DDS_DomainParticipantFactory;
typedef struct DDS_TopicDescriptionImpl DDS_TopicDescription;
typedef struct DDS_TopicImpl DDS_Topic;
typedef struct DDS_ContentFilteredTopicImpl DDS_ContentFilteredTopic;
typedef struct DDS_PublisherImpl DDS_Publisher;
typedef struct DDS_SubscriberImpl DDS_Subscriber;
typedef struct DDS_DataWriterImpl DDS_DataWriter;
typedef struct DDS_DataReaderImpl DDS_DataReader;
typedef struct DDS_ReadConditionImpl DDS_ReadCondition;

typedef DDS_Long DDS_DomainId_t;

/* ---- Instance handles ------------------------------------------------- */

/* Cyclone's 64-bit instance handle; 0 names no instance. */
typedef DDS_UnsignedLongLong DDS_InstanceHandle_t;
#define DDS_HANDLE_NIL 0

/* An entity's 16-byte RTPS GUID: 12 bytes of participant prefix and the
 * entity id, in network byte order. */
typedef struct DDS_GUID_t {
    DDS_Octet value[16];
} DDS_GUID_t;

/* ---- Status masks (OMG bit values) ------------------------------------ */

typedef DDS_UnsignedLong DDS_StatusMask;
typedef DDS_UnsignedLong DDS_StatusKind;

#undef DDS_INCONSISTENT_TOPIC_STATUS
#undef DDS_OFFERED_DEADLINE_MISSED_STATUS
#undef DDS_REQUESTED_DEADLINE_MISSED_STATUS
#undef DDS_OFFERED_INCOMPATIBLE_QOS_STATUS
#undef DDS_REQUESTED_INCOMPATIBLE_QOS_STATUS
#undef DDS_SAMPLE_LOST_STATUS
#undef DDS_SAMPLE_REJECTED_STATUS
#undef DDS_DATA_ON_READERS_STATUS
#undef DDS_DATA_AVAILABLE_STATUS
#undef DDS_LIVELINESS_LOST_STATUS
#undef DDS_LIVELINESS_CHANGED_STATUS
#undef DDS_PUBLICATION_MATCHED_STATUS
#undef DDS_SUBSCRIPTION_MATCHED_STATUS

#define DDS_INCONSISTENT_TOPIC_STATUS ((DDS_StatusKind)1u << 0)
#define DDS_OFFERED_DEADLINE_MISSED_STATUS ((DDS_StatusKind)1u << 1)
#define DDS_REQUESTED_DEADLINE_MISSED_STATUS ((DDS_StatusKind)1u << 2)
#define DDS_OFFERED_INCOMPATIBLE_QOS_STATUS ((DDS_StatusKind)1u << 5)
#define DDS_REQUESTED_INCOMPATIBLE_QOS_STATUS ((DDS_StatusKind)1u << 6)
#define DDS_SAMPLE_LOST_STATUS ((DDS_StatusKind)1u << 7)
#define DDS_SAMPLE_REJECTED_STATUS ((DDS_StatusKind)1u << 8)
#define DDS_DATA_ON_READERS_STATUS ((DDS_StatusKind)1u << 9)
#define DDS_DATA_AVAILABLE_STATUS ((DDS_StatusKind)1u << 10)
#define DDS_LIVELINESS_LOST_STATUS ((DDS_StatusKind)1u << 11)
#define DDS_LIVELINESS_CHANGED_STATUS ((DDS_StatusKind)1u << 12)
#define DDS_PUBLICATION_MATCHED_STATUS ((DDS_StatusKind)1u << 13)
#define DDS_SUBSCRIPTION_MATCHED_STATUS ((DDS_StatusKind)1u << 14)

#define DDS_STATUS_MASK_NONE ((DDS_StatusMask)0u)
#define DDS_STATUS_MASK_ALL ((DDS_StatusMask)0xffffffffu)

/* ---- Sample, view and instance states (OMG bit values) ---------------- */

typedef DDS_UnsignedLong DDS_SampleStateKind;
typedef DDS_UnsignedLong DDS_SampleStateMask;
typedef DDS_UnsignedLong DDS_ViewStateKind;
typedef DDS_UnsignedLong DDS_ViewStateMask;
typedef DDS_UnsignedLong DDS_InstanceStateKind;
typedef DDS_UnsignedLong DDS_InstanceStateMask;

#undef DDS_READ_SAMPLE_STATE
#undef DDS_NOT_READ_SAMPLE_STATE
#undef DDS_ANY_SAMPLE_STATE
#undef DDS_NEW_VIEW_STATE
#undef DDS_NOT_NEW_VIEW_STATE
#undef DDS_ANY_VIEW_STATE
#undef DDS_ALIVE_INSTANCE_STATE
#undef DDS_NOT_ALIVE_DISPOSED_INSTANCE_STATE
#undef DDS_NOT_ALIVE_NO_WRITERS_INSTANCE_STATE
#undef DDS_NOT_ALIVE_INSTANCE_STATE
#undef DDS_ANY_INSTANCE_STATE

#define DDS_READ_SAMPLE_STATE ((DDS_SampleStateKind)0x0001u)     /* read or taken before */
#define DDS_NOT_READ_SAMPLE_STATE ((DDS_SampleStateKind)0x0002u) /* never read */
#define DDS_ANY_SAMPLE_STATE ((DDS_SampleStateMask)0xffffu)

#define DDS_NEW_VIEW_STATE ((DDS_ViewStateKind)0x0001u) /* first sample of a new instance */
#define DDS_NOT_NEW_VIEW_STATE ((DDS_ViewStateKind)0x0002u)
#define DDS_ANY_VIEW_STATE ((DDS_ViewStateMask)0xffffu)

#define DDS_ALIVE_INSTANCE_STATE ((DDS_InstanceStateKind)0x0001u)
#define DDS_NOT_ALIVE_DISPOSED_INSTANCE_STATE ((DDS_InstanceStateKind)0x0002u)
#define DDS_NOT_ALIVE_NO_WRITERS_INSTANCE_STATE ((DDS_InstanceStateKind)0x0004u)
#define DDS_NOT_ALIVE_INSTANCE_STATE ((DDS_InstanceStateMask)0x0006u)
#define DDS_ANY_INSTANCE_STATE ((DDS_InstanceStateMask)0xffffu)

/* ---- Operations on any entity ----------------------------------------- */

/* True for a live entity: Cyclone entities are enabled at creation. False,
 * with a report, for null. */
VEXAR_API DDS_Boolean DDS_Entity_is_enabled(const DDS_Entity *self);

/* The entity's own instance handle (Cyclone's), which matched-status
 * records and sample infos use to name it; DDS_HANDLE_NIL for null. */
VEXAR_API DDS_InstanceHandle_t DDS_Entity_get_instance_handle(const DDS_Entity *self);

/* Whether `handle` names no instance. */
VEXAR_API DDS_Boolean DDS_InstanceHandle_is_nil(DDS_InstanceHandle_t handle);

VEXAR_END_DECLS

#endif
