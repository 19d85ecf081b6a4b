// A test's own DDS participant with a publisher and a subscriber, deleted
// with everything it made. Free of GoogleTest, so that helper programs and
// benchmarks can use it too.
#pragma once

#include "platform/dds/domain_participant.h"
#include "platform/dds/domain_participant_factory.h"

namespace vexar_test {

// A participant with a publisher and a subscriber. Deleting it deletes
// everything it made.
class Participant {
public:
    explicit Participant(int domain)
        : participant_(DDS_DomainParticipantFactory_create_participant(factory(), domain, nullptr, nullptr, 0)) {
        if (participant_ == nullptr) return;
        publisher_ = DDS_DomainParticipant_create_publisher(participant_, nullptr, nullptr, 0);
        subscriber_ = DDS_DomainParticipant_create_subscriber(participant_, nullptr, nullptr, 0);
    }
    ~Participant() { deleteAll(); }
    Participant(const Participant &) = delete;
    Participant &operator=(const Participant &) = delete;

    DDS_DomainParticipant *get() const { return participant_; }
    DDS_Publisher *publisher() const { return publisher_; }
    DDS_Subscriber *subscriber() const { return subscriber_; }

    // OK, or the first failure (then the destructor tries again).
    DDS_ReturnCode_t deleteAll() {
        if (participant_ == nullptr) return DDS_RETCODE_OK;
        DDS_ReturnCode_t result = DDS_DomainParticipant_delete_contained_entities(participant_);
        if (result == DDS_RETCODE_OK) result = DDS_DomainParticipantFactory_delete_participant(factory(), participant_);
        if (result == DDS_RETCODE_OK) participant_ = nullptr;
        return result;
    }

private:
    static DDS_DomainParticipantFactory *factory() { return DDS_DomainParticipantFactory_get_instance(); }

    DDS_DomainParticipant *participant_;
    DDS_Publisher *publisher_ = nullptr;
    DDS_Subscriber *subscriber_ = nullptr;
};

}  // namespace vexar_test
