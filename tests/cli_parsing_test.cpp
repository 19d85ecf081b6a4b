// The command-line tool's reading of its input: names of levels and
// enumerations, HOST:APP ids, and the options of a subcommand.
#include <gtest/gtest.h>

#include <array>
#include <string_view>

#include "app_id.hpp"
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

TEST(CliNames, LevelsAreNamesInAnyCaseOrAnyNumber) {
    EXPECT_EQ(parseName(kLevelNames, "debug"), 700);
    EXPECT_EQ(parseName(kLevelNames, "DEBUG"), 700);
    EXPECT_EQ(parseName(kLevelNames, "700"), 700);
    EXPECT_EQ(parseName(kLevelNames, "650"), 650);
    EXPECT_EQ(parseName(kLevelNames, "-5"), -5) << "the logger itself refuses negative levels";
    EXPECT_EQ(parseName(kLevelNames, "loud"), std::nullopt);
    EXPECT_EQ(nameOrNumber(kLevelNames, 650), "650");
    EXPECT_EQ(nameOrNumber(kLevelNames, 100), "FATAL");
}

TEST(CliNames, EnumerationsTakeOnlyTheirOwnValues) {
    EXPECT_EQ(parseName(kVerbosityNames, "status-local"), 3);
    EXPECT_EQ(parseName(kVerbosityNames, "Status_Remote"), 4);
    EXPECT_EQ(parseName(kVerbosityNames, "5"), 5);
    EXPECT_EQ(parseName(kVerbosityNames, "6"), std::nullopt);
    EXPECT_EQ(parseName(kCategoryNames, "communication"), 1);
    EXPECT_EQ(parseName(kCategoryNames, "ALL"), std::nullopt) << "ALL is the set-verbosity command's own word";
    EXPECT_EQ(parseName(kPrintFormatNames, "verbose_timestamped"), 3);
    EXPECT_EQ(parseName(kPrintFormatNames, "-1"), std::nullopt);
}

TEST(CliNames, AFailedNameSaysWhatWasExpected) {
    std::string message = usageErrorOf([] { parseNameOrThrow(kPrintFormatNames, "fancy"); });
    EXPECT_EQ(message,
              "bad print format 'fancy' (expected DEFAULT, TIMESTAMPED, VERBOSE, VERBOSE_TIMESTAMPED, DEBUG, "
              "MINIMAL, MAXIMAL or their numbers)");
}

TEST(CliNames, NumbersAreWholeSigned32BitDecimals) {
    EXPECT_EQ(parseInt32("2147483647"), 2147483647);
    EXPECT_EQ(parseInt32("-2147483648"), -2147483647 - 1);
    for (std::string_view bad : {"2147483648", "", " 1", "1 ", "+1", "1e3", "0x10", "12abc"}) {
        EXPECT_EQ(parseInt32(bad), std::nullopt) << bad;
    }
}

TEST(CliAppId, PrintsHexAndReadsBackWhatItPrints) {
    AppId id{0x01100f3a, static_cast<std::int32_t>(0x8b2c4d1eu)};
    EXPECT_EQ(formatAppId(id), "01100f3a:8b2c4d1e");
    EXPECT_EQ(parseAppId("01100f3a:8b2c4d1e"), id);
    EXPECT_EQ(parseAppId("01100F3A:8B2C4D1E"), id);
    EXPECT_EQ(formatAppId({-1, 0}), "ffffffff:00000000");
}

TEST(CliAppId, ReadsDecimalAndPrefixedHexParts) {
    EXPECT_EQ(parseAppId("-5:17"), (AppId{-5, 17}));
    EXPECT_EQ(parseAppId("0x1a:0X2B"), (AppId{0x1a, 0x2b}));
    EXPECT_EQ(parseAppId("0xffffffff:1"), (AppId{-1, 1}));
    EXPECT_EQ(parseAppId("12345678:1"), (AppId{0x12345678, 1})) << "eight digits are the printed hex form";
    EXPECT_EQ(parseAppId("1234567:1"), (AppId{1234567, 1}));
    for (std::string_view bad : {"1:", ":2", "1:2:3", "0x123456789:1", "99999999999:1", "0x:1", "a:b", "12"}) {
        EXPECT_EQ(parseAppId(bad), std::nullopt) << bad;
    }
}

TEST(CliAppId, SelectorIsAnIdWhenItHasAColonElseAKind) {
    AppSelector byId = AppSelector::parse("0x1:0x2");
    EXPECT_FALSE(byId.isKind());
    EXPECT_TRUE(byId.matches({1, 2}, "anything"));
    EXPECT_FALSE(byId.matches({1, 3}, ""));
    AppSelector byKind = AppSelector::parse("demo");
    EXPECT_TRUE(byKind.isKind());
    EXPECT_TRUE(byKind.matches({9, 9}, "demo"));
    EXPECT_FALSE(byKind.matches({9, 9}, "")) << "a message whose kind is unknown is not of that kind";
    EXPECT_EQ(usageErrorOf([] { AppSelector::parse("host:app"); }),
              "bad HOST:APP 'host:app' (expected two ids such as 01100f3a:8b2c4d1e, 0x1a:0x2b or -5:17)");
    EXPECT_NE(usageErrorOf([] { AppSelector::parse(""); }), "(no error)");
}

constexpr OptionDescription kOptions[] = {{"count", "N", "how many"}, {"json", "", "machine output"}};
constexpr CommandDescription kCommand{"try", "TARGET [VALUE]", "A command for tests.", "", kOptions, 1, 2};

ParsedArguments parse(std::initializer_list<std::string_view> words) {
    std::vector<std::string_view> list(words);
    return parseArguments(kCommand, list);
}

TEST(CliArguments, OptionsTakeValuesEitherWayAndOperandsMayBeNegativeNumbers) {
    ParsedArguments parsed = parse({"--count", "3", "target", "--json", "-5"});
    EXPECT_EQ(parsed.value("count"), "3");
    EXPECT_TRUE(parsed.has("json"));
    EXPECT_EQ(parsed.operands, (std::vector<std::string>{"target", "-5"}));
    EXPECT_EQ(parse({"--count=4", "t"}).integer("count", 0, 1, 10), 4);
    EXPECT_EQ(parse({"--", "--json"}).operands, (std::vector<std::string>{"--json"}));
    EXPECT_EQ(parse({"t", "--domain", "7"}).domain(), 7);
    EXPECT_EQ(parse({"t"}).domain(), 0);
}

TEST(CliArguments, HelpNeedsNoOperands) {
    EXPECT_TRUE(parse({"--help"}).helpRequested);
    EXPECT_TRUE(parse({"--count", "3", "-h"}).helpRequested);
}

TEST(CliArguments, MistakesNameWhatWasWrong) {
    EXPECT_EQ(usageErrorOf([] { parse({"t", "--bogus"}); }), "unknown option '--bogus'");
    EXPECT_EQ(usageErrorOf([] { parse({"t", "-x"}); }), "unknown option '-x'");
    EXPECT_EQ(usageErrorOf([] { parse({"t", "--count"}); }), "option --count needs a value (N)");
    EXPECT_EQ(usageErrorOf([] { parse({"t", "--json=yes"}); }), "option --json takes no value");
    EXPECT_EQ(usageErrorOf([] { parse({}); }), "missing operand: expected TARGET [VALUE]");
    EXPECT_EQ(usageErrorOf([] { parse({"a", "b", "c"}); }), "unexpected operand 'c'");
    EXPECT_EQ(usageErrorOf([] { parse({"t", "--count", "0"}).integer("count", 1, 1, 10); }),
              "bad --count '0' (expected a whole number from 1 to 10)");
    EXPECT_EQ(usageErrorOf([] { parse({"t", "--domain", "231"}).domain(); }),
              "bad --domain '231' (expected a whole number from 0 to 230)");
    for (std::string_view bad : {"soon", "-1", "inf", "nan", ""}) {
        EXPECT_NE(usageErrorOf([&] { parse({"t", "--count", bad}).seconds("count", 1); }), "(no error)") << bad;
    }
    EXPECT_DOUBLE_EQ(parse({"t", "--count", "0.5"}).seconds("count", 1), 0.5);
}

TEST(CliArguments, HelpListsEveryOptionWithTheCommonOnes) {
    std::string help = helpText(kCommand);
    EXPECT_NE(help.find("usage: vexar try [options] TARGET [VALUE]"), std::string::npos) << help;
    for (std::string_view option : {"--count N", "--json", "--domain N", "--help"}) {
        EXPECT_NE(help.find(option), std::string::npos) << option;
    }
}

}  // namespace
