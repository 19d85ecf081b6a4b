// The C operations of each topic type gathered under one template, so that
// C++ code written once for all five types (the command-line tool, tests,
// benchmarks) calls the right typed functions. Internal: not installed.
#pragma once

#include "type/vexarPlugin.h"
#include "type/vexarSupport.h"
#include "vexar/DDSEntities.h"
#include "vexar/Statistics.h"

namespace vexar {

template <class Sample>
struct TopicTraits;

#define VEXAR_TOPIC_TRAITS(Sample, topic, registered)                           \
    template <>                                                                 \
    struct TopicTraits<Sample> {                                                \
        using Seq = Sample##Seq;                                                \
        using DataReader = Sample##DataReader;                                  \
        using DataWriter = Sample##DataWriter;                                  \
        static constexpr const char *topicName = topic;                         \
        static constexpr const char *registeredTypeName = registered;           \
        static constexpr auto pluginNew = Sample##Plugin_new;                   \
        static constexpr auto pluginDelete = Sample##Plugin_delete;             \
        static constexpr auto registerType = Sample##TypeSupport_register_type; \
        static constexpr auto createData = Sample##TypeSupport_create_data;     \
        static constexpr auto deleteData = Sample##TypeSupport_delete_data;     \
        static constexpr auto initialize = Sample##_initialize;                 \
        static constexpr auto finalize = Sample##_finalize;                     \
        static constexpr auto narrowWriter = Sample##DataWriter_narrow;         \
        static constexpr auto asDataWriter = Sample##DataWriter_as_datawriter;  \
        static constexpr auto write = Sample##DataWriter_write;                 \
        static constexpr auto narrowReader = Sample##DataReader_narrow;         \
        static constexpr auto read = Sample##DataReader_read;                   \
        static constexpr auto take = Sample##DataReader_take;                   \
        static constexpr auto returnLoan = Sample##DataReader_return_loan;      \
        static constexpr auto length = Sample##Seq_get_length;                  \
        static constexpr auto maximum = Sample##Seq_get_maximum;                \
        static constexpr auto hasOwnership = Sample##Seq_has_ownership;         \
        static constexpr auto setMaximum = Sample##Seq_set_maximum;             \
        static constexpr auto element = Sample##Seq_get_reference;              \
        static constexpr auto finalizeSeq = Sample##Seq_finalize;               \
    }

VEXAR_TOPIC_TRAITS(QTV_VX_LogMessage, QTV_VX_LOG_TOPIC_NAME, QTV_VX_LOG_MESSAGE_REGISTERED_TYPE_NAME);
VEXAR_TOPIC_TRAITS(QTV_VX_ADMIN_State, QTV_VX_STATE_TOPIC_NAME, QTV_VX_STATE_REGISTERED_TYPE_NAME);
VEXAR_TOPIC_TRAITS(QTV_VX_ADMIN_CommandRequest, QTV_VX_COMMAND_REQUEST_TOPIC_NAME,
                   QTV_VX_COMMAND_REQUEST_REGISTERED_TYPE_NAME);
VEXAR_TOPIC_TRAITS(QTV_VX_ADMIN_CommandResponse, QTV_VX_COMMAND_RESPONSE_TOPIC_NAME,
                   QTV_VX_COMMAND_RESPONSE_REGISTERED_TYPE_NAME);
VEXAR_TOPIC_TRAITS(QTV_VX_ADMIN_Statistics, QTV_VX_STATISTICS_TOPIC_NAME, QTV_VX_STATISTICS_REGISTERED_TYPE_NAME);

#undef VEXAR_TOPIC_TRAITS

}  // namespace vexar
