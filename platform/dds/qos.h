/* QoS records of the DDS entities: the policies Vexar chooses, with their
 * OMG names and defaults. Each entity record has
 *   _initialize (the OMG defaults, as its static _INITIALIZER),
 *   _finalize   (frees the strings and sequences that the record owns),
 *   _copy       (deep copy into an initialized record).
 * The bridge maps a record onto Cyclone's QoS when it creates the entity.
 * What Cyclone cannot honour is passed on where Cyclone accepts it (remote
 * applications see it in discovery) and reported through the middleware
 * logger, never dropped in silence:
 *   - presentation coherent_access (Cyclone has no coherent sets) and
 *     ordered_access beyond INSTANCE scope;
 *   - durability TRANSIENT and PERSISTENT (no durability service: late
 *     joiners get no history, and durability_service configures nothing);
 *   - resource_limits of a writer other than unlimited (Cyclone bounds a
 *     writer's unacknowledged data in bytes, by its configuration's
 *     Internal/Watermarks/WhcHigh, not in samples; a reliable KEEP_ALL
 *     writer still blocks, then times out, when it reaches that bound);
 *   - time_based_filter minimum_separation above zero (readers get every
 *     sample);
 *   - reader_data_lifecycle delays other than infinite (readers purge
 *     nothing by themselves);
 *   - transport_priority other than 0 (all data is sent alike);
 *   - wire_protocol ids other than DDS_RTPS_AUTO_ID (Cyclone derives them
 *     from the participant's GUID; the bridge reads them back from there).
 * Cyclone serves late TRANSIENT_LOCAL readers from its durability-service
 * history, not from the writer's: a TRANSIENT_LOCAL writer whose
 * durability_service is the default takes the writer's own history and
 * resource limits there, as the OMG semantics of TRANSIENT_LOCAL ask, and
 * DDS_DataWriter_get_qos still returns the durability_service that the
 * writer was created with. A durability_service of the application's own
 * (history or limits away from the defaults) is honoured as it stands: late
 * joiners get that bounded history, live readers every sample.
 * Two policies have no Cyclone counterpart and travel as entity properties,
 * readable again from the entity's QoS: protocol.vendor_specific_entity as
 * "vexar.vendor_specific_entity" = "true", and participant_name.role_name as
 * "vexar.role_name". participant_name.name is Cyclone's entity name. Cyclone
 * keeps no properties for topics, publishers and subscribers, so those
 * entities keep their protocol policy themselves. Every get_qos returns what
 * the entity was created with (wire_protocol excepted, see above): a name
 * left null reads back null, a protocol policy of an entity that Vexar did
 * not create (an application's Cyclone participant) reads back FALSE.
 *
 * A writer's batch policy maps onto Cyclone's write batching. Cyclone 0.10
 * has no per-writer setting: dds_write_set_batch sets the switch of every
 * domain in the process (per domain it is the configuration's
 * Internal/WriteBatch), and each Cyclone writer takes its domain's switch
 * when it is created. Creating a writer with batch.enable turns the switch
 * on first, for good, and says so once through the middleware logger.
 * From then on:
 *   - a batched writer packs consecutive samples into as few network packets
 *     as fit; DDS_DataWriter_flush sends what it holds at once: call it
 *     after a burst;
 *   - every other writer of this library flushes after each write, dispose
 *     and unregister, so it sends as before;
 *   - writers that the application creates directly with Cyclone are batched
 *     as well and need dds_write_flush after their writes. */
#ifndef VEXAR_PLATFORM_QOS_H
#define VEXAR_PLATFORM_QOS_H

#include "platform/dds_types.h"
#include "platform/export.h"
#include "platform/types/sequence.h"

VEXAR_BEGIN_DECLS

#define DDS_DURATION_ZERO_INITIALIZER \
    { 0, 0 }
#define DDS_DURATION_INFINITE_INITIALIZER \
    { DDS_DURATION_INFINITE_SEC, DDS_DURATION_INFINITE_NSEC }

typedef enum DDS_ReliabilityQosPolicyKind {
    DDS_BEST_EFFORT_RELIABILITY_QOS = 0,
    DDS_RELIABLE_RELIABILITY_QOS = 1
} DDS_ReliabilityQosPolicyKind;

typedef struct DDS_ReliabilityQosPolicy {
    DDS_ReliabilityQosPolicyKind kind;
    DDS_Duration_t max_blocking_time; /* how long a reliable write may wait for room */
} DDS_ReliabilityQosPolicy;

typedef enum DDS_DurabilityQosPolicyKind {
    DDS_VOLATILE_DURABILITY_QOS = 0,
    DDS_TRANSIENT_LOCAL_DURABILITY_QOS = 1,
    DDS_TRANSIENT_DURABILITY_QOS = 2,
    DDS_PERSISTENT_DURABILITY_QOS = 3
} DDS_DurabilityQosPolicyKind;

typedef struct DDS_DurabilityQosPolicy {
    DDS_DurabilityQosPolicyKind kind;
} DDS_DurabilityQosPolicy;

typedef enum DDS_HistoryQosPolicyKind {
    DDS_KEEP_LAST_HISTORY_QOS = 0,
    DDS_KEEP_ALL_HISTORY_QOS = 1
} DDS_HistoryQosPolicyKind;

typedef struct DDS_HistoryQosPolicy {
    DDS_HistoryQosPolicyKind kind;
    DDS_Long depth; /* samples kept per instance; at least 1 for KEEP_LAST, ignored for KEEP_ALL */
} DDS_HistoryQosPolicy;

typedef enum DDS_OwnershipQosPolicyKind {
    DDS_SHARED_OWNERSHIP_QOS = 0,
    DDS_EXCLUSIVE_OWNERSHIP_QOS = 1
} DDS_OwnershipQosPolicyKind;

typedef struct DDS_OwnershipQosPolicy {
    DDS_OwnershipQosPolicyKind kind;
} DDS_OwnershipQosPolicy;

typedef enum DDS_PresentationQosPolicyAccessScopeKind {
    DDS_INSTANCE_PRESENTATION_QOS = 0,
    DDS_TOPIC_PRESENTATION_QOS = 1,
    DDS_GROUP_PRESENTATION_QOS = 2
} DDS_PresentationQosPolicyAccessScopeKind;

typedef struct DDS_PresentationQosPolicy {
    DDS_PresentationQosPolicyAccessScopeKind access_scope;
    DDS_Boolean coherent_access;
    DDS_Boolean ordered_access;
} DDS_PresentationQosPolicy;

typedef struct DDS_LatencyBudgetQosPolicy {
    DDS_Duration_t duration;
} DDS_LatencyBudgetQosPolicy;

typedef struct DDS_DeadlineQosPolicy {
    DDS_Duration_t period;
} DDS_DeadlineQosPolicy;

typedef enum DDS_LivelinessQosPolicyKind {
    DDS_AUTOMATIC_LIVELINESS_QOS = 0,
    DDS_MANUAL_BY_PARTICIPANT_LIVELINESS_QOS = 1,
    DDS_MANUAL_BY_TOPIC_LIVELINESS_QOS = 2
} DDS_LivelinessQosPolicyKind;

typedef struct DDS_LivelinessQosPolicy {
    DDS_LivelinessQosPolicyKind kind;
    DDS_Duration_t lease_duration;
} DDS_LivelinessQosPolicy;

typedef enum DDS_DestinationOrderQosPolicyKind {
    DDS_BY_RECEPTION_TIMESTAMP_DESTINATIONORDER_QOS = 0,
    DDS_BY_SOURCE_TIMESTAMP_DESTINATIONORDER_QOS = 1
} DDS_DestinationOrderQosPolicyKind;

typedef struct DDS_DestinationOrderQosPolicy {
    DDS_DestinationOrderQosPolicyKind kind;
} DDS_DestinationOrderQosPolicy;

/* Bounds on what a reader or writer keeps: each a count of at least 1, or
 * DDS_LENGTH_UNLIMITED. max_samples may not be below
 * max_samples_per_instance, nor that below a KEEP_LAST history's depth. */
typedef struct DDS_ResourceLimitsQosPolicy {
    DDS_Long max_samples;
    DDS_Long max_instances;
    DDS_Long max_samples_per_instance;
} DDS_ResourceLimitsQosPolicy;

/* How long a sample stays valid after it was written. */
typedef struct DDS_LifespanQosPolicy {
    DDS_Duration_t duration;
} DDS_LifespanQosPolicy;

/* The history and limits of the service that keeps TRANSIENT and
 * PERSISTENT data for late joiners. */
typedef struct DDS_DurabilityServiceQosPolicy {
    DDS_Duration_t service_cleanup_delay;
    DDS_HistoryQosPolicyKind history_kind;
    DDS_Long history_depth;
    DDS_Long max_samples;
    DDS_Long max_instances;
    DDS_Long max_samples_per_instance;
} DDS_DurabilityServiceQosPolicy;

/* Readers and writers match only when their publisher and subscriber
 * share a partition name; no name at all is the default partition. The
 * sequence and its strings are owned by the record. */
typedef struct DDS_PartitionQosPolicy {
    DDS_StringSeq name;
} DDS_PartitionQosPolicy;

/* Bytes that the application attaches to an entity for remote applications
 * to read from discovery; owned by the record. */
typedef struct DDS_UserDataQosPolicy {
    DDS_OctetSeq value;
} DDS_UserDataQosPolicy;

typedef struct DDS_TopicDataQosPolicy {
    DDS_OctetSeq value;
} DDS_TopicDataQosPolicy;

typedef struct DDS_GroupDataQosPolicy {
    DDS_OctetSeq value;
} DDS_GroupDataQosPolicy;

/* Which writer of an EXCLUSIVE instance its readers hear: the strongest. */
typedef struct DDS_OwnershipStrengthQosPolicy {
    DDS_Long value;
} DDS_OwnershipStrengthQosPolicy;

typedef struct DDS_TransportPriorityQosPolicy {
    DDS_Long value;
} DDS_TransportPriorityQosPolicy;

typedef struct DDS_WriterDataLifecycleQosPolicy {
    DDS_Boolean autodispose_unregistered_instances; /* unregistering an instance disposes it too */
} DDS_WriterDataLifecycleQosPolicy;

/* How long a reader keeps the samples of an instance that has no writers
 * left, or that was disposed. */
typedef struct DDS_ReaderDataLifecycleQosPolicy {
    DDS_Duration_t autopurge_nowriter_samples_delay;
    DDS_Duration_t autopurge_disposed_samples_delay;
} DDS_ReaderDataLifecycleQosPolicy;

/* A reader wants at most one sample per instance in this time. */
typedef struct DDS_TimeBasedFilterQosPolicy {
    DDS_Duration_t minimum_separation;
} DDS_TimeBasedFilterQosPolicy;

/* Both strings are owned by the record: set them with DDS_String_dup
 * (platform/runtime/dds_string.h); _finalize frees them. Null means unset. */
typedef struct DDS_EntityNameQosPolicy {
    char *name;
    char *role_name;
} DDS_EntityNameQosPolicy;

typedef struct DDS_ProtocolQosPolicy {
    DDS_Boolean vendor_specific_entity; /* the entity belongs to the middleware's own tooling */
} DDS_ProtocolQosPolicy;

/* Lets the middleware choose the id. */
#define DDS_RTPS_AUTO_ID 0

/* The participant's RTPS identity: the words 0, 1 and 2 of its GUID prefix. */
typedef struct DDS_WireProtocolQosPolicy {
    DDS_Long rtps_host_id;
    DDS_Long rtps_app_id;
    DDS_Long rtps_instance_id;
} DDS_WireProtocolQosPolicy;

typedef struct DDS_DomainParticipantQos {
    DDS_UserDataQosPolicy user_data;
    DDS_EntityNameQosPolicy participant_name;
    DDS_WireProtocolQosPolicy wire_protocol;
    DDS_ProtocolQosPolicy protocol;
} DDS_DomainParticipantQos;

typedef struct DDS_PublisherQos {
    DDS_PresentationQosPolicy presentation;
    DDS_PartitionQosPolicy partition;
    DDS_GroupDataQosPolicy group_data;
    DDS_ProtocolQosPolicy protocol;
} DDS_PublisherQos;

typedef struct DDS_SubscriberQos {
    DDS_PresentationQosPolicy presentation;
    DDS_PartitionQosPolicy partition;
    DDS_GroupDataQosPolicy group_data;
    DDS_ProtocolQosPolicy protocol;
} DDS_SubscriberQos;

/* Topics, writers and readers start with the same policies, whose defaults
 * differ only in reliability (writers are reliable); each then adds its
 * own. */
typedef struct DDS_TopicQos {
    DDS_ReliabilityQosPolicy reliability;
    DDS_DurabilityQosPolicy durability;
    DDS_HistoryQosPolicy history;
    DDS_ResourceLimitsQosPolicy resource_limits;
    DDS_OwnershipQosPolicy ownership;
    DDS_DeadlineQosPolicy deadline;
    DDS_LatencyBudgetQosPolicy latency_budget;
    DDS_LivelinessQosPolicy liveliness;
    DDS_DestinationOrderQosPolicy destination_order;
    DDS_ProtocolQosPolicy protocol;
    DDS_DurabilityServiceQosPolicy durability_service;
    DDS_LifespanQosPolicy lifespan;
    DDS_TransportPriorityQosPolicy transport_priority;
    DDS_TopicDataQosPolicy topic_data;
} DDS_TopicQos;

/* Many small samples per network packet, sent on DDS_DataWriter_flush or
 * when a packet fills (see the top of this file). Off by default. */
typedef struct DDS_BatchQosPolicy {
    DDS_Boolean enable;
} DDS_BatchQosPolicy;

typedef struct DDS_DataWriterQos {
    DDS_ReliabilityQosPolicy reliability;
    DDS_DurabilityQosPolicy durability;
    DDS_HistoryQosPolicy history;
    DDS_ResourceLimitsQosPolicy resource_limits;
    DDS_OwnershipQosPolicy ownership;
    DDS_DeadlineQosPolicy deadline;
    DDS_LatencyBudgetQosPolicy latency_budget;
    DDS_LivelinessQosPolicy liveliness;
    DDS_DestinationOrderQosPolicy destination_order;
    DDS_ProtocolQosPolicy protocol;
    DDS_DurabilityServiceQosPolicy durability_service;
    DDS_LifespanQosPolicy lifespan;
    DDS_TransportPriorityQosPolicy transport_priority;
    DDS_OwnershipStrengthQosPolicy ownership_strength;
    DDS_WriterDataLifecycleQosPolicy writer_data_lifecycle;
    DDS_UserDataQosPolicy user_data;
    DDS_BatchQosPolicy batch;
} DDS_DataWriterQos;

typedef struct DDS_DataReaderQos {
    DDS_ReliabilityQosPolicy reliability;
    DDS_DurabilityQosPolicy durability;
    DDS_HistoryQosPolicy history;
    DDS_ResourceLimitsQosPolicy resource_limits;
    DDS_OwnershipQosPolicy ownership;
    DDS_DeadlineQosPolicy deadline;
    DDS_LatencyBudgetQosPolicy latency_budget;
    DDS_LivelinessQosPolicy liveliness;
    DDS_DestinationOrderQosPolicy destination_order;
    DDS_ProtocolQosPolicy protocol;
    DDS_TimeBasedFilterQosPolicy time_based_filter;
    DDS_ReaderDataLifecycleQosPolicy reader_data_lifecycle;
    DDS_UserDataQosPolicy user_data;
} DDS_DataReaderQos;

/* The OMG defaults. Writers are reliable, everything else best effort;
 * max_blocking_time is 100 ms either way. */
#define DDS_PRESENTATION_QOS_POLICY_DEFAULT \
    { DDS_INSTANCE_PRESENTATION_QOS, DDS_BOOLEAN_FALSE, DDS_BOOLEAN_FALSE }
#define DDS_PROTOCOL_QOS_POLICY_DEFAULT \
    { DDS_BOOLEAN_FALSE }
#define DDS_BATCH_QOS_POLICY_DEFAULT \
    { DDS_BOOLEAN_FALSE }
#define DDS_RESOURCE_LIMITS_QOS_POLICY_DEFAULT \
    { DDS_LENGTH_UNLIMITED, DDS_LENGTH_UNLIMITED, DDS_LENGTH_UNLIMITED }
#define DDS_LIFESPAN_QOS_POLICY_DEFAULT \
    { DDS_DURATION_INFINITE_INITIALIZER }
#define DDS_DURABILITY_SERVICE_QOS_POLICY_DEFAULT                                                                \
    {                                                                                                            \
        DDS_DURATION_ZERO_INITIALIZER, DDS_KEEP_LAST_HISTORY_QOS, 1, DDS_LENGTH_UNLIMITED, DDS_LENGTH_UNLIMITED, \
            DDS_LENGTH_UNLIMITED                                                                                 \
    }
/* No partition name (the default partition). */
#define DDS_PARTITION_QOS_POLICY_DEFAULT \
    { DDS_SEQUENCE_INITIALIZER }
/* No bytes: user data, topic data and group data alike. */
#define DDS_DATA_QOS_POLICY_DEFAULT \
    { DDS_SEQUENCE_INITIALIZER }
#define DDS_OWNERSHIP_STRENGTH_QOS_POLICY_DEFAULT \
    { 0 }
#define DDS_TRANSPORT_PRIORITY_QOS_POLICY_DEFAULT \
    { 0 }
#define DDS_WRITER_DATA_LIFECYCLE_QOS_POLICY_DEFAULT \
    { DDS_BOOLEAN_TRUE }
#define DDS_READER_DATA_LIFECYCLE_QOS_POLICY_DEFAULT \
    { DDS_DURATION_INFINITE_INITIALIZER, DDS_DURATION_INFINITE_INITIALIZER }
#define DDS_TIME_BASED_FILTER_QOS_POLICY_DEFAULT \
    { DDS_DURATION_ZERO_INITIALIZER }
#define DDS_ENDPOINT_QOS_POLICIES_DEFAULT(reliability_kind)                                                      \
    {(reliability_kind), {0, 100000000}}, {DDS_VOLATILE_DURABILITY_QOS}, {DDS_KEEP_LAST_HISTORY_QOS, 1},         \
        DDS_RESOURCE_LIMITS_QOS_POLICY_DEFAULT, {DDS_SHARED_OWNERSHIP_QOS}, {DDS_DURATION_INFINITE_INITIALIZER}, \
        {DDS_DURATION_ZERO_INITIALIZER}, {DDS_AUTOMATIC_LIVELINESS_QOS, DDS_DURATION_INFINITE_INITIALIZER},      \
        {DDS_BY_RECEPTION_TIMESTAMP_DESTINATIONORDER_QOS}, DDS_PROTOCOL_QOS_POLICY_DEFAULT

/* Static initializers: a record declared with one holds the defaults and
 * owns nothing, exactly as after _initialize. */
#define DDS_DomainParticipantQos_INITIALIZER                                                               \
    {                                                                                                      \
        DDS_DATA_QOS_POLICY_DEFAULT, {NULL, NULL}, {DDS_RTPS_AUTO_ID, DDS_RTPS_AUTO_ID, DDS_RTPS_AUTO_ID}, \
            DDS_PROTOCOL_QOS_POLICY_DEFAULT                                                                \
    }
#define DDS_PublisherQos_INITIALIZER                                                                        \
    {                                                                                                       \
        DDS_PRESENTATION_QOS_POLICY_DEFAULT, DDS_PARTITION_QOS_POLICY_DEFAULT, DDS_DATA_QOS_POLICY_DEFAULT, \
            DDS_PROTOCOL_QOS_POLICY_DEFAULT                                                                 \
    }
#define DDS_SubscriberQos_INITIALIZER                                                                       \
    {                                                                                                       \
        DDS_PRESENTATION_QOS_POLICY_DEFAULT, DDS_PARTITION_QOS_POLICY_DEFAULT, DDS_DATA_QOS_POLICY_DEFAULT, \
            DDS_PROTOCOL_QOS_POLICY_DEFAULT                                                                 \
    }
#define DDS_TopicQos_INITIALIZER                                                                                       \
    {                                                                                                                  \
        DDS_ENDPOINT_QOS_POLICIES_DEFAULT(DDS_BEST_EFFORT_RELIABILITY_QOS), DDS_DURABILITY_SERVICE_QOS_POLICY_DEFAULT, \
            DDS_LIFESPAN_QOS_POLICY_DEFAULT, DDS_TRANSPORT_PRIORITY_QOS_POLICY_DEFAULT, DDS_DATA_QOS_POLICY_DEFAULT    \
    }
#define DDS_DataWriterQos_INITIALIZER                                                                               \
    {                                                                                                               \
        DDS_ENDPOINT_QOS_POLICIES_DEFAULT(DDS_RELIABLE_RELIABILITY_QOS), DDS_DURABILITY_SERVICE_QOS_POLICY_DEFAULT, \
            DDS_LIFESPAN_QOS_POLICY_DEFAULT, DDS_TRANSPORT_PRIORITY_QOS_POLICY_DEFAULT,                             \
            DDS_OWNERSHIP_STRENGTH_QOS_POLICY_DEFAULT, DDS_WRITER_DATA_LIFECYCLE_QOS_POLICY_DEFAULT,                \
            DDS_DATA_QOS_POLICY_DEFAULT, DDS_BATCH_QOS_POLICY_DEFAULT                                               \
    }
#define DDS_DataReaderQos_INITIALIZER                                                                                 \
    {                                                                                                                 \
        DDS_ENDPOINT_QOS_POLICIES_DEFAULT(DDS_BEST_EFFORT_RELIABILITY_QOS), DDS_TIME_BASED_FILTER_QOS_POLICY_DEFAULT, \
            DDS_READER_DATA_LIFECYCLE_QOS_POLICY_DEFAULT, DDS_DATA_QOS_POLICY_DEFAULT                                 \
    }

/* Every operation returns DDS_RETCODE_OK, DDS_RETCODE_BAD_PARAMETER for a
 * null argument (reported), or DDS_RETCODE_OUT_OF_RESOURCES when a copy of
 * a string or sequence fails (reported; dst is then left as it was).
 * _initialize overwrites without freeing: use it on fresh memory or after
 * _finalize. _finalize frees the owned strings and sequences (a sequence on
 * loan goes back to its lender untouched) and leaves the defaults.
 * _copy frees what dst owned first; dst == src is allowed. */
VEXAR_API DDS_ReturnCode_t DDS_DomainParticipantQos_initialize(DDS_DomainParticipantQos *self);
VEXAR_API DDS_ReturnCode_t DDS_DomainParticipantQos_finalize(DDS_DomainParticipantQos *self);
VEXAR_API DDS_ReturnCode_t DDS_DomainParticipantQos_copy(DDS_DomainParticipantQos *dst,
                                                         const DDS_DomainParticipantQos *src);

VEXAR_API DDS_ReturnCode_t DDS_PublisherQos_initialize(DDS_PublisherQos *self);
VEXAR_API DDS_ReturnCode_t DDS_PublisherQos_finalize(DDS_PublisherQos *self);
VEXAR_API DDS_ReturnCode_t DDS_PublisherQos_copy(DDS_PublisherQos *dst, const DDS_PublisherQos *src);

VEXAR_API DDS_ReturnCode_t DDS_SubscriberQos_initialize(DDS_SubscriberQos *self);
VEXAR_API DDS_ReturnCode_t DDS_SubscriberQos_finalize(DDS_SubscriberQos *self);
VEXAR_API DDS_ReturnCode_t DDS_SubscriberQos_copy(DDS_SubscriberQos *dst, const DDS_SubscriberQos *src);

VEXAR_API DDS_ReturnCode_t DDS_TopicQos_initialize(DDS_TopicQos *self);
VEXAR_API DDS_ReturnCode_t DDS_TopicQos_finalize(DDS_TopicQos *self);
VEXAR_API DDS_ReturnCode_t DDS_TopicQos_copy(DDS_TopicQos *dst, const DDS_TopicQos *src);

VEXAR_API DDS_ReturnCode_t DDS_DataWriterQos_initialize(DDS_DataWriterQos *self);
VEXAR_API DDS_ReturnCode_t DDS_DataWriterQos_finalize(DDS_DataWriterQos *self);
VEXAR_API DDS_ReturnCode_t DDS_DataWriterQos_copy(DDS_DataWriterQos *dst, const DDS_DataWriterQos *src);

VEXAR_API DDS_ReturnCode_t DDS_DataReaderQos_initialize(DDS_DataReaderQos *self);
VEXAR_API DDS_ReturnCode_t DDS_DataReaderQos_finalize(DDS_DataReaderQos *self);
VEXAR_API DDS_ReturnCode_t DDS_DataReaderQos_copy(DDS_DataReaderQos *dst, const DDS_DataReaderQos *src);

VEXAR_END_DECLS

#endif
