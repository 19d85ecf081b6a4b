// The names the tool reads and prints for numbers that the logger carries:
// log levels, the middleware logger's categories, verbosities and print
// formats, life-cycle states and command results. Each table is the one
// description of its names; parsing and printing both come from it.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>

namespace vexar::cli {

struct NamedValue {
    std::string_view name;
    std::int32_t value;
};

struct NameTable {
    std::string_view what;                // "level", "verbosity", ... for messages
    std::span<const NamedValue> entries;  // in increasing value order
    bool anyNumber;                       // numbers outside the table are valid too
};

extern const NameTable kLevelNames;
extern const NameTable kCategoryNames;
extern const NameTable kVerbosityNames;
extern const NameTable kPrintFormatNames;
extern const NameTable kStateNames;
extern const NameTable kCommandResultNames;

// A signed 32-bit decimal, the whole text; nothing else.
std::optional<std::int32_t> parseInt32(std::string_view text);

// Whether `text` spells `name` (case-insensitive, '-' taken as '_').
bool isName(std::string_view name, std::string_view text);

// A name of the table (case-insensitive, '-' taken as '_') or a number: any
// signed 32-bit number for an open table, else one of the table's values.
std::optional<std::int32_t> parseName(const NameTable &table, std::string_view text);

// As parseName; throws UsageError "bad <what> '<text>' (expected ...)".
std::int32_t parseNameOrThrow(const NameTable &table, std::string_view text);

// The value's name, or empty when it has none.
std::string_view nameOf(const NameTable &table, std::int32_t value);

// The value's name, or its decimal number.
std::string nameOrNumber(const NameTable &table, std::int32_t value);

// "FATAL, SEVERE, ..." for help texts and error messages.
std::string listNames(const NameTable &table);

}  // namespace vexar::cli
