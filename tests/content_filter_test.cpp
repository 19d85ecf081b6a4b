// Content filters: what they accept over real samples, what they refuse and
// how they say so.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <functional>
#include <stdexcept>
#include <string>
#include <vector>

#include "platform/filter/content_filter.hpp"
#include "type/vexar.h"

using vexar::filter::ContentFilter;
using vexar::filter::FilterError;

namespace {

constexpr const char *kLoggerExpression =
    "targetHostAndAppId.rtps_host_id = %0 and targetHostAndAppId.rtps_app_id = %1";

ContentFilter compiled(const std::string &expression, std::vector<std::string> parameters,
                       const DDS_TypeCode *type = QTV_VX_ADMIN_CommandRequest_get_typecode()) {
    ContentFilter::Compiled result = ContentFilter::compile(expression, std::move(parameters), type);
    if (const auto *error = std::get_if<FilterError>(&result)) {
        throw std::runtime_error(expression + ": " + error->describe());  // gtest reports it
    }
    return std::get<ContentFilter>(std::move(result));
}

FilterError refusal(const std::string &expression, std::vector<std::string> parameters = {},
                    const DDS_TypeCode *type = QTV_VX_ADMIN_CommandRequest_get_typecode()) {
    ContentFilter::Compiled result = ContentFilter::compile(expression, std::move(parameters), type);
    EXPECT_TRUE(std::holds_alternative<FilterError>(result)) << expression << " was accepted";
    return std::holds_alternative<FilterError>(result) ? std::get<FilterError>(result) : FilterError{};
}

QTV_VX_ADMIN_CommandRequest request(DDS_Long host, DDS_Long app, DDS_Long invocation = 0) {
    QTV_VX_ADMIN_CommandRequest sample{};
    sample.targetHostAndAppId = {host, app};
    sample.originatorHostAndAppId = {app, host};
    sample.invocation = invocation;
    return sample;
}

QTV_VX_LogMessage logMessage(const char *category) {
    QTV_VX_LogMessage sample{};
    sample.category = const_cast<char *>(category);
    return sample;
}

}  // namespace

// The logger's own expression selects its application; new parameters change
// what matches and bad ones keep the old.
TEST(ContentFilter, LoggerExpressionFollowsItsParameters) {
    ContentFilter filter = compiled(kLoggerExpression, {"-5", "17"});
    const auto mine = request(-5, 17), extremes = request(INT32_MAX, INT32_MIN);
    EXPECT_TRUE(filter.matches(&mine));
    for (const auto &other : {request(-5, 18), request(5, 17), request(17, -5), extremes}) {
        EXPECT_FALSE(filter.matches(&other))
            << other.targetHostAndAppId.rtps_host_id << "," << other.targetHostAndAppId.rtps_app_id;
    }

    EXPECT_FALSE(filter.setParameters({"0x7fffffff", " -2147483648 "}).has_value());
    EXPECT_FALSE(filter.matches(&mine));
    EXPECT_TRUE(filter.matches(&extremes));

    const std::optional<FilterError> error = filter.setParameters({"1"});
    ASSERT_TRUE(error.has_value());
    EXPECT_EQ(error->message, "parameter %1 used but only 1 parameters given");
    EXPECT_TRUE(filter.matches(&extremes));
    EXPECT_EQ(filter.parameters(), (std::vector<std::string>{"0x7fffffff", " -2147483648 "}));
}

namespace {

// $h, $a and $i stand for the request's target host, target app and invocation.
std::string withMembers(std::string expression) {
    for (const auto &[shorthand, path] : {std::pair{"$h", "targetHostAndAppId.rtps_host_id"},
                                          {"$a", "targetHostAndAppId.rtps_app_id"},
                                          {"$i", "invocation"}}) {
        for (std::size_t at; (at = expression.find(shorthand)) != std::string::npos;) {
            expression.replace(at, 2, path);
        }
    }
    return expression;
}

}  // namespace

// Each expression against every request with h, a, i in {-1, 0, 1}.
TEST(ContentFilter, LogicAndRelationsAgreeWithTheirMeaning) {
    using Truth = std::function<bool(int h, int a, int i)>;
    const std::pair<const char *, Truth> cases[] = {
        {"$h = 1 OR $a = 1 AND $i = 1", [](int h, int a, int i) { return h == 1 || (a == 1 && i == 1); }},
        {"($h = 1 or $a = 1) and $i = 1", [](int h, int a, int i) { return (h == 1 || a == 1) && i == 1; }},
        {"NOT $h = 1 AND $a = 1", [](int h, int a, int) { return h != 1 && a == 1; }},
        {"not ($h = 1 AnD $a = 1) Or $i = 1", [](int h, int a, int i) { return !(h == 1 && a == 1) || i == 1; }},
        {"$h <> $a", [](int h, int a, int) { return h != a; }},
        {"$h != $a", [](int h, int a, int) { return h != a; }},
        {"$h < $a", [](int h, int a, int) { return h < a; }},
        {"$h > $a", [](int h, int a, int) { return h > a; }},
        {"-1 >= $h", [](int h, int, int) { return h <= -1; }},
        {"$h BETWEEN $a AND $i", [](int h, int a, int i) { return a <= h && h <= i; }},
        {"$h NOT BETWEEN -1 AND 0 OR $i = 0", [](int h, int, int i) { return h > 0 || i == 0; }},
        {"1 = 1 AND $h = 0x1 OR 2 < 1", [](int h, int, int) { return h == 1; }},
    };
    for (const auto &[text, truth] : cases) {
        const ContentFilter filter = compiled(withMembers(text), {});
        for (int h = -1; h <= 1; ++h) {
            for (int a = -1; a <= 1; ++a) {
                for (int i = -1; i <= 1; ++i) {
                    const auto sample = request(h, a, i);
                    EXPECT_EQ(filter.matches(&sample), truth(h, a, i)) << text << " at " << h << a << i;
                }
            }
        }
    }
}

TEST(ContentFilter, StringsCompareBytewiseAndLikeMatchesWildcards) {
    const std::pair<const char *, std::vector<const char *>> cases[] = {
        {"category = 'com.qtv'", {"com.qtv"}},
        {"category <> 'com.qtv'", {"", "com", "com.qtv.oblx.config.Logger", "it's", "\xc3\xa9t\xc3\xa9"}},
        {"category < 'com.qtv'", {"", "com"}},
        {"category >= 'com.qtv.'", {"com.qtv.oblx.config.Logger", "it's", "\xc3\xa9t\xc3\xa9"}},
        {"category = 'it''s'", {"it's"}},
        {"category LIKE 'com.%'", {"com.qtv", "com.qtv.oblx.config.Logger"}},
        {"category LIKE 'c_m%q%'", {"com.qtv", "com.qtv.oblx.config.Logger"}},
        {"category LIKE '%'", {"", "com", "com.qtv", "com.qtv.oblx.config.Logger", "it's", "\xc3\xa9t\xc3\xa9"}},
        {"category NOT LIKE '%o%'", {"", "it's", "\xc3\xa9t\xc3\xa9"}},
        {"category LIKE %0", {"com.qtv"}},
        {"category = %1", {"it's"}},
    };
    const char *categories[] = {nullptr, "com", "com.qtv", "com.qtv.oblx.config.Logger", "it's", "\xc3\xa9t\xc3\xa9"};
    for (const auto &[expression, expected] : cases) {
        const ContentFilter filter = compiled(expression, {"com.qt_", "'it''s'"}, QTV_VX_LogMessage_get_typecode());
        for (const char *category : categories) {
            const auto sample = logMessage(category);
            const char *shown = category != nullptr ? category : "";
            const bool wanted = std::find_if(expected.begin(), expected.end(),
                                             [&](const char *c) { return std::string(c) == shown; }) != expected.end();
            EXPECT_EQ(filter.matches(&sample), wanted) << expression << " on '" << shown << "'";
        }
    }
}

TEST(ContentFilter, EnumerationsCompareByValueOrByEnumeratorName) {
    QTV_VX_ADMIN_State state{};
    state.state = QTV_VX_STATE_OPERATIONAL;
    for (const char *expression :
         {"state = 1", "state = QTV_VX_STATE_OPERATIONAL", "state = 'QTV_VX_STATE_OPERATIONAL'",
          "state > QTV_VX_STATE_INITIALIZING AND state < 2", "state = %0"}) {
        const ContentFilter filter =
            compiled(expression, {"QTV_VX_STATE_OPERATIONAL"}, QTV_VX_ADMIN_State_get_typecode());
        EXPECT_TRUE(filter.matches(&state)) << expression;
    }
    EXPECT_EQ(refusal("state = QTV_VX_STATE_LOST", {}, QTV_VX_ADMIN_State_get_typecode()).message,
              "'QTV_VX_STATE_LOST' is not an enumerator of QTV::VX::ADMIN::StateKind, the type of member 'state'");
}

TEST(ContentFilter, RefusalsSayWhatIsWrongAndWhere) {
    struct Case {
        const char *expression;
        std::size_t position;
        const char *message;
        const DDS_TypeCode *type = QTV_VX_ADMIN_CommandRequest_get_typecode();
    };
    const DDS_TypeCode *logMessageType = QTV_VX_LogMessage_get_typecode();
    const DDS_TypeCode *stateType = QTV_VX_ADMIN_State_get_typecode();
    const Case cases[] = {
        {"invocation = 1 AND nothing = 2", 19, "unknown member 'nothing'"},
        {"invocation = 1 # 2", 15, "unexpected character '#'"},
        {"invocation = 1 AND", 18, "expected a condition after 'AND'"},
        {"invocation 5", 11, "expected a comparison operator before '5'"},
        {"invocation = 1 invocation = 2", 15, "expected AND or OR before 'invocation'"},
        {"(invocation = 1", 15, "expected ')' to close the '(' at column 1, after '1'"},
        {"invocation NOT = 1", 15, "expected BETWEEN or LIKE after 'NOT'"},
        {"invocation BETWEEN 1 OR 2", 21, "expected AND between the bounds of BETWEEN, before 'OR'"},
        {"invocation = %2", 13, "parameter %2 used but only 2 parameters given"},
        {"invocation = %0", 13, "parameter %0 ('x') is not an integer, as long member 'invocation' needs"},
        {"invocation = 4294967296", 13, "4294967296 is out of range for long member 'invocation'"},
        {"invocation = 1.5", 13, "floating-point numbers are not supported: 1.5"},
        {"invocation = 'x'", 13, "cannot compare long member 'invocation' with a string"},
        {"invocation = 'it''s", 13, "string not closed: a quote is missing"},
        {"targetHostAndAppId = 1", 0, "member 'targetHostAndAppId' is a struct: compare one of its members"},
        {"command.filterLevel = 1", 0, "member 'command' cannot be filtered: it is a union"},
        {"category = 5", 11, "cannot compare string member 'category' with an integer", logMessageType},
        {"qtvLoggerVerbosities.category = 1", 0, "member 'qtvLoggerVerbosities' cannot be filtered: it is an array",
         stateType},
    };
    for (const Case &c : cases) {
        const FilterError error = refusal(c.expression, {"x", "y"}, c.type);
        EXPECT_EQ(error.message, c.message) << c.expression;
        EXPECT_EQ(error.position, c.position) << c.expression;
    }
    EXPECT_EQ(refusal("invocation = %0", {"4294967296"}).message,
              "parameter %0 ('4294967296') is out of range for long member 'invocation'");
    EXPECT_EQ(refusal("invocation = 1", {}, nullptr).message, "content filters need a struct type");
    EXPECT_EQ(refusal(std::string(150, '(') + "invocation = 1" + std::string(150, ')')).message,
              "expression nested too deeply (more than 100 levels)");
}
