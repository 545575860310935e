#include "app/progress_reports.h"

#include "test_support.h"

#include <cmath>
#include <limits>

namespace {

class ProgressReportsTest : public EngineStateTest {
  protected:
    static void SetMacro(std::vector<UnifiedEvent> events) {
        MutexLock lock(macroMutex);
        macroState.profiles = {Profile{DefaultProfileName, {}, std::move(events)}};
        MarkMacroChanged();
    }

    // The part of the report that does not depend on the revision.
    static std::string Rows(const char* arguments = "") {
        const std::string report = MacroRowsReport(arguments);
        return report.substr(report.find("\"first\""));
    }
};

TEST_F(ProgressReportsTest, RowsHaveAllFieldsOfAnEvent) {
    SetMacro({{.type = EvAbsMove, .time = 0.5, .x = -3, .y = 2147483647},
              {.type = EvMouseButton, .time = 1.25, .x = 300, .y = 200, .flags = 128},
              {.type = EvKey, .time = 2, .virtualKey = 4294967295U, .down = true},
              {.type = EvScroll, .time = 3, .wheel = -120},
              {.type = 77, .time = 1e300}});
    const std::string rows = Rows();
    EXPECT_EQ(
        rows.substr(0, rows.find("[77,")),
        "\"first\":0,\"total\":5,\"rows\":[[0,0.500000,-3,2147483647,0,0,0,0],"
        "[2,1.250000,300,200,128,0,0,0],[3,2.000000,0,0,0,4294967295,1,0],[4,3.000000,0,0,0,0,0,-120],");
    const std::string end = ".000000,0,0,0,0,0,0]]}";
    EXPECT_EQ(rows.substr(rows.size() - end.size()), end);
}

TEST_F(ProgressReportsTest, ATimeThatJsonCannotHoldIsNull) {
    const double infinite = std::numeric_limits<double>::infinity();
    SetMacro({{.type = EvKey, .time = std::nan("")}, {.time = infinite}, {.time = -infinite}});
    EXPECT_EQ(Rows(), "\"first\":0,\"total\":3,\"rows\":[[3,null,0,0,0,0,0,0],[0,null,0,0,0,0,0,0],"
                      "[0,null,0,0,0,0,0,0]]}");
}

TEST_F(ProgressReportsTest, KeyNamesTellSidesAndTheNumberPad) {
    const std::string report = KeyNamesReport();
    // Windows has names of its own, and Wine takes them from the layout of the X server.
    for (const uint32_t key : {8U, 13U, 65U, 112U, 144U, 163U}) {
        EXPECT_NE(report.find("\"" + std::to_string(key) + "\":"), std::string::npos) << key;
    }
    EXPECT_EQ(report.find("\"255\":"), std::string::npos);
    EXPECT_EQ(report.find("\"\""), std::string::npos) << "no empty name";
#ifndef _WIN32
    for (const char* name : {"\"1\":\"Left Mouse\"", "\"19\":\"Pause\"", "\"107\":\"Num +\"",
                             "\"144\":\"Num Lock\"", "\"160\":\"Left Shift\"", "\"163\":\"Right Ctrl\""}) {
        EXPECT_NE(report.find(name), std::string::npos) << name;
    }
#endif
}

TEST_F(ProgressReportsTest, RowsBeginAndEndWhereThePageAsks) {
    SetMacro({{.x = 0}, {.x = 1}, {.x = 2}});
    const auto row = [](int x) { return "[0,0.000000," + std::to_string(x) + ",0,0,0,0,0]"; };
    EXPECT_EQ(Rows("1"), "\"first\":1,\"total\":3,\"rows\":[" + row(1) + "," + row(2) + "]}");
    EXPECT_EQ(Rows("1,1"), "\"first\":1,\"total\":3,\"rows\":[" + row(1) + "]}");
    EXPECT_EQ(Rows("2,5"), "\"first\":2,\"total\":3,\"rows\":[" + row(2) + "]}");
    EXPECT_EQ(Rows("3"), "\"first\":3,\"total\":3,\"rows\":[]}");
    EXPECT_EQ(Rows("2147483647,2147483647"), "\"first\":2147483647,\"total\":3,\"rows\":[]}");
    EXPECT_EQ(Rows("0,-1"), "\"first\":0,\"total\":3,\"rows\":[]}");
    EXPECT_EQ(Rows("-5,1"), "\"first\":0,\"total\":3,\"rows\":[" + row(0) + "]}");
    EXPECT_EQ(Rows("x"), Rows());
}

TEST_F(ProgressReportsTest, WithoutAProfileThereAreNoRows) {
    EXPECT_EQ(Rows(), "\"first\":0,\"total\":0,\"rows\":[]}");
}

TEST_F(ProgressReportsTest, TheRevisionIsThatOfTheMacro) {
    SetMacro({});
    const std::string before = ProgressReport();
    EXPECT_EQ(ProgressReport(), before);
    SetMacro({{.x = 1}});
    EXPECT_NE(ProgressReport(), before);
    MutexLock lock(macroMutex);
    EXPECT_EQ(engineState.macroRevision, macroState.revision);
    EXPECT_EQ(engineState.macroRewrittenRevision, macroState.revision);
    MarkEventAppended();
    EXPECT_EQ(engineState.macroRevision, macroState.revision);
    EXPECT_EQ(engineState.macroRewrittenRevision, macroState.revision - 1);
}

}  // namespace
