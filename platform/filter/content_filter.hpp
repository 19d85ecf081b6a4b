// Content filters: expressions of the DDS SQL filter grammar over the
// members of a sample, such as
//     targetHostAndAppId.rtps_host_id = %0 AND targetHostAndAppId.rtps_app_id = %1
//
// An expression is parsed once, against the type code of the samples it
// will see: every member path is resolved to its offset and kind, every
// literal and parameter converted to the kind it is compared with. What is
// left is a short list of comparisons joined by branches, which matches()
// walks for each incoming sample without allocating.
//
// The language: conditions joined by AND, OR, NOT and parentheses (NOT
// binds tightest, then AND, then OR); comparisons with = <> != < <= > >=;
// `x [NOT] BETWEEN a AND b`; `x [NOT] LIKE 'pattern'` with % (any run of
// characters) and _ (any one character). Values are member paths
// (`a.b.c`, through nested structs), integers (decimal or 0x hex, with an
// optional sign), strings in single quotes ('' is a quote) and parameters
// %0..%99. Keywords are case-insensitive; member names are not.
//
// Members that can be filtered: integers of every width but unsigned long
// long, booleans and octets (as integers), enumerations (as integers, or by
// enumerator name), and strings (a null string reads as empty). Strings and
// integers never compare with each other.
//
// A parameter is text converted like a literal of the kind it meets: an
// integer, an enumerator's name, or a string (taken as it stands, or
// unquoted when it is written in single quotes).
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

#include "platform/types/typecode.h"

namespace vexar::filter {

// Why an expression or its parameters were refused.
struct FilterError {
    std::size_t position = 0;  // offset in the expression of the offending part
    std::string message;       // e.g. "unknown member 'targetHostAndAppId.rtps_hostid'"

    // "column 14: unknown member ..." (columns count from 1).
    std::string describe() const;
};

struct Syntax;  // the parsed expression (content_filter_syntax.hpp)

// --- the compiled form ---------------------------------------------------

enum class Relation : std::uint8_t { equal, notEqual, less, lessOrEqual, greater, greaterOrEqual, like };

// Where an operand's value comes from: a constant, or a sample member
// stored as this C type.
enum class Source : std::uint8_t { constant, octet, int16, uint16, int32, uint32, int64, string };

struct Operand {
    Source source = Source::constant;
    std::size_t offset = 0;    // of the member in the sample
    std::int64_t integer = 0;  // constant of an integer comparison
    std::string text;          // constant of a string comparison
};

enum class Domain : std::uint8_t { integer, text };

struct Comparison {
    Domain domain = Domain::integer;
    Relation relation = Relation::equal;
    Operand left;
    Operand right;
};

// Branch targets past the last step: the sample matches, or it does not.
inline constexpr std::int32_t kAccept = -1;
inline constexpr std::int32_t kReject = -2;

// One comparison and where to go next. Targets always lie further on, so
// a walk ends after at most one visit of each step.
struct Step {
    Comparison comparison;
    std::int32_t onTrue = kAccept;
    std::int32_t onFalse = kReject;
};

class ContentFilter {
public:
    using Compiled = std::variant<ContentFilter, FilterError>;

    // Parses `expression` for samples described by `type` (a struct) and
    // binds `parameters` to its %n. Never throws: every failure, running out
    // of memory included, is a FilterError.
    static Compiled compile(std::string_view expression, std::vector<std::string> parameters,
                            const DDS_TypeCode *type) noexcept;

    // Binds new parameters without parsing again. On failure the filter
    // keeps its old parameters. Not safe against concurrent matches().
    std::optional<FilterError> setParameters(std::vector<std::string> parameters) noexcept;

    // Whether `sample` (a C sample of the compiled type) passes the filter.
    // Allocation-free; safe to call from many threads at once.
    bool matches(const void *sample) const noexcept;

    const std::string &expression() const noexcept { return expression_; }
    const std::vector<std::string> &parameters() const noexcept { return parameters_; }

private:
    ContentFilter(std::string expression, std::shared_ptr<const filter::Syntax> syntax);

    std::string expression_;
    std::shared_ptr<const filter::Syntax> syntax_;
    std::vector<std::string> parameters_;
    std::vector<filter::Step> steps_;
};

}  // namespace vexar::filter
