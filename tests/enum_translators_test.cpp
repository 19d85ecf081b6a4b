// The translators between the middleware logger's values and the
// administration enumerations: every row both ways, and each default.
#include <gtest/gtest.h>

#include <utility>
#include <vector>

#include "vexar/EnumTranslators.h"

namespace {

using Translator = DDS_Long (*)(DDS_Long);
using Rows = std::vector<std::pair<DDS_Long, DDS_Long>>;  // {enumerator, middleware value}

void expectTable(const Rows &rows, Translator toVexar, Translator toMiddleware) {
    for (auto [vexar, middleware] : rows) {
        EXPECT_EQ(toVexar(middleware), vexar) << "middleware value " << middleware;
        if (toMiddleware != nullptr) {
            EXPECT_EQ(toMiddleware(vexar), middleware) << "enumerator " << vexar;
        }
    }
}

TEST(EnumTranslators, EveryRowBothWaysAndTheDefaultOutside) {
    expectTable({{0, 0}, {1, 1}, {2, 3}, {3, 7}, {4, 15}, {5, 31}}, QTV_VX_translateFromQTVLoggerVerbosityToVXVerbosity,
                QTV_VX_translateFromVXVerbosityToQTVLoggerVerbosity);
    expectTable({{0, 0}, {1, 1}, {2, 2}, {3, 3}, {4, 4}}, QTV_VX_translateFromQTVLoggerCategoryToVXCategory,
                QTV_VX_translateFromVXCategoryToQTVLoggerCategory);
    expectTable({{0, 0x412}, {1, 0x512}, {2, 0xE16}, {3, 0xF16}, {4, 0x22F}, {5, 0x11}, {6, 0xF3F}},
                QTV_VX_translateFromQTVLoggerPrintFormatToVXPrintFormat,
                QTV_VX_translateFromVXPrintFormatToQTVLoggerPrintFormat);
    expectTable({{300, 1}, {400, 2}, {500, 3}, {600, 4}, {700, 5}}, QTV_VX_translateFromQTVLoggerLogLevelToVXLevel,
                nullptr);
    // Values outside a table get its default.
    EXPECT_EQ(QTV_VX_translateFromQTVLoggerVerbosityToVXVerbosity(2), 2);  // not a mask: WARNING
    EXPECT_EQ(QTV_VX_translateFromVXVerbosityToQTVLoggerVerbosity(9), 3);
    EXPECT_EQ(QTV_VX_translateFromQTVLoggerCategoryToVXCategory(5), 4);  // the middleware's ALL: API
    EXPECT_EQ(QTV_VX_translateFromVXCategoryToQTVLoggerCategory(-3), 4);
    EXPECT_EQ(QTV_VX_translateFromQTVLoggerPrintFormatToVXPrintFormat(0x400), 0);
    EXPECT_EQ(QTV_VX_translateFromVXPrintFormatToQTVLoggerPrintFormat(7), 0x412);
    EXPECT_EQ(QTV_VX_translateFromQTVLoggerLogLevelToVXLevel(0), 600);
    EXPECT_EQ(QTV_VX_translateFromQTVLoggerLogLevelToVXLevel(6), 600);
}

}  // namespace
