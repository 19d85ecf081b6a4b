// The parsed form of a content filter expression (platform/filter/content_filter.hpp):
// its comparisons in the order written, each with its two values as they
// stand in the text and the branch targets that join them. Member paths are
// resolved here; literals and parameters are converted when they are bound.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "platform/filter/content_filter.hpp"

namespace vexar::filter {

// A member of the sample that the expression names.
struct Member {
    std::string path;                           // as written: "targetHostAndAppId.rtps_app_id"
    std::size_t offset = 0;                     // from the start of the sample
    Source source = Source::int32;              // how the member is stored
    const DDS_TypeCode *enumeration = nullptr;  // its enumeration, when it is one
};

// One side of a comparison, as written.
struct Value {
    enum class Form : std::uint8_t {
        member,     // a resolved member path
        integer,    // an integer literal
        text,       // a string literal
        parameter,  // %n
        name,       // a bare name that is no member: perhaps an enumerator
    };
    Form form = Form::integer;
    std::size_t position = 0;  // in the expression
    Member member;             // member
    std::int64_t integer = 0;  // integer
    std::string text;          // text: the string; name: the name
    unsigned parameter = 0;    // parameter: n
};

struct ComparisonSyntax {
    Relation relation = Relation::equal;
    std::size_t position = 0;  // of the operator
    Value left;
    Value right;
    std::int32_t onTrue = kAccept;
    std::int32_t onFalse = kReject;
};

struct Syntax {
    std::vector<ComparisonSyntax> comparisons;
};

// Parsing and binding refuse an expression by throwing; the public
// operations catch it.
[[noreturn]] inline void refuse(std::size_t position, std::string message) {
    throw FilterError{position, std::move(message)};
}

// How messages quote what the expression says: 'text'.
inline std::string quoted(std::string_view text) { return "'" + std::string(text) + "'"; }

// Parses `expression` for samples of the struct `type`. Throws FilterError
// (and std::bad_alloc).
Syntax parse(std::string_view expression, const DDS_TypeCode &type);

// --- literals, shared with the binding of parameters ---------------------

enum class IntegerSyntax { valid, malformed, outOfRange };

// Reads `text` in full as an integer: decimal or 0x hex, optional sign.
IntegerSyntax parseInteger(std::string_view text, std::int64_t &value) noexcept;

// A string literal at the start of `text` ('' stands for one quote): its
// value and the characters it spans, or nothing when it is not closed.
struct QuotedText {
    std::string value;
    std::size_t length = 0;
};
std::optional<QuotedText> readQuoted(std::string_view text);

}  // namespace vexar::filter
