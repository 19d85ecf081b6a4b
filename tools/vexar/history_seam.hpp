// Where `vexar tail --db` goes from recorded history to live messages. The
// live reader also gets each logger's recent messages, most of which the
// history printed already: those (same application, level, source time and
// text) are dropped, so the seam has neither a gap nor a duplicate. So are
// those older than the history's window (--since, or the first of -n).
#pragma once

#include <cstdint>
#include <map>
#include <set>
#include <tuple>

#include "line_format.hpp"

namespace vexar::cli {

class HistorySeam {
public:
    void printed(const LogLine &line);
    // The history asked for nothing before `time` (nanoseconds since the epoch).
    void startsAt(std::int64_t time) { start_ = time; }
    // Whether the history printed this line already, or it is older than
    // the history's start.
    bool covers(const LogLine &line) const;

private:
    using Key = std::tuple<AppId, std::int32_t, std::int64_t, std::uint64_t>;
    static Key keyOf(const LogLine &line);

    std::set<Key> printed_;
    // Per application, the latest source time printed: later ones are new.
    std::map<AppId, std::int64_t> latest_;
    std::int64_t start_ = INT64_MIN;
};

}  // namespace vexar::cli
