#include "apps_table.hpp"

#include <algorithm>
#include <vector>

#include "line_format.hpp"
#include "names.hpp"

namespace vexar::cli {
namespace {

using Row = std::vector<std::string>;

std::string stateText(const AppRecord &record) {
    std::string text = nameOrNumber(kStateNames, record.state);
    return record.gone ? text + " (gone)" : text;
}

// Columns before the middleware logger's.
constexpr std::size_t kOwnColumns = 6;

Row headerRow(bool middleware) {
    Row row{"HOST:APP", "KIND", "IDENTITY", "STATE", "LEVEL", "DROPPED"};
    if (!middleware) return row;
    for (std::int32_t category = 0; category < QTV_VX_ADMIN_STATE_VERBOSITIES_LENGTH; ++category) {
        row.emplace_back(nameOf(kCategoryNames, category));
    }
    row.emplace_back("FORMAT");
    return row;
}

std::string printableOrDash(std::string_view text) {
    std::string printable;
    appendPrintable(printable, text);
    return printable.empty() ? "-" : printable;
}

Row recordRow(const AppRecord &record, bool middleware) {
    Row row{formatAppId(record.id),
            printableOrDash(record.kind),
            printableOrDash(record.identity),
            stateText(record),
            nameOrNumber(kLevelNames, record.filterLevel),
            record.counts ? std::to_string(record.counts->dropped) : std::string("-")};
    if (!middleware) return row;
    for (std::int32_t verbosity : record.verbosities) row.push_back(nameOrNumber(kVerbosityNames, verbosity));
    row.push_back(nameOrNumber(kPrintFormatNames, record.printFormat));
    return row;
}

void appendCountsJson(std::string &out, const std::optional<MessageCounts> &counts) {
    if (!counts) {
        out += "null";
        return;
    }
    const std::pair<const char *, std::uint64_t> fields[] = {
        {"accepted", counts->accepted},   {"refused", counts->refused}, {"dropped", counts->dropped},
        {"published", counts->published}, {"failed", counts->failed},   {"discarded", counts->discarded}};
    char separator = '{';
    for (const auto &[name, value] : fields) {
        out += separator;
        out += '"';
        out += name;
        out += "\":";
        out += std::to_string(value);
        separator = ',';
    }
    out += '}';
}

void appendRow(std::string &out, const Row &row, const std::vector<std::size_t> &widths) {
    for (std::size_t column = 0; column < row.size(); ++column) {
        out += row[column];
        if (column + 1 == row.size()) break;
        out.append(widths[column] - row[column].size() + 2, ' ');
    }
    out += '\n';
}

}  // namespace

MessageCounts MessageCounts::fromStatistics(const QTV_VX_ADMIN_Statistics &statistics) {
    return {statistics.accepted,  statistics.refused, statistics.dropped,
            statistics.published, statistics.failed,  statistics.discarded};
}

AppRecord AppRecord::fromState(const QTV_VX_ADMIN_State &state) {
    AppRecord record;
    record.id = appIdOf(state.hostAndAppId);
    record.kind = state.applicationKind != nullptr ? state.applicationKind : "";
    record.domain = state.administrationDomainId;
    record.state = state.state;
    record.filterLevel = state.filterLevel;
    record.verbosities.fill(-1);
    for (const QTV_VX_ADMIN_QTVLoggerCategoryAndVerbosity &entry : state.qtvLoggerVerbosities) {
        auto category = static_cast<std::size_t>(entry.category);
        if (category < record.verbosities.size()) record.verbosities[category] = entry.verbosity;
    }
    record.printFormat = state.qtvLoggerPrintFormat;
    return record;
}

std::string renderAppsTable(std::span<const AppRecord> records, bool middleware) {
    std::vector<Row> rows{headerRow(middleware)};
    for (const AppRecord &record : records) rows.push_back(recordRow(record, middleware));
    std::vector<std::size_t> widths(rows.front().size(), 0);
    for (const Row &row : rows) {
        for (std::size_t column = 0; column < row.size(); ++column) {
            widths[column] = std::max(widths[column], row[column].size());
        }
    }
    std::string out;
    if (middleware) {
        // Five columns of one kind read as one thing: what the application's
        // middleware logger prints, not five outcomes.
        std::size_t start = 0;
        for (std::size_t column = 0; column < kOwnColumns; ++column) start += widths[column] + 2;
        out.append(start, ' ');
        out += "MIDDLEWARE LOGGER: VERBOSITY PER CATEGORY, PRINT FORMAT\n";
    }
    for (const Row &row : rows) appendRow(out, row, widths);
    return out;
}

std::string renderAppJson(const AppRecord &record) {
    std::string out = "{\"id\":\"" + formatAppId(record.id) + "\",\"host\":" + std::to_string(record.id.host) +
                      ",\"app\":" + std::to_string(record.id.app) + ",\"kind\":";
    appendJsonString(out, record.kind);
    out += ",\"identity\":";
    if (record.identity.empty()) out += "null";
    else appendJsonString(out, record.identity);
    out += ",\"domain\":" + std::to_string(record.domain) + ",\"state\":";
    appendJsonString(out, nameOrNumber(kStateNames, record.state));
    out += ",\"gone\":";
    out += record.gone ? "true" : "false";
    out += ",\"filterLevel\":" + std::to_string(record.filterLevel) + ",\"verbosities\":{";
    for (std::size_t category = 0; category < record.verbosities.size(); ++category) {
        if (category > 0) out += ',';
        appendJsonString(out, nameOf(kCategoryNames, static_cast<std::int32_t>(category)));
        out += ':';
        appendJsonString(out, nameOrNumber(kVerbosityNames, record.verbosities[category]));
    }
    out += "},\"printFormat\":";
    appendJsonString(out, nameOrNumber(kPrintFormatNames, record.printFormat));
    out += ",\"counts\":";
    appendCountsJson(out, record.counts);
    out += "}\n";
    return out;
}

}  // namespace vexar::cli
