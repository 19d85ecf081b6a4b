// What `vexar apps` knows of one logger, taken from its State sample and
// its published message counts, and how it prints: an aligned table for
// people, one JSON object per logger for machines.
#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <span>
#include <string>

#include "app_id.hpp"
#include "type/vexar.h"

namespace vexar::cli {

// What became of the messages a logger's process logged, as its logger
// published them.
struct MessageCounts {
    std::uint64_t accepted = 0;
    std::uint64_t refused = 0;
    std::uint64_t dropped = 0;
    std::uint64_t published = 0;
    std::uint64_t failed = 0;
    std::uint64_t discarded = 0;

    static MessageCounts fromStatistics(const QTV_VX_ADMIN_Statistics &statistics);
    bool operator==(const MessageCounts &) const = default;
};

struct AppRecord {
    AppId id;
    std::string kind;
    std::string identity;  // "exe@host[pid]" of its participant, empty while unknown
    std::int32_t domain = 0;
    std::int32_t state = 0;
    std::int32_t filterLevel = 0;
    // The middleware logger's verbosity per category, PLATFORM .. API.
    std::array<std::int32_t, QTV_VX_ADMIN_STATE_VERBOSITIES_LENGTH> verbosities{};
    std::int32_t printFormat = 0;
    bool gone = false;  // its State instance was disposed or lost its writer
    // None seen: a logger that publishes no counts, or not yet.
    std::optional<MessageCounts> counts;

    static AppRecord fromState(const QTV_VX_ADMIN_State &state);
    bool operator==(const AppRecord &) const = default;
};

// A header line and one line per record, columns aligned; a logger that
// went away shows "(gone)" after its last state, one without counts "-"
// as its DROPPED. With `middleware`, the middleware logger's verbosity
// per category and its print format follow, under a header line of their own.
std::string renderAppsTable(std::span<const AppRecord> records, bool middleware = false);

// One line: {"id":"01100f3a:8b2c4d1e","host":..,"app":..,"kind":..,...,
// "counts":{"accepted":..,...}} ("counts":null when none were seen).
std::string renderAppJson(const AppRecord &record);

}  // namespace vexar::cli
