// Topics and content-filtered topics on Cyclone.
//
// A topic is a Cyclone topic made from the registered plugin's sertype. A
// content-filtered topic is a second Cyclone topic entity with the same
// name, sertype and QoS, whose topic filter runs the compiled expression on
// every sample that reaches a reader created on it. Cyclone filters per
// topic entity, so readers of the plain topic see everything; writers always
// write through the plain topic (a writer on a filtered entity would drop
// what it writes).
#include "platform/dds/entity.hpp"

#include <string_view>

#include "platform/dds/cyclone_sertype.hpp"
#include "platform/dds/factory_profiles.hpp"
#include "platform/runtime/dds_string.h"
#include "platform/dds/qos_cyclone.hpp"

#include <dds/ddsi/ddsi_sertype.h>

namespace vexar::dds {
namespace {

// A Cyclone topic entity of `type` named `name`; the reference on the new
// sertype passes to Cyclone on success, and `used` is the sertype that
// Cyclone chose (an equal one it knew already, or the new one).
dds_entity_t createCycloneTopic(dds_entity_t participant, const char *name, const TypeRegistration &type,
                                const std::string &typeName, const dds_qos_t *qos, const ddsi_sertype *&used,
                                const char *context) noexcept {
    ddsi_sertype *sertype = createSertype(&type.plugin, typeName.c_str());
    if (sertype == nullptr) {
        OBLX_Report_failure(context, "cannot bridge the registered type");
        return DDS_RETCODE_ERROR;
    }
    dds_entity_t topic = dds_create_topic_sertype(participant, name, &sertype, qos, nullptr, nullptr);
    if (topic < 0) {
        ddsi_sertype_unref(sertype);
        reportCycloneFailure(context, "dds_create_topic_sertype", topic);
    }
    used = sertype;
    return topic;
}

DDS_Topic *createTopic(DDS_DomainParticipantImpl &participant, const char *name, const char *typeName,
                       const DDS_TopicQos &qos, const char *context) {
    CycloneQos cycloneQos = toCyclone(qos, context);
    if (cycloneQos == nullptr) return nullptr;
    std::lock_guard lock(participant.mutex);
    if (participant.findDescription(name) != nullptr) {
        OBLX_Report_failure(context, "a topic of that name exists already");
        return nullptr;
    }
    auto type = participant.types.find(typeName);
    if (type == participant.types.end()) {
        OBLX_Report_failure(context, "the type is not registered");
        return nullptr;
    }
    auto topic = std::make_unique<DDS_TopicImpl>(EntityKind::topic, 0, &participant, name, type->second, typeName);
    topic->handle = createCycloneTopic(participant.handle, name, type->second, topic->typeName, cycloneQos.get(),
                                       topic->sertype, context);
    if (topic->handle < 0) return nullptr;
    topic->protocol = qos.protocol;
    ++type->second.topics;
    participant.topics.push_back(std::move(topic));
    return participant.topics.back().get();
}

DDS_ReturnCode_t deleteTopic(DDS_DomainParticipantImpl &participant, DDS_TopicImpl *topic, const char *context) {
    return deleteUnused(
        participant, participant.topics, topic,
        [](const DDS_TopicImpl &used) { return used.writers > 0 || used.readers > 0 || used.filteredViews > 0; },
        [](DDS_TopicImpl &unlinked) { --unlinked.type.topics; }, context);
}

// ---- content filters ----------------------------------------------------

bool passesFilter(const void *sample, void *filteredTopic) {
    return static_cast<const DDS_ContentFilteredTopicImpl *>(filteredTopic)->filter.matches(sample);
}

std::vector<std::string> parametersOf(const DDS_StringSeq *sequence) {
    std::vector<std::string> parameters;
    if (sequence == nullptr) return parameters;
    auto *mutableSequence = const_cast<DDS_StringSeq *>(sequence);  // the getters do not modify
    DDS_Long length = DDS_StringSeq_get_length(mutableSequence);
    for (DDS_Long i = 0; i < length; ++i) {
        const char *parameter = DDS_StringSeq_get(mutableSequence, i);
        parameters.emplace_back(parameter != nullptr ? parameter : "");
    }
    return parameters;
}

std::optional<filter::ContentFilter> compileFilter(const char *expression, const DDS_StringSeq *parameters,
                                                   const TypeRegistration &type, const char *context) {
    filter::ContentFilter::Compiled compiled =
        filter::ContentFilter::compile(expression, parametersOf(parameters), type.plugin.type_code);
    if (auto *error = std::get_if<filter::FilterError>(&compiled)) {
        std::string text = "filter expression \"" + std::string(expression) + "\": " + error->describe();
        OBLX_Report_failure(context, text.c_str());
        return std::nullopt;
    }
    return std::move(std::get<filter::ContentFilter>(compiled));
}

// The filtered view's own Cyclone topic, with the related topic's QoS (Cyclone
// requires equal QoS for entities of one topic) and the filter installed
// before any reader exists.
dds_return_t installFilteredTopic(DDS_ContentFilteredTopicImpl &filtered, const char *context) noexcept {
    const DDS_TopicImpl &related = filtered.related;
    CycloneQos qos(dds_create_qos());
    dds_return_t result = qos ? dds_get_qos(related.handle, qos.get()) : DDS_RETCODE_OUT_OF_RESOURCES;
    if (result < 0) return reportCycloneFailure(context, "dds_get_qos", result);
    filtered.handle = createCycloneTopic(related.participant->handle, related.name.c_str(), related.type,
                                         related.typeName, qos.get(), filtered.sertype, context);
    if (filtered.handle < 0) return filtered.handle;
    dds_topic_filter topicFilter{};
    topicFilter.mode = DDS_TOPIC_FILTER_SAMPLE_ARG;
    topicFilter.f.sample_arg = passesFilter;
    topicFilter.arg = &filtered;
    result = dds_set_topic_filter_extended(filtered.handle, &topicFilter);
    if (result < 0) {
        dds_delete(filtered.handle);
        return reportCycloneFailure(context, "dds_set_topic_filter_extended", result);
    }
    return 0;
}

DDS_ContentFilteredTopic *createFilteredTopic(DDS_DomainParticipantImpl &participant, const char *name,
                                              DDS_TopicImpl &related, const char *expression,
                                              const DDS_StringSeq *parameters, const char *context) {
    std::optional<filter::ContentFilter> filter = compileFilter(expression, parameters, related.type, context);
    if (!filter) return nullptr;
    std::lock_guard lock(participant.mutex);
    if (participant.findDescription(name) != nullptr) {
        OBLX_Report_failure(context, "a topic of that name exists already");
        return nullptr;
    }
    auto filtered = std::make_unique<DDS_ContentFilteredTopicImpl>(0, related, name, std::move(*filter));
    if (installFilteredTopic(*filtered, context) < 0) return nullptr;
    ++related.filteredViews;
    participant.filteredTopics.push_back(std::move(filtered));
    return participant.filteredTopics.back().get();
}

DDS_ReturnCode_t deleteFilteredTopic(DDS_DomainParticipantImpl &participant, DDS_ContentFilteredTopicImpl *filtered,
                                     const char *context) {
    return deleteUnused(
        participant, participant.filteredTopics, filtered,
        [](const DDS_ContentFilteredTopicImpl &used) { return used.readers > 0; },
        [](DDS_ContentFilteredTopicImpl &unlinked) { --unlinked.related.filteredViews; }, context);
}

DDS_TopicDescriptionImpl *checkedDescription(DDS_TopicDescription *description, const char *context) noexcept {
    if (description == nullptr ||
        (description->kind != EntityKind::topic && description->kind != EntityKind::contentFilteredTopic)) {
        reportBadEntity(context, "self");
        return nullptr;
    }
    return description;
}

}  // namespace
}  // namespace vexar::dds

using namespace vexar::dds;

extern "C" {

DDS_TopicDescription *DDS_DomainParticipant_lookup_topicdescription(DDS_DomainParticipant *self,
                                                                    const char *topic_name) {
    const char *context = "DDS_DomainParticipant_lookup_topicdescription";
    if (checked(self, context) == nullptr || !isGiven(topic_name, context, "topic_name")) return nullptr;
    return guarded(context, static_cast<DDS_TopicDescription *>(nullptr), [&] {
        std::lock_guard lock(self->mutex);
        return self->findDescription(topic_name);
    });
}

DDS_Topic *DDS_DomainParticipant_create_topic(DDS_DomainParticipant *self, const char *topic_name,
                                              const char *type_name, const DDS_TopicQos *qos,
                                              const DDS_TopicListener *listener, DDS_StatusMask mask) {
    const char *context = "DDS_DomainParticipant_create_topic";
    if (checked(self, context) == nullptr || !isGiven(topic_name, context, "topic_name") ||
        !isGiven(type_name, context, "type_name") || !acceptsNoCallbacks(listener, mask, context)) {
        return nullptr;
    }
    return guarded(context, static_cast<DDS_Topic *>(nullptr), [&]() -> DDS_Topic * {
        OwnedQos<DDS_TopicQos> defaults;
        const DDS_TopicQos *chosen = givenOrDefaultQos(qos, defaults, topic_name, context);
        return chosen != nullptr ? createTopic(*self, topic_name, type_name, *chosen, context) : nullptr;
    });
}

DDS_ReturnCode_t DDS_DomainParticipant_delete_topic(DDS_DomainParticipant *self, DDS_Topic *topic) {
    const char *context = "DDS_DomainParticipant_delete_topic";
    if (checked(self, context) == nullptr || checked(topic, context, "topic") == nullptr) {
        return DDS_RETCODE_BAD_PARAMETER;
    }
    return guarded(context, DDS_RETCODE_ERROR, [&] { return deleteTopic(*self, topic, context); });
}

DDS_ContentFilteredTopic *
DDS_DomainParticipant_create_contentfilteredtopic(DDS_DomainParticipant *self, const char *name,
                                                  DDS_Topic *related_topic, const char *filter_expression,
                                                  const DDS_StringSeq *expression_parameters) {
    const char *context = "DDS_DomainParticipant_create_contentfilteredtopic";
    if (checked(self, context) == nullptr || checked(related_topic, context, "related_topic") == nullptr ||
        !isGiven(name, context, "name") || !isGiven(filter_expression, context, "filter_expression")) {
        return nullptr;
    }
    if (related_topic->participant != self) {
        reportBadEntity(context, "related_topic (of another participant)");
        return nullptr;
    }
    return guarded(context, static_cast<DDS_ContentFilteredTopic *>(nullptr), [&] {
        return createFilteredTopic(*self, name, *related_topic, filter_expression, expression_parameters, context);
    });
}

DDS_ReturnCode_t DDS_DomainParticipant_delete_contentfilteredtopic(DDS_DomainParticipant *self,
                                                                   DDS_ContentFilteredTopic *topic) {
    const char *context = "DDS_DomainParticipant_delete_contentfilteredtopic";
    if (checked(self, context) == nullptr || checked(topic, context, "topic") == nullptr) {
        return DDS_RETCODE_BAD_PARAMETER;
    }
    return guarded(context, DDS_RETCODE_ERROR, [&] { return deleteFilteredTopic(*self, topic, context); });
}

const char *DDS_TopicDescription_get_name(DDS_TopicDescription *self) {
    DDS_TopicDescriptionImpl *description = checkedDescription(self, "DDS_TopicDescription_get_name");
    return description != nullptr ? description->name.c_str() : nullptr;
}

const char *DDS_TopicDescription_get_type_name(DDS_TopicDescription *self) {
    DDS_TopicDescriptionImpl *description = checkedDescription(self, "DDS_TopicDescription_get_type_name");
    return description != nullptr ? description->typeName.c_str() : nullptr;
}

DDS_DomainParticipant *DDS_TopicDescription_get_participant(DDS_TopicDescription *self) {
    DDS_TopicDescriptionImpl *description = checkedDescription(self, "DDS_TopicDescription_get_participant");
    return description != nullptr ? description->participant : nullptr;
}

DDS_Topic *DDS_Topic_narrow(DDS_TopicDescription *description) {
    if (description == nullptr || description->kind != EntityKind::topic) return nullptr;
    return static_cast<DDS_Topic *>(description);
}

DDS_TopicDescription *DDS_Topic_as_topicdescription(DDS_Topic *self) {
    return checked(self, "DDS_Topic_as_topicdescription");
}

DDS_Entity *DDS_Topic_as_entity(DDS_Topic *self) { return checked(self, "DDS_Topic_as_entity"); }

DDS_ReturnCode_t DDS_Topic_get_qos(DDS_Topic *self, DDS_TopicQos *qos) {
    const char *context = "DDS_Topic_get_qos";
    if (checked(self, context) == nullptr) return DDS_RETCODE_BAD_PARAMETER;
    DDS_ReturnCode_t result = readQos(self->handle, qos, context);
    if (result == DDS_RETCODE_OK) qos->protocol = self->protocol;  // Cyclone drops it (see entity.hpp)
    return result;
}

DDS_ContentFilteredTopic *DDS_ContentFilteredTopic_narrow(DDS_TopicDescription *description) {
    if (description == nullptr || description->kind != EntityKind::contentFilteredTopic) return nullptr;
    return static_cast<DDS_ContentFilteredTopic *>(description);
}

DDS_TopicDescription *DDS_ContentFilteredTopic_as_topicdescription(DDS_ContentFilteredTopic *self) {
    return checked(self, "DDS_ContentFilteredTopic_as_topicdescription");
}

DDS_Topic *DDS_ContentFilteredTopic_get_related_topic(DDS_ContentFilteredTopic *self) {
    if (checked(self, "DDS_ContentFilteredTopic_get_related_topic") == nullptr) return nullptr;
    return &self->related;
}

const char *DDS_ContentFilteredTopic_get_filter_expression(DDS_ContentFilteredTopic *self) {
    if (checked(self, "DDS_ContentFilteredTopic_get_filter_expression") == nullptr) return nullptr;
    return self->filter.expression().c_str();
}

DDS_ReturnCode_t DDS_ContentFilteredTopic_get_expression_parameters(DDS_ContentFilteredTopic *self,
                                                                    DDS_StringSeq *parameters) {
    const char *context = "DDS_ContentFilteredTopic_get_expression_parameters";
    if (checked(self, context) == nullptr || !isGiven(parameters, context, "parameters")) {
        return DDS_RETCODE_BAD_PARAMETER;
    }
    const std::vector<std::string> &values = self->filter.parameters();
    auto count = static_cast<DDS_Long>(values.size());
    if (!DDS_StringSeq_ensure_length(parameters, count, count)) return DDS_RETCODE_OUT_OF_RESOURCES;
    for (DDS_Long i = 0; i < count; ++i) {
        char *copy = DDS_String_dup(values[static_cast<size_t>(i)].c_str());
        if (copy == nullptr) return DDS_RETCODE_OUT_OF_RESOURCES;
        char **element = DDS_StringSeq_get_reference(parameters, i);
        DDS_String_free(*element);
        *element = copy;
    }
    return DDS_RETCODE_OK;
}

}  // extern "C"
