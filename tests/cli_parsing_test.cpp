// The command-line tool's reading of its input: names of levels and
// enumerations, HOST:APP ids, and the options of a subcommand.
#include <gtest/gtest.h>

#include <utility>
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
    // Selecting by id and by kind is run end to end by the tail script.
    EXPECT_FALSE(AppSelector::parse("demo").matches({9, 9}, "")) << "a message of unknown kind is not of that kind";
    EXPECT_TRUE(AppSelector::parse("0x1:0x2").matches({1, 2}, "anything"));
    EXPECT_NE(usageErrorOf([] { AppSelector::parse(""); }), "(no error)");
}

constexpr OptionDescription kOptions[] = {{"count", "N", "how many"}, {"json", "", "machine output"}};
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

}  // namespace
