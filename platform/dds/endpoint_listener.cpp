// Listeners of writers and readers on Cyclone.
#include "platform/dds/endpoint_listener.hpp"

namespace vexar::dds {
namespace {

// Cyclone's own status bits (its macros of these names are replaced by ours).
constexpr std::uint32_t kCyclonePublicationMatched = 1u << DDS_PUBLICATION_MATCHED_STATUS_ID;
constexpr std::uint32_t kCycloneSubscriptionMatched = 1u << DDS_SUBSCRIPTION_MATCHED_STATUS_ID;
constexpr std::uint32_t kCycloneDataAvailable = 1u << DDS_DATA_AVAILABLE_STATUS_ID;

void deliverPublicationMatched(DDS_DataWriterImpl &writer, const dds_publication_matched_status_t &status) {
    DDS_DataWriterListener listener = writer.listener.get();
    if (listener.on_publication_matched == nullptr) return;
    DDS_PublicationMatchedStatus converted = fromCyclone(status);
    listener.on_publication_matched(listener.listener_data, &writer, &converted);
}

void deliverSubscriptionMatched(DDS_DataReaderImpl &reader, const dds_subscription_matched_status_t &status) {
    DDS_DataReaderListener listener = reader.listener.get();
    if (listener.on_subscription_matched == nullptr) return;
    DDS_SubscriptionMatchedStatus converted = fromCyclone(status);
    listener.on_subscription_matched(listener.listener_data, &reader, &converted);
}

void deliverDataAvailable(DDS_DataReaderImpl &reader) {
    DDS_DataReaderListener listener = reader.listener.get();
    if (listener.on_data_available != nullptr) listener.on_data_available(listener.listener_data, &reader);
}

void onPublicationMatched(dds_entity_t, const dds_publication_matched_status_t status, void *writer) {
    deliverPublicationMatched(*static_cast<DDS_DataWriterImpl *>(writer), status);
}

void onSubscriptionMatched(dds_entity_t, const dds_subscription_matched_status_t status, void *reader) {
    deliverSubscriptionMatched(*static_cast<DDS_DataReaderImpl *>(reader), status);
}

void onDataAvailable(dds_entity_t, void *reader) { deliverDataAvailable(*static_cast<DDS_DataReaderImpl *>(reader)); }

template <typename Callback>
bool wants(DDS_StatusMask mask, DDS_StatusKind status, Callback callback) noexcept {
    return (mask & status) != 0 && callback != nullptr;
}

DDS_DataWriterListener effectiveListener(const DDS_DataWriterListener *listener, DDS_StatusMask mask) noexcept {
    DDS_DataWriterListener effective = DDS_DataWriterListener_INITIALIZER;
    if (listener == nullptr) return effective;
    effective.listener_data = listener->listener_data;
    if (wants(mask, DDS_PUBLICATION_MATCHED_STATUS, listener->on_publication_matched)) {
        effective.on_publication_matched = listener->on_publication_matched;
    }
    return effective;
}

DDS_DataReaderListener effectiveListener(const DDS_DataReaderListener *listener, DDS_StatusMask mask) noexcept {
    DDS_DataReaderListener effective = DDS_DataReaderListener_INITIALIZER;
    if (listener == nullptr) return effective;
    effective.listener_data = listener->listener_data;
    if (wants(mask, DDS_DATA_AVAILABLE_STATUS, listener->on_data_available)) {
        effective.on_data_available = listener->on_data_available;
    }
    if (wants(mask, DDS_SUBSCRIPTION_MATCHED_STATUS, listener->on_subscription_matched)) {
        effective.on_subscription_matched = listener->on_subscription_matched;
    }
    return effective;
}

struct CycloneListenerDeleter {
    void operator()(dds_listener_t *listener) const noexcept { dds_delete_listener(listener); }
};
using CycloneListener = std::unique_ptr<dds_listener_t, CycloneListenerDeleter>;

CycloneListener cycloneListener(DDS_DataWriterImpl &writer, const DDS_DataWriterListener &listener) noexcept {
    CycloneListener cyclone(dds_create_listener(&writer));
    if (cyclone && listener.on_publication_matched != nullptr) {
        dds_lset_publication_matched(cyclone.get(), onPublicationMatched);
    }
    return cyclone;
}

CycloneListener cycloneListener(DDS_DataReaderImpl &reader, const DDS_DataReaderListener &listener) noexcept {
    CycloneListener cyclone(dds_create_listener(&reader));
    if (cyclone && listener.on_data_available != nullptr) dds_lset_data_available(cyclone.get(), onDataAvailable);
    if (cyclone && listener.on_subscription_matched != nullptr) {
        dds_lset_subscription_matched(cyclone.get(), onSubscriptionMatched);
    }
    return cyclone;
}

std::uint32_t pendingStatuses(dds_entity_t entity) noexcept {
    std::uint32_t statuses = 0;
    return dds_get_status_changes(entity, &statuses) < 0 ? 0 : statuses;
}

void deliverPending(DDS_DataWriterImpl &writer, const DDS_DataWriterListener &listener) {
    dds_publication_matched_status_t matched;
    if (listener.on_publication_matched != nullptr && (pendingStatuses(writer.handle) & kCyclonePublicationMatched) &&
        dds_get_publication_matched_status(writer.handle, &matched) >= 0) {
        deliverPublicationMatched(writer, matched);
    }
}

void deliverPending(DDS_DataReaderImpl &reader, const DDS_DataReaderListener &listener) {
    std::uint32_t pending = pendingStatuses(reader.handle);
    dds_subscription_matched_status_t matched;
    if (listener.on_subscription_matched != nullptr && (pending & kCycloneSubscriptionMatched) &&
        dds_get_subscription_matched_status(reader.handle, &matched) >= 0) {
        deliverSubscriptionMatched(reader, matched);
    }
    if (listener.on_data_available != nullptr && (pending & kCycloneDataAvailable)) deliverDataAvailable(reader);
}

template <typename Endpoint, typename Listener>
DDS_ReturnCode_t install(Endpoint &endpoint, const Listener *listener, DDS_StatusMask mask,
                         const char *context) noexcept {
    Listener effective = effectiveListener(listener, mask);
    endpoint.listener.set(effective);
    CycloneListener cyclone = cycloneListener(endpoint, effective);
    if (!cyclone) {
        OBLX_Report_allocationFailure(context, sizeof(void *));
        return DDS_RETCODE_OUT_OF_RESOURCES;
    }
    dds_return_t result = dds_set_listener(endpoint.handle, cyclone.get());
    if (result < 0) return reportCycloneFailure(context, "dds_set_listener", result);
    deliverPending(endpoint, effective);
    return DDS_RETCODE_OK;
}

}  // namespace

DDS_ReturnCode_t installListener(DDS_DataWriterImpl &writer, const DDS_DataWriterListener *listener,
                                 DDS_StatusMask mask, const char *context) noexcept {
    return install(writer, listener, mask, context);
}

DDS_ReturnCode_t installListener(DDS_DataReaderImpl &reader, const DDS_DataReaderListener *listener,
                                 DDS_StatusMask mask, const char *context) noexcept {
    return install(reader, listener, mask, context);
}

DDS_PublicationMatchedStatus fromCyclone(const dds_publication_matched_status_t &status) noexcept {
    return DDS_PublicationMatchedStatus{static_cast<DDS_Long>(status.total_count), status.total_count_change,
                                        static_cast<DDS_Long>(status.current_count), status.current_count_change,
                                        status.last_subscription_handle};
}

DDS_SubscriptionMatchedStatus fromCyclone(const dds_subscription_matched_status_t &status) noexcept {
    return DDS_SubscriptionMatchedStatus{static_cast<DDS_Long>(status.total_count), status.total_count_change,
                                         static_cast<DDS_Long>(status.current_count), status.current_count_change,
                                         status.last_publication_handle};
}

}  // namespace vexar::dds
