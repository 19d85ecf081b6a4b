// The bridge from a type plugin to Cyclone: a ddsi_sertype whose samples
// are serialized, keyed and read only through the plugin's functions.
//
// Use, when creating a topic of a registered type:
//
//     struct ddsi_sertype *sertype = vexar::dds::createSertype(plugin, typeName);
//     if (sertype == nullptr) ... fail ...
//     dds_entity_t topic = dds_create_topic_sertype(participant, topicName, &sertype, qos, nullptr, nullptr);
//     if (topic < 0) ddsi_sertype_unref(sertype);   // on success Cyclone owns the reference
//
// Cyclone may hand back an equal sertype that it already knows in place of
// the new one (same name, same plugin); either serves the same.
//
// On the wire a sample is the plugin's serialization with the encapsulation
// header, little-endian (PL_CDR for the mutable topic types); only the
// XCDR1 data representation is offered. Writers and readers take and give
// full samples of the plugin's type: samples handed to Cyclone to be filled
// (take into the caller's buffers, dds_instance_get_key) must be initialized
// ones, and loaned samples are initialized with their strings at their bounds.
#pragma once

#include <cstdint>

#include "platform/plugin/type_plugin.h"

struct ddsi_sertype;

namespace vexar::dds {

// A new sertype with one reference, for dds_create_topic_sertype. It keeps
// its own copy of `plugin`, so the record may be deleted afterwards, and is
// registered under `registeredTypeName`. Null when an argument is null, the
// plugin lacks a function that the bridge calls, or memory runs out.
struct ddsi_sertype *createSertype(const OBLX_TypePlugin *plugin, const char *registeredTypeName) noexcept;

// The least handle above `previous` of an instance of `sertype` that its
// domain holds (any reader's or writer's of the type), in the handles of
// `endpoint`, a reader or writer of it; 0 when there is none. Reads
// nothing, so no sample changes state. Throws std::bad_alloc.
std::uint64_t nextInstance(const struct ddsi_sertype *sertype, std::int32_t endpoint, std::uint64_t previous);

}  // namespace vexar::dds
