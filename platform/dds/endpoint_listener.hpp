// Listeners of writers and readers on Cyclone.
//
// Each endpoint installs one Cyclone listener whose argument is the
// endpoint's record; the Cyclone callbacks convert the status and call the
// application's callback from the record's listener slot. A status that
// changed before the listener was installed (a local reader matched while
// the writer was being created, data that arrived in between) is delivered
// at once on the installing thread, so installing after creation loses
// nothing.
#pragma once

#include "platform/dds/entity.hpp"

namespace vexar::dds {

// Installs `listener`'s callbacks whose status bits are in `mask`; a null
// listener or a zero mask removes them. Reported under `context`.
DDS_ReturnCode_t installListener(DDS_DataWriterImpl &writer, const DDS_DataWriterListener *listener,
                                 DDS_StatusMask mask, const char *context) noexcept;
DDS_ReturnCode_t installListener(DDS_DataReaderImpl &reader, const DDS_DataReaderListener *listener,
                                 DDS_StatusMask mask, const char *context) noexcept;

DDS_PublicationMatchedStatus fromCyclone(const dds_publication_matched_status_t &status) noexcept;
DDS_SubscriptionMatchedStatus fromCyclone(const dds_subscription_matched_status_t &status) noexcept;

// Reads a matched status into `status` (which resets its _change fields).
template <typename Status, typename CycloneStatus>
DDS_ReturnCode_t readMatchedStatus(dds_entity_t endpoint, Status *status,
                                   dds_return_t (*read)(dds_entity_t, CycloneStatus *), const char *context) noexcept {
    if (!isGiven(status, context, "status")) return DDS_RETCODE_BAD_PARAMETER;
    CycloneStatus matched;
    dds_return_t result = read(endpoint, &matched);
    if (result < 0) return reportCycloneFailure(context, "reading the matched status", result);
    *status = fromCyclone(matched);
    return DDS_RETCODE_OK;
}

}  // namespace vexar::dds
