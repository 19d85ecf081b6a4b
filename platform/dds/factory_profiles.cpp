// The participant factory's QoS profile look-ups, answered from the QoS
// libraries of the loaded XML documents, and the default profile under the
// entities' defaults. Before its first look-up the factory loads the files
// that DDS_QOS_PROFILES names (separated by ';'): the middleware's
// convention for profiles that no program loads itself.
#include "platform/dds/entity.hpp"  // first: it orders Cyclone's headers before ours

#include <cstdlib>
#include <mutex>
#include <string>
#include <string_view>
#include <vector>

#include "platform/dds/domain_participant_factory.h"
#include "platform/dds/factory_profiles.hpp"
#include "platform/dds/qos_libraries.hpp"
#include "platform/dds/qos_records.hpp"
#include "platform/dds/xml_documents.hpp"
#include "platform/log/report.h"
#include "platform/runtime/dds_string.h"
#include "platform/xml/xml_text.hpp"

namespace vexar::dds {

void loadProfilesNamedInEnvironment() {
    static std::once_flag once;
    std::call_once(once, [] {
        const char *list = std::getenv("DDS_QOS_PROFILES");
        for (std::string_view rest = list != nullptr ? list : ""; !rest.empty();) {
            const std::size_t end = rest.find(';');
            const std::string path(xml::trimmed(rest.substr(0, end)));
            rest = end == std::string_view::npos ? std::string_view() : rest.substr(end + 1);
            if (!path.empty()) xmlDocuments().loadFile(path.c_str(), "DDS_QOS_PROFILES");
        }
    });
}

template <typename Qos>
DDS_ReturnCode_t overlayDefaultProfile(Qos &qos, const char *topicName, const char *context) {
    loadProfilesNamedInEnvironment();
    const bool read = xmlDocuments().read(context, [&](const DDS_XMLObject *root) {
        if (root != nullptr) defaultQosFromProfiles(*root, topicName, qos);
    });
    return read ? DDS_RETCODE_OK : DDS_RETCODE_ILLEGAL_OPERATION;
}

#define VEXAR_INSTANTIATE_DEFAULT_PROFILE(Qos) \
    template DDS_ReturnCode_t overlayDefaultProfile(Qos &qos, const char *topicName, const char *context)
VEXAR_INSTANTIATE_DEFAULT_PROFILE(DDS_DomainParticipantQos);
VEXAR_INSTANTIATE_DEFAULT_PROFILE(DDS_PublisherQos);
VEXAR_INSTANTIATE_DEFAULT_PROFILE(DDS_SubscriberQos);
VEXAR_INSTANTIATE_DEFAULT_PROFILE(DDS_TopicQos);
VEXAR_INSTANTIATE_DEFAULT_PROFILE(DDS_DataWriterQos);
VEXAR_INSTANTIATE_DEFAULT_PROFILE(DDS_DataReaderQos);
#undef VEXAR_INSTANTIATE_DEFAULT_PROFILE

namespace {

bool argumentsGiven(const void *qos, const char *library, const char *profile, const char *context) noexcept {
    if (qos != nullptr && library != nullptr && profile != nullptr) return true;
    OBLX_Report_badParameter(context, qos == nullptr ? "qos" : library == nullptr ? "library_name" : "profile_name");
    return false;
}

// `qos` from the profile, or left as it was (BAD_PARAMETER, reported) when
// the library holds no such profile.
template <typename Qos>
DDS_ReturnCode_t fromProfile(const DDS_DomainParticipantFactory *self, Qos *qos, const char *library,
                             const char *profile, const char *topicName, const char *context) noexcept {
    if (!isFactory(self, context) || !argumentsGiven(qos, library, profile, context)) {
        return DDS_RETCODE_BAD_PARAMETER;
    }
    return guarded(context, DDS_RETCODE_ERROR, [&] {
        loadProfilesNamedInEnvironment();
        OwnedQos<Qos> found;
        bool exists = false;
        const bool read = xmlDocuments().read(context, [&](const DDS_XMLObject *root) {
            exists = root != nullptr && qosFromProfile(*root, library, profile, topicName, found.qos);
        });
        if (!read) return DDS_RETCODE_ILLEGAL_OPERATION;
        if (!exists) {
            OBLX_Report_badParameter(
                context,
                (std::string("profile (no QoS profile \"") + library + "::" + profile + "\" is loaded)").c_str());
            return DDS_RETCODE_BAD_PARAMETER;
        }
        return copyQos(*qos, found.qos, context);
    });
}

// `names`, in order, as the sequence's strings.
DDS_ReturnCode_t setStrings(DDS_StringSeq &sequence, const std::vector<std::string> &names) {
    const auto length = static_cast<DDS_Long>(names.size());
    if (!DDS_StringSeq_ensure_length(&sequence, length, length)) return DDS_RETCODE_ERROR;
    for (DDS_Long i = 0; i < length; ++i) {
        char **element = DDS_StringSeq_get_reference(&sequence, i);
        char *copy = DDS_String_dup(names[static_cast<std::size_t>(i)].c_str());
        if (copy == nullptr) return DDS_RETCODE_OUT_OF_RESOURCES;
        DDS_String_free(*element);
        *element = copy;
    }
    return DDS_RETCODE_OK;
}

}  // namespace
}  // namespace vexar::dds

using namespace vexar::dds;

extern "C" {

DDS_ReturnCode_t DDS_DomainParticipantFactory_get_qos_profiles(DDS_DomainParticipantFactory *self,
                                                               DDS_StringSeq *profile_names, const char *library_name) {
    const char *context = "DDS_DomainParticipantFactory_get_qos_profiles";
    if (!isFactory(self, context)) return DDS_RETCODE_BAD_PARAMETER;
    if (profile_names == nullptr || library_name == nullptr) {
        OBLX_Report_badParameter(context, profile_names == nullptr ? "profile_names" : "library_name");
        return DDS_RETCODE_BAD_PARAMETER;
    }
    return guarded(context, DDS_RETCODE_ERROR, [&] {
        loadProfilesNamedInEnvironment();
        std::vector<std::string> names;
        const bool read = xmlDocuments().read(context, [&](const DDS_XMLObject *root) {
            if (root != nullptr) names = profileNames(*root, library_name);
        });
        if (!read) return DDS_RETCODE_ILLEGAL_OPERATION;
        return setStrings(*profile_names, names);
    });
}

DDS_ReturnCode_t DDS_DomainParticipantFactory_get_participant_qos_from_profile(DDS_DomainParticipantFactory *self,
                                                                               DDS_DomainParticipantQos *qos,
                                                                               const char *library_name,
                                                                               const char *profile_name) {
    return fromProfile(self, qos, library_name, profile_name, nullptr,
                       "DDS_DomainParticipantFactory_get_participant_qos_from_profile");
}

DDS_ReturnCode_t DDS_DomainParticipantFactory_get_publisher_qos_from_profile(DDS_DomainParticipantFactory *self,
                                                                             DDS_PublisherQos *qos,
                                                                             const char *library_name,
                                                                             const char *profile_name) {
    return fromProfile(self, qos, library_name, profile_name, nullptr,
                       "DDS_DomainParticipantFactory_get_publisher_qos_from_profile");
}

DDS_ReturnCode_t DDS_DomainParticipantFactory_get_subscriber_qos_from_profile(DDS_DomainParticipantFactory *self,
                                                                              DDS_SubscriberQos *qos,
                                                                              const char *library_name,
                                                                              const char *profile_name) {
    return fromProfile(self, qos, library_name, profile_name, nullptr,
                       "DDS_DomainParticipantFactory_get_subscriber_qos_from_profile");
}

DDS_ReturnCode_t DDS_DomainParticipantFactory_get_topic_qos_from_profile(DDS_DomainParticipantFactory *self,
                                                                         DDS_TopicQos *qos, const char *library_name,
                                                                         const char *profile_name) {
    return fromProfile(self, qos, library_name, profile_name, nullptr,
                       "DDS_DomainParticipantFactory_get_topic_qos_from_profile");
}

DDS_ReturnCode_t
DDS_DomainParticipantFactory_get_topic_qos_from_profile_w_topic_name(DDS_DomainParticipantFactory *self,
                                                                     DDS_TopicQos *qos, const char *library_name,
                                                                     const char *profile_name, const char *topic_name) {
    return fromProfile(self, qos, library_name, profile_name, topic_name,
                       "DDS_DomainParticipantFactory_get_topic_qos_from_profile_w_topic_name");
}

DDS_ReturnCode_t DDS_DomainParticipantFactory_get_datawriter_qos_from_profile(DDS_DomainParticipantFactory *self,
                                                                              DDS_DataWriterQos *qos,
                                                                              const char *library_name,
                                                                              const char *profile_name) {
    return fromProfile(self, qos, library_name, profile_name, nullptr,
                       "DDS_DomainParticipantFactory_get_datawriter_qos_from_profile");
}

DDS_ReturnCode_t DDS_DomainParticipantFactory_get_datawriter_qos_from_profile_w_topic_name(
    DDS_DomainParticipantFactory *self, DDS_DataWriterQos *qos, const char *library_name, const char *profile_name,
    const char *topic_name) {
    return fromProfile(self, qos, library_name, profile_name, topic_name,
                       "DDS_DomainParticipantFactory_get_datawriter_qos_from_profile_w_topic_name");
}

DDS_ReturnCode_t DDS_DomainParticipantFactory_get_datareader_qos_from_profile(DDS_DomainParticipantFactory *self,
                                                                              DDS_DataReaderQos *qos,
                                                                              const char *library_name,
                                                                              const char *profile_name) {
    return fromProfile(self, qos, library_name, profile_name, nullptr,
                       "DDS_DomainParticipantFactory_get_datareader_qos_from_profile");
}

DDS_ReturnCode_t DDS_DomainParticipantFactory_get_datareader_qos_from_profile_w_topic_name(
    DDS_DomainParticipantFactory *self, DDS_DataReaderQos *qos, const char *library_name, const char *profile_name,
    const char *topic_name) {
    return fromProfile(self, qos, library_name, profile_name, topic_name,
                       "DDS_DomainParticipantFactory_get_datareader_qos_from_profile_w_topic_name");
}

}  // extern "C"
