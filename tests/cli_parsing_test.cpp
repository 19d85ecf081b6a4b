// The command-line tool's reading of its input: names of levels and
// enumerations, HOST:APP ids, and the options of a subcommand.
#include <gtest/gtest.h>

#include <cstdlib>
#include <string_view>
#include <utility>
#include <vector>

#include "app_id.hpp"
#include "app_identity.hpp"
#include "arguments.hpp"
#include "names.hpp"
#include "usage_error.hpp"

namespace {

using namespace vexar::cli;

std::string usageErrorOf(auto &&action) {
    try {
        action();
    } catch (const UsageError &error) {
        return error.what();
    }
    return "(no error)";
}

// Names in any case and numbers are run end to end by the admin script;
// here the spellings and bounds it does not use.
TEST(CliNames, NamesInAnyCaseOrWholeNumbersWithinEachEnumeration) {
    EXPECT_EQ(parseName(kLevelNames, "650"), 650);
    EXPECT_EQ(nameOrNumber(kLevelNames, 650), "650");
    EXPECT_EQ(parseName(kVerbosityNames, "status-local"), 3);
    EXPECT_EQ(parseName(kVerbosityNames, "Status_Remote"), 4);
    EXPECT_EQ(parseName(kVerbosityNames, "6"), std::nullopt);
    EXPECT_EQ(parseName(kCategoryNames, "ALL"), std::nullopt) << "ALL is the set-verbosity command's own word";
    EXPECT_EQ(parseName(kPrintFormatNames, "-1"), std::nullopt);
    // Numbers are whole signed 32-bit decimals.
    EXPECT_EQ(parseInt32("2147483647"), 2147483647);
    EXPECT_EQ(parseInt32("-2147483648"), -2147483647 - 1);
    for (std::string_view bad : {"2147483648", "", " 1", "1 ", "+1", "1e3", "0x10", "12abc"}) {
        EXPECT_EQ(parseInt32(bad), std::nullopt) << bad;
    }
}

TEST(CliAppId, ReadsWhatItPrintsDecimalAndPrefixedHexAndSelectsByIdOrKind) {
    AppId id{0x01100f3a, static_cast<std::int32_t>(0x8b2c4d1eu)};
    EXPECT_EQ(formatAppId(id), "01100f3a:8b2c4d1e");
    EXPECT_EQ(formatAppId({-1, 0}), "ffffffff:00000000");
    const std::pair<std::string_view, AppId> good[] = {
        {"01100F3A:8B2C4D1E", id},   {"-5:17", {-5, 17}},
        {"0x1a:0X2B", {0x1a, 0x2b}}, {"0xffffffff:1", {-1, 1}},
        {"1234567:1", {1234567, 1}}, {"12345678:1", {0x12345678, 1}},  // eight digits are the printed hex form
    };
    for (const auto &[text, expected] : good) EXPECT_EQ(parseAppId(text), expected) << text;
    for (std::string_view bad : {"1:", ":2", "1:2:3", "0x123456789:1", "99999999999:1", "0x:1", "a:b", "12"}) {
        EXPECT_EQ(parseAppId(bad), std::nullopt) << bad;
    }
    EXPECT_NE(usageErrorOf([] { AppSelector::parse(""); }), "(no error)");
}

TEST(CliAppId, IdentityIsReadOnlyInItsOwnForm) {
    std::optional<AppIdentity> identity = AppIdentity::parse("my@tool@box-1.lan[4242]");
    ASSERT_TRUE(identity);
    EXPECT_EQ(identity->exe, "my@tool") << "a host name has no '@', an executable may";
    EXPECT_EQ(identity->host, "box-1.lan");
    EXPECT_EQ(identity->pid, 4242);
    EXPECT_EQ(identity->label(), "my@tool@box-1.lan[4242]");
    // A participant the application named itself is not taken for one.
    for (std::string_view other : {"", "demo", "demo@box", "demo@box[]", "demo@box[x1]", "@box[1]", "demo@[1]",
                                   "demo@box[0]", "demo@box[12] ", "demo@box[-3]"}) {
        EXPECT_EQ(AppIdentity::parse(other), std::nullopt) << other;
    }
    AppIdentities identities;
    EXPECT_TRUE(identities.learn({1, 2}, "demo@box[7]"));
    EXPECT_FALSE(identities.learn({1, 2}, "demo@box[7]")) << "nothing new";
    EXPECT_FALSE(identities.learn({1, 3}, "lent participant"));
    EXPECT_EQ(identities.labelOf({1, 2}), "demo@box[7]");
    EXPECT_EQ(identities.labelOf({1, 3}), "");
}

// Every form a target takes, against two loggers of one kind on one host
// and one of another kind elsewhere.
TEST(CliAppId, TargetsSelectByIdKindExecutableIdentityHostAndGlob) {
    struct Logger {
        AppId id;
        std::string_view kind, identity;
    };
    const Logger one{{0x0a, 1}, "lidar", "lidard@rover[100]"};
    const Logger two{{0x0a, 2}, "lidar", "lidard@rover[200]"};
    const Logger cam{{0x0b, 1}, "camera", "camd@mast[300]"};
    const Logger unnamed{{0x0c, 1}, "", ""};
    const struct {
        std::string_view target;
        std::vector<bool> selects;  // one, two, cam, unnamed
    } cases[] = {
        {"0000000a:00000002", {false, true, false, false}},
        {"lidar", {true, true, false, false}},
        {"camd", {false, false, true, false}},
        {"lidard@rover[200]", {false, true, false, false}},
        {"rover:*", {true, true, false, false}},
        {"0000000a:*", {true, true, false, false}},
        {"lid*", {true, true, false, false}},
        {"*@mast*", {false, false, true, false}},
        {"cam?ra", {false, false, true, false}},
        {"*", {true, true, true, true}},
        {"rover", {false, false, false, false}},  // a host alone is no name of an application
        {"lidard@rover", {false, false, false, false}},
    };
    for (const auto &[target, selects] : cases) {
        AppSelector selector = AppSelector::parse(target);
        std::vector<bool> got;
        for (const Logger &logger : {one, two, cam, unnamed}) {
            got.push_back(selector.matches(logger.id, logger.kind, logger.identity));
        }
        EXPECT_EQ(got, selects) << target;
    }
    EXPECT_FALSE(AppSelector::parse("lidar").isGlob());
    EXPECT_TRUE(AppSelector::parse("rover:*").isGlob());
    EXPECT_EQ(usageErrorOf([] { AppSelector::parse("rover:lidard"); }).substr(0, 12), "bad HOST:APP");
    EXPECT_EQ(AppSelector::parse("nosuch").describe(), "kind 'nosuch'");
    EXPECT_EQ(seenNames({"lidar", "camera"}), "camera, lidar");
    EXPECT_EQ(seenNames({}), "none");
}

constexpr OptionDescription kOptions[] = {
    {"count", "N", "how many", 'c'}, {"json", "", "machine output", 'j'}, {"n", "N", "the last N"}};
constexpr CommandDescription kCommand{"try", "TARGET [VALUE]", "A command for tests.", "", kOptions, 1, 2};

ParsedArguments parse(std::initializer_list<std::string_view> words) {
    std::vector<std::string_view> list(words);
    return parseArguments(kCommand, list);
}

TEST(CliArguments, OptionsTakeValuesEitherWayOperandsMayBeNegativeAndMistakesAreNamed) {
    ParsedArguments parsed = parse({"--count", "3", "target", "--json", "-5"});
    EXPECT_TRUE(parsed.value("count") == "3" && parsed.has("json"));
    EXPECT_EQ(parsed.operands, (std::vector<std::string>{"target", "-5"}));
    EXPECT_EQ(parse({"--count=4", "t"}).integer("count", 0, 1, 10), 4);
    ParsedArguments repeated = parse({"--count=1", "t", "--count", "2"});
    EXPECT_EQ(repeated.values("count"), (std::vector<std::string>{"1", "2"})) << "a repeated option keeps each value";
    EXPECT_EQ(repeated.value("count"), "2") << "the last wins where one is wanted";
    EXPECT_EQ(parse({"--", "--json"}).operands, (std::vector<std::string>{"--json"}));
    EXPECT_EQ(parse({"t", "--domain", "7"}).domain(), 7);
    EXPECT_TRUE(parse({"--count", "3", "-h"}).helpRequested) << "help needs no operands";
    // The program's own usage checks cover the other mistakes, by their messages.
    EXPECT_EQ(usageErrorOf([] { parse({"t", "-x"}); }), "unknown option '-x'") << "not a negative number";
    EXPECT_EQ(usageErrorOf([] { parse({"t", "--json=yes"}); }), "option --json takes no value");
    EXPECT_EQ(usageErrorOf([] {
                  parse({"t", "--count", "0"}).integer("count", 1, 1, 10);
              }),
              "bad --count '0' (expected a whole number from 1 to 10)");
    // Past the largest deadline a clock can hold, a time-out would end at once.
    for (std::string_view bad : {"soon", "-1", "-0.5", "inf", "-inf", "nan", "", "1e10", "1e300", "5s"}) {
        EXPECT_NE(usageErrorOf([&] { parse({"t", "--count", bad}).seconds("count", 1); }), "(no error)") << bad;
    }
    EXPECT_DOUBLE_EQ(parse({"t", "--count", "0.5"}).seconds("count", 1), 0.5);
    EXPECT_DOUBLE_EQ(parse({"t", "--count", "1e9"}).seconds("count", 1), 1e9);
}

TEST(CliArguments, ShortOptionsAreTheLongOnesUnderOneLetter) {
    ParsedArguments parsed = parse({"-c", "1", "t", "-c2", "-j", "-n", "5", "-n=6"});
    EXPECT_EQ(parsed.values("count"), (std::vector<std::string>{"1", "2"})) << "stored under the long name";
    EXPECT_TRUE(parsed.has("json"));
    EXPECT_EQ(parsed.values("n"), (std::vector<std::string>{"5", "6"}));
    EXPECT_TRUE(helpText(kCommand).find("-c, --count N") != std::string::npos);
    EXPECT_EQ(usageErrorOf([] { parse({"t", "-jx"}); }), "unknown option '-jx'") << "a flag takes no value";
    EXPECT_EQ(usageErrorOf([] { parse({"t", "--c", "1"}); }), "unknown option '--c'");
    EXPECT_EQ(usageErrorOf([] { parse({"t", "-c"}); }), "option --count needs a value (N)");
}

// The domain: --domain, else VEXAR_DOMAIN, else ROS_DOMAIN_ID, else 0.
TEST(CliArguments, DomainComesFromTheOptionThenTheEnvironment) {
    const struct {
        const char *vexar, *ros;
        std::initializer_list<std::string_view> words;
        std::int32_t domain;
    } cases[] = {
        {nullptr, nullptr, {"t"}, 0},
        {"12", "34", {"t"}, 12},
        {"", "34", {"t"}, 34},
        {nullptr, "34", {"t"}, 34},
        {"12", "34", {"t", "--domain", "7"}, 7},
        {"bad", "34", {"t", "--domain", "7"}, 7},
    };
    for (const auto &[vexar, ros, words, domain] : cases) {
        vexar != nullptr ? setenv("VEXAR_DOMAIN", vexar, 1) : unsetenv("VEXAR_DOMAIN");
        ros != nullptr ? setenv("ROS_DOMAIN_ID", ros, 1) : unsetenv("ROS_DOMAIN_ID");
        EXPECT_EQ(parse(words).domain(), domain) << (vexar ? vexar : "-") << " " << (ros ? ros : "-");
    }
    setenv("VEXAR_DOMAIN", "231", 1);
    EXPECT_EQ(usageErrorOf([] { parse({"t"}).domain(); }),
              "bad VEXAR_DOMAIN '231' (expected a domain id from 0 to 230)");
    unsetenv("VEXAR_DOMAIN");
    setenv("ROS_DOMAIN_ID", "x", 1);
    EXPECT_NE(usageErrorOf([] { parse({"t"}).domain(); }), "(no error)");
    unsetenv("ROS_DOMAIN_ID");
}

}  // namespace
