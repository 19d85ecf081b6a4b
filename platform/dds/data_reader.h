/* The data reader: its listener and status, read conditions, and the
 * untyped read, take and loan operations that the typed readers
 * (<Type>DataReader_*) forward to.
 *
 * Read or take, and loans. The caller describes its data sequence by its
 * length, maximum, ownership and contiguous buffer, and the size of one
 * element; `info_seq` receives one DDS_SampleInfo per sample.
 *  - An owning sequence of maximum 0 (empty, no buffer) with the loan flag
 *    set receives the reader's own samples on loan: `*received_data` points
 *    to an array of `*data_count` sample pointers, `*is_loan` stays true and
 *    `info_seq` (which must then be owning with maximum 0) is loaned the
 *    infos. Both must be given back with DDS_DataReader_return_loan_untypedI
 *    before they are reused, on this reader. Any number of loans may be out
 *    at once.
 *  - An owning sequence with a buffer (maximum > 0) receives copies: at most
 *    maximum samples are decoded straight into its initialized elements,
 *    `*is_loan` becomes false, `*data_count` says how many, and `info_seq`
 *    (owning) grows to hold their infos. The caller sets the data
 *    sequence's length.
 *  - A sequence that holds a loan is refused (DDS_RETCODE_PRECONDITION_NOT_MET).
 * `max_samples` bounds the result; 0 is refused (DDS_RETCODE_BAD_PARAMETER).
 * DDS_LENGTH_UNLIMITED means as many as fit (copies), or on loan at most
 * OBLX_DATAREADER_MAX_LOANED_SAMPLES: the same ceiling bounds every loan,
 * since each loaned sample holds its type's full bounds (a log message
 * about 4.6 KB). So a loaned read or take may return fewer samples than
 * the reader holds, where OMG asks for all of them (within the reader's
 * own resource limits): a reader that lets samples wait, or is woken once
 * for many, takes again until DDS_RETCODE_NO_DATA (DATA_AVAILABLE is not
 * raised again for samples already there). A loan that grew for a burst
 * shrinks back when a later take needed far less. A group of states that
 * selects nothing (a zero mask) matches no sample. The result is
 * DDS_RETCODE_OK, or DDS_RETCODE_NO_DATA when no sample matched (nothing is
 * then on loan and info_seq's length is 0).
 *
 * Samples are returned grouped by instance, oldest first within one. */
#ifndef VEXAR_PLATFORM_DATA_READER_H
#define VEXAR_PLATFORM_DATA_READER_H

#include "platform/dds/entity.h"
#include "platform/dds/listener.h"
#include "platform/dds/qos.h"
#include "platform/dds/sample_info.h"

VEXAR_BEGIN_DECLS

VEXAR_API DDS_Entity *DDS_DataReader_as_entity(DDS_DataReader *self);
/* The description the reader was created on (a topic or filtered topic). */
VEXAR_API DDS_TopicDescription *DDS_DataReader_get_topicdescription(DDS_DataReader *self);
VEXAR_API DDS_Subscriber *DDS_DataReader_get_subscriber(DDS_DataReader *self);
VEXAR_API DDS_ReturnCode_t DDS_DataReader_get_qos(DDS_DataReader *self, DDS_DataReaderQos *qos);

/* As DDS_DataWriter_set_listener / _get_listener. */
VEXAR_API DDS_ReturnCode_t DDS_DataReader_set_listener(DDS_DataReader *self, const DDS_DataReaderListener *listener,
                                                       DDS_StatusMask mask);
VEXAR_API DDS_DataReaderListener DDS_DataReader_get_listener(DDS_DataReader *self);

VEXAR_API DDS_ReturnCode_t DDS_DataReader_get_subscription_matched_status(DDS_DataReader *self,
                                                                          DDS_SubscriptionMatchedStatus *status);

/* Samples lost on their way to the reader (reading resets the _change
 * field). Cyclone 0.10 counts only samples that their instance refused
 * (with source-time ordering, one older than the instance's latest), not
 * samples that a writer gave up before they reached the reader: a reader
 * that must notice every loss numbers its samples itself. */
VEXAR_API DDS_ReturnCode_t DDS_DataReader_get_sample_lost_status(DDS_DataReader *self, DDS_SampleLostStatus *status);

/* Whether the reader's type is the one named `type_name` (see
 * DDS_DataWriter_compare_typeI). */
VEXAR_API DDS_Boolean DDS_DataReader_compare_typeI(DDS_DataReader *self, const char *type_name);

/* ---- Read conditions ------------------------------------------------------- */

/* A condition that selects the reader's samples in the given states; read
 * and take through it with the _w_condition forms. Deleted with the reader
 * or by delete_readcondition. */
VEXAR_API DDS_ReadCondition *DDS_DataReader_create_readcondition(DDS_DataReader *self,
                                                                 DDS_SampleStateMask sample_states,
                                                                 DDS_ViewStateMask view_states,
                                                                 DDS_InstanceStateMask instance_states);
VEXAR_API DDS_ReturnCode_t DDS_DataReader_delete_readcondition(DDS_DataReader *self, DDS_ReadCondition *condition);

/* ---- Untyped read and take ------------------------------------------------- *
 * The first eleven arguments are the same for every form:
 *   is_loan            in: whether a loan is acceptable; out: whether one was made
 *   received_data      out: the lent sample pointers (loan only)
 *   data_count         out: the number of samples
 *   info_seq           the infos, as described above
 *   data_seq_len, data_seq_max_len, data_seq_has_ownership,
 *   data_seq_contiguous_buffer   the caller's data sequence
 *   data_size          the size of one sample of the type
 *   max_samples        at most this many, or DDS_LENGTH_UNLIMITED
 * then the form's own selection, then `take` (true: remove the samples from
 * the reader; false: read, leaving them marked DDS_READ_SAMPLE_STATE). */

/* The most samples that one loaned read or take returns (about 4.7 MB of
 * log messages). */
#define OBLX_DATAREADER_MAX_LOANED_SAMPLES 1024

#define OBLX_DATAREADER_READ_OR_TAKE_COMMON_ARGS                                             \
    DDS_DataReader *self, DDS_Boolean *is_loan, void ***received_data, DDS_Long *data_count, \
        DDS_SampleInfoSeq *info_seq, DDS_Long data_seq_len, DDS_Long data_seq_max_len,       \
        DDS_Boolean data_seq_has_ownership, void *data_seq_contiguous_buffer, DDS_Long data_size, DDS_Long max_samples

/* Samples in the given states. */
VEXAR_API DDS_ReturnCode_t DDS_DataReader_read_or_take_untypedI(OBLX_DATAREADER_READ_OR_TAKE_COMMON_ARGS,
                                                                DDS_SampleStateMask sample_states,
                                                                DDS_ViewStateMask view_states,
                                                                DDS_InstanceStateMask instance_states,
                                                                DDS_Boolean take);
/* Samples that `condition` (of this reader) selects. */
VEXAR_API DDS_ReturnCode_t DDS_DataReader_read_or_take_w_condition_untypedI(OBLX_DATAREADER_READ_OR_TAKE_COMMON_ARGS,
                                                                            DDS_ReadCondition *condition,
                                                                            DDS_Boolean take);
/* Samples of one instance; `handle` must not be DDS_HANDLE_NIL. */
VEXAR_API DDS_ReturnCode_t DDS_DataReader_read_or_take_instance_untypedI(
    OBLX_DATAREADER_READ_OR_TAKE_COMMON_ARGS, DDS_InstanceHandle_t handle, DDS_SampleStateMask sample_states,
    DDS_ViewStateMask view_states, DDS_InstanceStateMask instance_states, DDS_Boolean take);
VEXAR_API DDS_ReturnCode_t DDS_DataReader_read_or_take_instance_w_condition_untypedI(
    OBLX_DATAREADER_READ_OR_TAKE_COMMON_ARGS, DDS_InstanceHandle_t handle, DDS_ReadCondition *condition,
    DDS_Boolean take);
/* Samples of the instance with the least handle above `previous_handle`
 * (DDS_HANDLE_NIL: of all) among those with samples in the given states or
 * that `condition` selects; DDS_RETCODE_NO_DATA when no such instance
 * follows. Instances passed over are not read: their samples keep their
 * states. Handles are Cyclone's, ordered as unsigned 64-bit numbers. */
VEXAR_API DDS_ReturnCode_t DDS_DataReader_read_or_take_next_instance_untypedI(
    OBLX_DATAREADER_READ_OR_TAKE_COMMON_ARGS, DDS_InstanceHandle_t previous_handle, DDS_SampleStateMask sample_states,
    DDS_ViewStateMask view_states, DDS_InstanceStateMask instance_states, DDS_Boolean take);
VEXAR_API DDS_ReturnCode_t DDS_DataReader_read_or_take_next_instance_w_condition_untypedI(
    OBLX_DATAREADER_READ_OR_TAKE_COMMON_ARGS, DDS_InstanceHandle_t previous_handle, DDS_ReadCondition *condition,
    DDS_Boolean take);

/* The next sample not yet read, decoded into `received_data` (an initialized
 * sample of the type), with its info. DDS_RETCODE_NO_DATA when there is none. */
VEXAR_API DDS_ReturnCode_t DDS_DataReader_read_or_take_next_sample_untypedI(DDS_DataReader *self, void *received_data,
                                                                            DDS_SampleInfo *sample_info,
                                                                            DDS_Boolean take);

/* Gives back a loan: `received_data` is the pointer array that read or take
 * returned, `data_count` its count (ignored: the reader knows it) and
 * `info_seq` the info sequence loaned with it, which is left empty and
 * owning. DDS_RETCODE_PRECONDITION_NOT_MET when the array is not a loan of
 * this reader. */
VEXAR_API DDS_ReturnCode_t DDS_DataReader_return_loan_untypedI(DDS_DataReader *self, void **received_data,
                                                               DDS_Long data_count, DDS_SampleInfoSeq *info_seq);

/* As DDS_DataWriter_get_key_value_untypedI / _lookup_instance_untypedI, for
 * the instances this reader knows. */
VEXAR_API DDS_ReturnCode_t DDS_DataReader_get_key_value_untypedI(DDS_DataReader *self, void *key_holder,
                                                                 DDS_InstanceHandle_t handle);
VEXAR_API DDS_InstanceHandle_t DDS_DataReader_lookup_instance_untypedI(DDS_DataReader *self, const void *key_holder);

/* Cyclone cannot inject a sample into a reader as if the remote writer
 * `remote_writer_guid` had sent it: always DDS_RETCODE_UNSUPPORTED, reported. */
VEXAR_API DDS_ReturnCode_t DDS_DataReader_add_sample_to_remote_writer_queue_untypedI(
    DDS_DataReader *self, const void *sample, const DDS_GUID_t *remote_writer_guid);

VEXAR_END_DECLS

#endif
