/* What a reader tells about each sample it returns, and the sequence of
 * them that read and take fill alongside the data. */
#ifndef VEXAR_PLATFORM_SAMPLE_INFO_H
#define VEXAR_PLATFORM_SAMPLE_INFO_H

#include "platform/dds/entity.h"
#include "platform/types/sequence.h"

VEXAR_BEGIN_DECLS

typedef struct DDS_SampleInfo {
    DDS_SampleStateKind sample_state;        /* DDS_READ_ / DDS_NOT_READ_SAMPLE_STATE */
    DDS_ViewStateKind view_state;            /* DDS_NEW_ / DDS_NOT_NEW_VIEW_STATE */
    DDS_InstanceStateKind instance_state;    /* alive, disposed, or without writers */
    DDS_Time_t source_timestamp;             /* the writer's time of the write */
    DDS_InstanceHandle_t instance_handle;    /* the instance, as this reader knows it */
    DDS_InstanceHandle_t publication_handle; /* the writer that wrote the sample */
    DDS_Long disposed_generation_count;
    DDS_Long no_writers_generation_count;
    DDS_Long sample_rank;     /* samples of the instance that follow in this result */
    DDS_Long generation_rank; /* generations of the instance since this sample */
    DDS_Long absolute_generation_rank;
    /* False for a sample that only reports a change of instance state
     * (dispose, unregister): then only the key members of the data hold
     * values. */
    DDS_Boolean valid_data;
} DDS_SampleInfo;

/* Elements are plain records, copied by value. */
OBLX_SEQUENCE_DECLARE(DDS_SampleInfoSeq, DDS_SampleInfo);

VEXAR_END_DECLS

#endif
