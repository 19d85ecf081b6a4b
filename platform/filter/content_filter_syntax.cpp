// Lexer and recursive-descent parser of content filter expressions.
#include "platform/filter/content_filter_syntax.hpp"

#include <cctype>
#include <charconv>
#include <limits>
#include <utility>

#include "platform/runtime/text.hpp"

namespace vexar::filter {

namespace {

using runtime::equalsIgnoringCase;

bool isNameStart(char c) { return std::isalpha(static_cast<unsigned char>(c)) != 0 || c == '_'; }
bool isNameChar(char c) { return std::isalnum(static_cast<unsigned char>(c)) != 0 || c == '_'; }
bool isDigit(char c) { return c >= '0' && c <= '9'; }

// --- tokens --------------------------------------------------------------

enum class TokenKind { end, name, integer, text, parameter, relation, open, close, AND, OR, NOT, BETWEEN, LIKE };

struct Token {
    TokenKind kind = TokenKind::end;
    std::size_t position = 0;
    std::string_view spelling;
    std::int64_t integer = 0;  // integer
    std::string text;          // text
    unsigned parameter = 0;    // parameter
    Relation relation = Relation::equal;
};

struct Keyword {
    std::string_view spelling;
    TokenKind kind;
};
constexpr Keyword kKeywords[] = {{"AND", TokenKind::AND},
                                 {"OR", TokenKind::OR},
                                 {"NOT", TokenKind::NOT},
                                 {"BETWEEN", TokenKind::BETWEEN},
                                 {"LIKE", TokenKind::LIKE}};

struct Operator {
    std::string_view spelling;
    Relation relation;
};
// Two-character spellings first, so that "<=" is not read as "<".
constexpr Operator kOperators[] = {{"<>", Relation::notEqual},    {"!=", Relation::notEqual},
                                   {"<=", Relation::lessOrEqual}, {">=", Relation::greaterOrEqual},
                                   {"=", Relation::equal},        {"<", Relation::less},
                                   {">", Relation::greater}};

constexpr unsigned kMaxParameter = 99;

class Lexer {
public:
    explicit Lexer(std::string_view text) : text_(text) {}

    Token next() {
        while (at_ < text_.size() && std::isspace(static_cast<unsigned char>(text_[at_])) != 0) {
            ++at_;
        }
        Token token;
        token.position = at_;
        if (at_ == text_.size()) {
            return token;
        }
        const char c = text_[at_];
        if (isNameStart(c)) {
            readName(token);
        } else if (isDigit(c) || ((c == '-' || c == '+') && at_ + 1 < text_.size() && isDigit(text_[at_ + 1]))) {
            readInteger(token);
        } else if (c == '\'') {
            readText(token);
        } else if (c == '%') {
            readParameter(token);
        } else if (c == '(' || c == ')') {
            token.kind = c == '(' ? TokenKind::open : TokenKind::close;
            take(token, 1);
        } else {
            readOperator(token);
        }
        return token;
    }

private:
    void take(Token &token, std::size_t length) {
        token.spelling = text_.substr(at_, length);
        at_ += length;
    }

    // A name or a dotted member path; a lone name may be a keyword.
    void readName(Token &token) {
        std::size_t end = at_;
        for (;;) {
            while (end < text_.size() && isNameChar(text_[end])) {
                ++end;
            }
            if (end == text_.size() || text_[end] != '.') {
                break;
            }
            if (end + 1 == text_.size() || !isNameStart(text_[end + 1])) {
                refuse(end + 1, "expected a member name after " + quoted(text_.substr(at_, end + 1 - at_)));
            }
            ++end;
        }
        take(token, end - at_);
        token.kind = TokenKind::name;
        for (const Keyword &keyword : kKeywords) {
            if (equalsIgnoringCase(token.spelling, keyword.spelling)) {
                token.kind = keyword.kind;
            }
        }
    }

    void readInteger(Token &token) {
        std::size_t end = at_ + 1;
        while (end < text_.size() && (isNameChar(text_[end]) || text_[end] == '.')) {
            ++end;
        }
        take(token, end - at_);
        token.kind = TokenKind::integer;
        switch (parseInteger(token.spelling, token.integer)) {
        case IntegerSyntax::valid:
            return;
        case IntegerSyntax::outOfRange:
            refuse(token.position, "integer " + std::string(token.spelling) + " is out of range");
        case IntegerSyntax::malformed:
            if (token.spelling.find('.') != std::string_view::npos) {
                refuse(token.position, "floating-point numbers are not supported: " + std::string(token.spelling));
            }
            refuse(token.position, "malformed number " + quoted(token.spelling));
        }
    }

    void readText(Token &token) {
        std::optional<QuotedText> literal = readQuoted(text_.substr(at_));
        if (!literal) {
            refuse(at_, "string not closed: a quote is missing");
        }
        take(token, literal->length);
        token.kind = TokenKind::text;
        token.text = std::move(literal->value);
    }

    void readParameter(Token &token) {
        std::size_t end = at_ + 1;
        while (end < text_.size() && isNameChar(text_[end])) {
            ++end;
        }
        take(token, end - at_);
        token.kind = TokenKind::parameter;
        const std::string_view digits = token.spelling.substr(1);
        const auto [last, error] = std::from_chars(digits.data(), digits.data() + digits.size(), token.parameter);
        if (digits.empty() || error != std::errc{} || last != digits.data() + digits.size() ||
            token.parameter > kMaxParameter) {
            refuse(token.position, "malformed parameter " + quoted(token.spelling) + ": expected %0 to %99");
        }
    }

    void readOperator(Token &token) {
        for (const Operator &op : kOperators) {
            if (text_.substr(at_).starts_with(op.spelling)) {
                token.kind = TokenKind::relation;
                token.relation = op.relation;
                take(token, op.spelling.size());
                return;
            }
        }
        refuse(at_, "unexpected character " + quoted(text_.substr(at_, 1)));
    }

    std::string_view text_;
    std::size_t at_ = 0;
};

// --- member paths --------------------------------------------------------

const DDS_TypeCode *withoutAlias(const DDS_TypeCode *type) {
    while (type != nullptr && DDS_TypeCode_kind(type) == DDS_TK_ALIAS) {
        type = type->content_type;
    }
    return type;
}

const DDS_TypeCodeMember *findMember(const DDS_TypeCode &type, std::string_view name) {
    for (DDS_UnsignedLong i = 0; i < type.member_count; ++i) {
        if (type.members[i].name != nullptr && name == type.members[i].name) {
            return &type.members[i];
        }
    }
    return nullptr;
}

// How a member of this kind is stored, when the filter can read it.
std::optional<Source> sourceOf(DDS_TCKind kind) {
    switch (kind) {
    case DDS_TK_OCTET:
    case DDS_TK_BOOLEAN:
        return Source::octet;
    case DDS_TK_SHORT:
        return Source::int16;
    case DDS_TK_USHORT:
        return Source::uint16;
    case DDS_TK_LONG:
    case DDS_TK_ENUM:
        return Source::int32;
    case DDS_TK_ULONG:
        return Source::uint32;
    case DDS_TK_LONGLONG:
        return Source::int64;
    case DDS_TK_STRING:
        return Source::string;
    default:
        return std::nullopt;
    }
}

const char *describeKind(DDS_TCKind kind) {
    switch (kind) {
    case DDS_TK_STRUCT:
        return "a struct";
    case DDS_TK_UNION:
        return "a union";
    case DDS_TK_SEQUENCE:
        return "a sequence";
    case DDS_TK_ARRAY:
        return "an array";
    case DDS_TK_FLOAT:
    case DDS_TK_DOUBLE:
        return "a floating-point number";
    case DDS_TK_ULONGLONG:
        return "an unsigned long long";
    case DDS_TK_CHAR:
        return "a character";
    default:
        return "of an unknown kind";
    }
}

// The member at `path` (a.b.c) inside `root`; nothing when the path names
// no member. A path that names something the filter cannot read is refused.
std::optional<Member> resolveMember(const DDS_TypeCode &root, std::string_view path, std::size_t position) {
    Member member{std::string(path)};
    const DDS_TypeCode *type = &root;
    std::size_t start = 0;
    for (;;) {
        const std::size_t dot = path.find('.', start);
        const std::string_view walked = path.substr(0, dot);
        const DDS_TCKind kind = DDS_TypeCode_kind(type);
        if (kind != DDS_TK_STRUCT) {
            const std::string parent = quoted(path.substr(0, start - 1));
            refuse(position, sourceOf(kind) ? "member " + parent + " has no members"
                                            : "member " + parent + " cannot be filtered: it is " + describeKind(kind));
        }
        const DDS_TypeCodeMember *found = findMember(*type, path.substr(start, dot - start));
        if (found == nullptr) {
            return std::nullopt;
        }
        member.offset += found->offset;
        type = withoutAlias(found->type);
        if (type == nullptr) {
            refuse(position, "member " + quoted(walked) + " has no type code");
        }
        if (dot == std::string_view::npos) {
            break;
        }
        start = dot + 1;
    }
    const DDS_TCKind kind = DDS_TypeCode_kind(type);
    if (kind == DDS_TK_STRUCT) {
        refuse(position, "member " + quoted(path) + " is a struct: compare one of its members");
    }
    const std::optional<Source> source = sourceOf(kind);
    if (!source) {
        refuse(position, "member " + quoted(path) + " cannot be filtered: it is " + describeKind(kind));
    }
    member.source = *source;
    member.enumeration = kind == DDS_TK_ENUM ? type : nullptr;
    return member;
}

// --- the parser ----------------------------------------------------------

// A condition while it is parsed: a span of comparisons (which are numbered
// in the order written) and how they are joined.
struct Node {
    enum class Kind { comparison, all, any, negation };
    Kind kind = Kind::comparison;
    std::int32_t first = 0;  // index of its first comparison
    std::vector<Node> children;
};

// Deeper nesting of parentheses and NOT is refused rather than risking
// the stack.
constexpr int kMaxNesting = 100;

class Parser {
public:
    Parser(std::string_view expression, const DDS_TypeCode &type) : lexer_(expression), type_(type) { advance(); }

    Syntax parse() {
        if (token_.kind == TokenKind::end) {
            refuse(0, "the expression is empty");
        }
        const Node root = condition();
        if (token_.kind == TokenKind::close) {
            refuse(token_.position, "unbalanced ')'");
        }
        if (token_.kind != TokenKind::end) {
            refuse(token_.position, "expected AND or OR before " + quoted(token_.spelling));
        }
        link(root, kAccept, kReject);
        return std::move(syntax_);
    }

private:
    void advance() {
        previous_ = token_.spelling;
        token_ = lexer_.next();
    }

    bool accept(TokenKind kind) {
        if (token_.kind != kind) {
            return false;
        }
        advance();
        return true;
    }

    // What to say about the current token when it is not what was expected.
    std::string found() const {
        return token_.kind == TokenKind::end ? "after " + quoted(previous_) : "before " + quoted(token_.spelling);
    }

    // condition := conjunction (OR conjunction)*
    Node condition() { return joined(Node::Kind::any, TokenKind::OR, &Parser::conjunction); }

    // conjunction := negation (AND negation)*
    Node conjunction() { return joined(Node::Kind::all, TokenKind::AND, &Parser::negation); }

    Node joined(Node::Kind kind, TokenKind separator, Node (Parser::*part)()) {
        Node first = (this->*part)();
        if (token_.kind != separator) {
            return first;
        }
        Node node{kind, first.first};
        node.children.push_back(std::move(first));
        while (accept(separator)) {
            node.children.push_back((this->*part)());
        }
        return node;
    }

    // negation := NOT negation | '(' condition ')' | predicate
    Node negation() {
        const std::size_t position = token_.position;
        if (accept(TokenKind::NOT)) {
            Nesting nesting(*this, position);
            return negated(negation());
        }
        if (accept(TokenKind::open)) {
            Nesting nesting(*this, position);
            Node inner = condition();
            if (!accept(TokenKind::close)) {
                refuse(token_.position,
                       "expected ')' to close the '(' at column " + std::to_string(position + 1) + ", " + found());
            }
            return inner;
        }
        return predicate();
    }

    // predicate := value relation value
    //            | value [NOT] BETWEEN value AND value
    //            | value [NOT] LIKE value
    Node predicate() {
        if (!startsValue()) {
            refuse(token_.position, "expected a condition " + found());
        }
        Value left = value();
        const std::size_t position = token_.position;
        const std::string_view spelling = token_.spelling;
        if (token_.kind == TokenKind::relation) {
            const Relation relation = token_.relation;
            advance();
            return comparison(std::move(left), relation, position, operand(spelling));
        }
        const bool inverted = accept(TokenKind::NOT);
        if (accept(TokenKind::BETWEEN)) {
            Node range = between(std::move(left), position);
            return inverted ? negated(std::move(range)) : range;
        }
        if (accept(TokenKind::LIKE)) {
            Node like = comparison(std::move(left), Relation::like, position, operand("LIKE"));
            return inverted ? negated(std::move(like)) : like;
        }
        refuse(token_.position,
               inverted ? "expected BETWEEN or LIKE after 'NOT'" : "expected a comparison operator " + found());
    }

    // x BETWEEN low AND high is low <= x AND x <= high.
    Node between(Value subject, std::size_t position) {
        Value low = operand("BETWEEN");
        if (!accept(TokenKind::AND)) {
            refuse(token_.position, "expected AND between the bounds of BETWEEN, " + found());
        }
        Value high = operand("AND");
        Node node{Node::Kind::all, static_cast<std::int32_t>(syntax_.comparisons.size())};
        node.children.push_back(comparison(subject, Relation::greaterOrEqual, position, std::move(low)));
        node.children.push_back(comparison(std::move(subject), Relation::lessOrEqual, position, std::move(high)));
        return node;
    }

    Node comparison(Value left, Relation relation, std::size_t position, Value right) {
        const auto index = static_cast<std::int32_t>(syntax_.comparisons.size());
        syntax_.comparisons.push_back({relation, position, std::move(left), std::move(right)});
        return Node{Node::Kind::comparison, index};
    }

    static Node negated(Node inner) {
        Node node{Node::Kind::negation, inner.first};
        node.children.push_back(std::move(inner));
        return node;
    }

    bool startsValue() const {
        switch (token_.kind) {
        case TokenKind::name:
        case TokenKind::integer:
        case TokenKind::text:
        case TokenKind::parameter:
            return true;
        default:
            return false;
        }
    }

    // The value that must follow `after`.
    Value operand(std::string_view after) {
        if (!startsValue()) {
            refuse(token_.position, "expected a value after " + quoted(after));
        }
        return value();
    }

    Value value() {
        Value value;
        value.position = token_.position;
        switch (token_.kind) {
        case TokenKind::name:
            if (std::optional<Member> member = resolveMember(type_, token_.spelling, token_.position)) {
                value.form = Value::Form::member;
                value.member = std::move(*member);
            } else if (token_.spelling.find('.') == std::string_view::npos) {
                value.form = Value::Form::name;
                value.text = std::string(token_.spelling);
            } else {
                refuse(token_.position, "unknown member " + quoted(token_.spelling));
            }
            break;
        case TokenKind::integer:
            value.form = Value::Form::integer;
            value.integer = token_.integer;
            break;
        case TokenKind::text:
            value.form = Value::Form::text;
            value.text = std::move(token_.text);
            break;
        default:
            value.form = Value::Form::parameter;
            value.parameter = token_.parameter;
            break;
        }
        advance();
        return value;
    }

    // Sets the branch targets of every comparison under `node`: where to
    // go when `node` as a whole is true or false.
    void link(const Node &node, std::int32_t onTrue, std::int32_t onFalse) {
        switch (node.kind) {
        case Node::Kind::comparison:
            syntax_.comparisons[static_cast<std::size_t>(node.first)].onTrue = onTrue;
            syntax_.comparisons[static_cast<std::size_t>(node.first)].onFalse = onFalse;
            return;
        case Node::Kind::negation:
            link(node.children.front(), onFalse, onTrue);
            return;
        case Node::Kind::all:
        case Node::Kind::any:
            for (std::size_t i = 0; i < node.children.size(); ++i) {
                const bool last = i + 1 == node.children.size();
                const std::int32_t next = last ? 0 : node.children[i + 1].first;
                if (node.kind == Node::Kind::all) {
                    link(node.children[i], last ? onTrue : next, onFalse);
                } else {
                    link(node.children[i], onTrue, last ? onFalse : next);
                }
            }
            return;
        }
    }

    // Counts one level of nesting for as long as it lives.
    class Nesting {
    public:
        Nesting(Parser &parser, std::size_t position) : parser_(parser) {
            if (++parser_.depth_ > kMaxNesting) {
                refuse(position, "expression nested too deeply (more than " + std::to_string(kMaxNesting) + " levels)");
            }
        }
        ~Nesting() { --parser_.depth_; }
        Nesting(const Nesting &) = delete;
        Nesting &operator=(const Nesting &) = delete;

    private:
        Parser &parser_;
    };

    Lexer lexer_;
    const DDS_TypeCode &type_;
    Token token_;
    std::string_view previous_;
    int depth_ = 0;
    Syntax syntax_;
};

}  // namespace

Syntax parse(std::string_view expression, const DDS_TypeCode &type) { return Parser(expression, type).parse(); }

IntegerSyntax parseInteger(std::string_view text, std::int64_t &value) noexcept {
    const bool negative = !text.empty() && text.front() == '-';
    if (!text.empty() && (text.front() == '-' || text.front() == '+')) {
        text.remove_prefix(1);
    }
    int base = 10;
    if (text.size() > 2 && text[0] == '0' && (text[1] == 'x' || text[1] == 'X')) {
        text.remove_prefix(2);
        base = 16;
    }
    std::uint64_t magnitude = 0;
    const auto [last, error] = std::from_chars(text.data(), text.data() + text.size(), magnitude, base);
    if (last != text.data() + text.size() || error == std::errc::invalid_argument) {
        return IntegerSyntax::malformed;
    }
    constexpr std::uint64_t kLargestPositive = std::numeric_limits<std::int64_t>::max();
    if (error == std::errc::result_out_of_range || magnitude > kLargestPositive + (negative ? 1 : 0)) {
        return IntegerSyntax::outOfRange;
    }
    value = negative ? static_cast<std::int64_t>(0 - magnitude) : static_cast<std::int64_t>(magnitude);
    return IntegerSyntax::valid;
}

std::optional<QuotedText> readQuoted(std::string_view text) {
    QuotedText literal;
    for (std::size_t at = 1; at < text.size(); ++at) {
        if (text[at] != '\'') {
            literal.value += text[at];
        } else if (at + 1 < text.size() && text[at + 1] == '\'') {
            literal.value += '\'';
            ++at;
        } else {
            literal.length = at + 1;
            return literal;
        }
    }
    return std::nullopt;
}

}  // namespace vexar::filter
