// Binding parameters into a parsed content filter, and evaluating it.
#include "platform/filter/content_filter.hpp"

#include <cstring>
#include <utility>

#include "platform/filter/content_filter_syntax.hpp"

namespace vexar::filter {

std::string FilterError::describe() const { return "column " + std::to_string(position + 1) + ": " + message; }

namespace {

// --- binding: every value of a comparison made an operand of one domain ----

Domain domainOf(const Member &member) { return member.source == Source::string ? Domain::text : Domain::integer; }

const char *kindName(const Member &member) {
    if (member.enumeration != nullptr) {
        return "enumeration";
    }
    switch (member.source) {
    case Source::octet:
        return "octet";
    case Source::int16:
        return "short";
    case Source::uint16:
        return "unsigned short";
    case Source::int32:
        return "long";
    case Source::uint32:
        return "unsigned long";
    case Source::int64:
        return "long long";
    default:
        return "string";
    }
}

// "long member 'targetHostAndAppId.rtps_host_id'"
std::string describe(const Member &member) { return std::string(kindName(member)) + " member " + quoted(member.path); }

bool fits(std::int64_t value, Source source) {
    switch (source) {
    case Source::octet:
        return std::in_range<std::uint8_t>(value);
    case Source::int16:
        return std::in_range<std::int16_t>(value);
    case Source::uint16:
        return std::in_range<std::uint16_t>(value);
    case Source::int32:
        return std::in_range<std::int32_t>(value);
    case Source::uint32:
        return std::in_range<std::uint32_t>(value);
    default:
        return true;
    }
}

std::string_view trimmed(std::string_view text) {
    constexpr std::string_view kSpace = " \t\r\n";
    const std::size_t first = text.find_first_not_of(kSpace);
    return first == std::string_view::npos ? std::string_view{}
                                           : text.substr(first, text.find_last_not_of(kSpace) + 1 - first);
}

// A string parameter may be written as a literal, in quotes.
std::string unquoted(std::string_view text) {
    if (text.starts_with('\'')) {
        if (std::optional<QuotedText> literal = readQuoted(text); literal && literal->length == text.size()) {
            return std::move(literal->value);
        }
    }
    return std::string(text);
}

Operand integerConstant(std::int64_t value) { return Operand{Source::constant, 0, value, {}}; }
Operand textConstant(std::string value) { return Operand{Source::constant, 0, 0, std::move(value)}; }

class Binder {
public:
    explicit Binder(const std::vector<std::string> &parameters) : parameters_(parameters) {}

    Step bind(const ComparisonSyntax &syntax) const {
        const Member *left = memberOf(syntax.left);
        const Member *right = memberOf(syntax.right);
        Comparison comparison;
        comparison.relation = syntax.relation;
        comparison.domain = domainOf(syntax, left, right);
        comparison.left = operand(syntax.left, comparison.domain, right);
        comparison.right = operand(syntax.right, comparison.domain, left);
        return Step{std::move(comparison), syntax.onTrue, syntax.onFalse};
    }

private:
    static const Member *memberOf(const Value &value) {
        return value.form == Value::Form::member ? &value.member : nullptr;
    }

    // Members decide the domain; two constants compare as integers when
    // either is an integer literal.
    static Domain domainOf(const ComparisonSyntax &syntax, const Member *left, const Member *right) {
        if (left != nullptr && right != nullptr && filter::domainOf(*left) != filter::domainOf(*right)) {
            refuse(syntax.position, "cannot compare " + describe(*left) + " with " + describe(*right));
        }
        const Member *member = left != nullptr ? left : right;
        const bool integerLiteral =
            syntax.left.form == Value::Form::integer || syntax.right.form == Value::Form::integer;
        const Domain domain =
            member != nullptr ? filter::domainOf(*member) : (integerLiteral ? Domain::integer : Domain::text);
        if (syntax.relation == Relation::like && domain != Domain::text) {
            refuse(syntax.position, member != nullptr ? "LIKE needs a string, and " + describe(*member) + " is not one"
                                                      : "LIKE needs strings, not integers");
        }
        return domain;
    }

    // `value` as an operand of `domain`; `counterpart` is the member on the
    // other side, if any, whose kind constants must fit.
    Operand operand(const Value &value, Domain domain, const Member *counterpart) const {
        switch (value.form) {
        case Value::Form::member:
            return Operand{value.member.source, value.member.offset, 0, {}};
        case Value::Form::integer:
            if (domain == Domain::text) {
                refuse(value.position, mismatch(domain, counterpart, "an integer"));
            }
            return fitted(value.integer, value, counterpart);
        case Value::Form::text:
            if (domain == Domain::text) {
                return textConstant(value.text);
            }
            if (isEnumeration(counterpart)) {
                return enumerator(value.text, value.position, *counterpart);
            }
            refuse(value.position, mismatch(domain, counterpart, "a string"));
        case Value::Form::name:
            if (domain == Domain::integer && isEnumeration(counterpart)) {
                return enumerator(value.text, value.position, *counterpart);
            }
            refuse(value.position, "unknown member " + quoted(value.text));
        case Value::Form::parameter:
            break;
        }
        return parameter(value, domain, counterpart);
    }

    Operand parameter(const Value &value, Domain domain, const Member *counterpart) const {
        if (value.parameter >= parameters_.size()) {
            refuse(value.position, "parameter %" + std::to_string(value.parameter) + " used but only " +
                                       std::to_string(parameters_.size()) + " parameters given");
        }
        const std::string &text = parameters_[value.parameter];
        if (domain == Domain::text) {
            return textConstant(unquoted(text));
        }
        std::int64_t number = 0;
        switch (parseInteger(trimmed(text), number)) {
        case IntegerSyntax::valid:
            return fitted(number, value, counterpart);
        case IntegerSyntax::outOfRange:
            refuse(value.position, label(value) + " is out of range");
        case IntegerSyntax::malformed:
            break;
        }
        if (isEnumeration(counterpart)) {
            return enumerator(unquoted(trimmed(text)), value.position, *counterpart);
        }
        refuse(value.position, label(value) + " is not an integer" +
                                   (counterpart != nullptr ? ", as " + describe(*counterpart) + " needs" : ""));
    }

    Operand fitted(std::int64_t number, const Value &value, const Member *counterpart) const {
        if (counterpart != nullptr && !fits(number, counterpart->source)) {
            refuse(value.position, label(value) + " is out of range for " + describe(*counterpart));
        }
        return integerConstant(number);
    }

    static bool isEnumeration(const Member *member) { return member != nullptr && member->enumeration != nullptr; }

    static Operand enumerator(std::string_view name, std::size_t position, const Member &member) {
        const DDS_TypeCode &enumeration = *member.enumeration;
        for (DDS_UnsignedLong i = 0; i < enumeration.member_count; ++i) {
            if (enumeration.members[i].name != nullptr && name == enumeration.members[i].name) {
                return integerConstant(enumeration.members[i].label);
            }
        }
        const char *typeName = enumeration.name != nullptr ? enumeration.name : "its enumeration";
        refuse(position,
               quoted(name) + " is not an enumerator of " + typeName + ", the type of member " + quoted(member.path));
    }

    static std::string mismatch(Domain domain, const Member *counterpart, const char *what) {
        const std::string other =
            counterpart != nullptr ? describe(*counterpart) : (domain == Domain::integer ? "an integer" : "a string");
        return "cannot compare " + other + " with " + what;
    }

    // How an error names a constant: "17" or "parameter %1 ('17x')".
    std::string label(const Value &value) const {
        if (value.form != Value::Form::parameter) {
            return std::to_string(value.integer);
        }
        return "parameter %" + std::to_string(value.parameter) + " (" + quoted(parameters_[value.parameter]) + ")";
    }

    const std::vector<std::string> &parameters_;
};

std::vector<Step> bind(const Syntax &syntax, const std::vector<std::string> &parameters) {
    const Binder binder(parameters);
    std::vector<Step> steps;
    steps.reserve(syntax.comparisons.size());
    for (const ComparisonSyntax &comparison : syntax.comparisons) {
        steps.push_back(binder.bind(comparison));
    }
    return steps;
}

// --- evaluation ----------------------------------------------------------

template <typename Stored>
std::int64_t load(const std::byte *sample, std::size_t offset) noexcept {
    Stored value;
    std::memcpy(&value, sample + offset, sizeof value);
    return static_cast<std::int64_t>(value);
}

std::int64_t integerOf(const Operand &operand, const std::byte *sample) noexcept {
    switch (operand.source) {
    case Source::octet:
        return load<std::uint8_t>(sample, operand.offset);
    case Source::int16:
        return load<std::int16_t>(sample, operand.offset);
    case Source::uint16:
        return load<std::uint16_t>(sample, operand.offset);
    case Source::int32:
        return load<std::int32_t>(sample, operand.offset);
    case Source::uint32:
        return load<std::uint32_t>(sample, operand.offset);
    case Source::int64:
        return load<std::int64_t>(sample, operand.offset);
    default:
        return operand.integer;
    }
}

std::string_view textOf(const Operand &operand, const std::byte *sample) noexcept {
    if (operand.source != Source::string) {
        return operand.text;
    }
    const char *text = nullptr;
    std::memcpy(&text, sample + operand.offset, sizeof text);
    return text != nullptr ? std::string_view(text) : std::string_view{};
}

template <typename T>
bool related(Relation relation, const T &left, const T &right) noexcept {
    switch (relation) {
    case Relation::equal:
        return left == right;
    case Relation::notEqual:
        return left != right;
    case Relation::less:
        return left < right;
    case Relation::lessOrEqual:
        return left <= right;
    case Relation::greater:
        return left > right;
    case Relation::greaterOrEqual:
        return left >= right;
    default:
        return false;
    }
}

// SQL LIKE: % matches any run of characters, _ any one character. Greedy,
// going back to the last % on a mismatch: no recursion, no allocation.
bool like(std::string_view text, std::string_view pattern) noexcept {
    constexpr std::size_t kNone = std::string_view::npos;
    std::size_t t = 0;
    std::size_t p = 0;
    std::size_t lastPercent = kNone;
    std::size_t resumeAt = 0;
    while (t < text.size()) {
        if (p < pattern.size() && pattern[p] == '%') {
            lastPercent = p++;
            resumeAt = t;
        } else if (p < pattern.size() && (pattern[p] == '_' || pattern[p] == text[t])) {
            ++p;
            ++t;
        } else if (lastPercent != kNone) {
            p = lastPercent + 1;
            t = ++resumeAt;
        } else {
            return false;
        }
    }
    while (p < pattern.size() && pattern[p] == '%') {
        ++p;
    }
    return p == pattern.size();
}

bool holds(const Comparison &comparison, const std::byte *sample) noexcept {
    if (comparison.domain == Domain::integer) {
        return related(comparison.relation, integerOf(comparison.left, sample), integerOf(comparison.right, sample));
    }
    const std::string_view left = textOf(comparison.left, sample);
    const std::string_view right = textOf(comparison.right, sample);
    return comparison.relation == Relation::like ? like(left, right) : related(comparison.relation, left, right);
}

FilterError outOfMemory() { return FilterError{0, "out of memory"}; }

}  // namespace

ContentFilter::ContentFilter(std::string expression, std::shared_ptr<const filter::Syntax> syntax)
    : expression_(std::move(expression)), syntax_(std::move(syntax)) {}

ContentFilter::Compiled ContentFilter::compile(std::string_view expression, std::vector<std::string> parameters,
                                               const DDS_TypeCode *type) noexcept {
    try {
        if (DDS_TypeCode_kind(type) != DDS_TK_STRUCT) {
            return FilterError{0, "content filters need a struct type"};
        }
        ContentFilter compiled(std::string(expression),
                               std::make_shared<const filter::Syntax>(filter::parse(expression, *type)));
        if (std::optional<FilterError> error = compiled.setParameters(std::move(parameters))) {
            return std::move(*error);
        }
        return Compiled{std::move(compiled)};
    } catch (FilterError &error) {
        return std::move(error);
    } catch (const std::exception &) {
        return filter::outOfMemory();
    }
}

std::optional<FilterError> ContentFilter::setParameters(std::vector<std::string> parameters) noexcept {
    try {
        steps_ = filter::bind(*syntax_, parameters);
        parameters_ = std::move(parameters);
        return std::nullopt;
    } catch (FilterError &error) {
        return std::move(error);
    } catch (const std::exception &) {
        return filter::outOfMemory();
    }
}

bool ContentFilter::matches(const void *sample) const noexcept {
    if (sample == nullptr) {
        return false;
    }
    const auto *bytes = static_cast<const std::byte *>(sample);
    std::int32_t next = 0;
    while (next >= 0) {
        const filter::Step &step = steps_[static_cast<std::size_t>(next)];
        next = filter::holds(step.comparison, bytes) ? step.onTrue : step.onFalse;
    }
    return next == filter::kAccept;
}

}  // namespace vexar::filter
