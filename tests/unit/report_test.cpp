// Reports: the stack rules, the fatal paths, the log lines and owned texts.
#include <gtest/gtest.h>

#include <fstream>
#include <regex>
#include <sstream>
#include <string>
#include <vector>

#include <stdlib.h>
#include <sys/stat.h>
#include <unistd.h>

#include "ord/startup_check.h"
#include "support/gl/screen.h"
#include "support/report/report.h"

namespace {

struct Seen {
    int32_t type;
    std::string text;
};
std::vector<Seen> seen;

void recording_handler(ReportRecord *record)
{
    seen.push_back({record->type, record->text ? record->text : ""});
    if (record->type == REPORT_QUESTION)
        record->answer = 1;
}

// Each test runs in a fresh directory with a recording handler.
class Report : public ::testing::Test {
protected:
    void SetUp() override
    {
        char pattern[] = "/tmp/ordline-report-XXXXXX";
        dir = mkdtemp(pattern);
        ASSERT_EQ(chdir(dir.c_str()), 0);
        seen.clear();
        report_handler = recording_handler;
        // make sure the stack exists and is back to one record
        report_inner("test", 1, REPORT_MESSAGE, "start", 0);
        base_count = report_stack.count;
        seen.clear();
    }
    void TearDown() override
    {
        report_handler = report_console_handler;
        ASSERT_EQ(chdir("/tmp"), 0);
        std::string cmd = "rm -rf " + dir;
        ASSERT_EQ(system(cmd.c_str()), 0);
    }
    std::string read_file(const char *name)
    {
        std::ifstream in(dir + "/" + name);
        std::stringstream s;
        s << in.rdbuf();
        return s.str();
    }
    std::string dir;
    uint32_t base_count = 0;
};

const std::regex stamped_line(
    R"(\d{4}-(Jan|Feb|Mar|Apr|May|Jun|Jul|Aug|Sep|Oct|Nov|Dec)-\d{2} \d{2}:\d{2}:\d{2} (.*)\n)");

TEST_F(Report, MessageReplacesTheTopRecord)
{
    report_inner("test", 2, REPORT_MESSAGE, "one", 0);
    report_inner("test", 3, REPORT_MESSAGE, "two", 0);
    EXPECT_EQ(report_stack.count, base_count);
    ReportRecord *top = DynArray_at<ReportRecord>(&report_stack, report_stack.count - 1);
    EXPECT_STREQ(top->text, "two");
    EXPECT_EQ(top->line, 3u);
    ASSERT_EQ(seen.size(), 2u);
    EXPECT_EQ(seen[1].type, REPORT_MESSAGE);
}

TEST_F(Report, BeginOpensALevelAndEndShowsItsText)
{
    report_inner("test", 2, REPORT_BEGIN, "loading", 1);
    EXPECT_EQ(report_stack.count, base_count + 1);
    report_inner("test", 3, REPORT_MESSAGE, "inner step", 1);
    EXPECT_EQ(report_stack.count, base_count + 1);
    report_inner("test", 4, REPORT_END, nullptr, 0);
    EXPECT_EQ(report_stack.count, base_count);
    ASSERT_EQ(seen.size(), 3u);
    EXPECT_EQ(seen[2].type, REPORT_END);
    EXPECT_EQ(seen[2].text, "loading") << "the END carries the text of its BEGIN";
    // the revealed record is cleared to all zeros
    ReportRecord *top = DynArray_at<ReportRecord>(&report_stack, report_stack.count - 1);
    EXPECT_EQ(top->text, nullptr);
    EXPECT_EQ(top->type, 0);
}

TEST_F(Report, WarningAndQuestionLeaveTheStackAsItWas)
{
    report_inner("test", 2, REPORT_WARNING, "careful", 1);
    EXPECT_EQ(report_stack.count, base_count);
    EXPECT_EQ(report_inner("test", 3, REPORT_QUESTION, "sure?", 0), 1);
    EXPECT_EQ(report_stack.count, base_count);
    ASSERT_EQ(seen.size(), 2u);
    EXPECT_EQ(seen[0].type, REPORT_WARNING);
    EXPECT_EQ(seen[1].type, REPORT_QUESTION);
}

TEST_F(Report, OwnedTextsAreFreedOnce)
{
    // each copy is freed when the next report replaces it; a double free or a
    // leak shows under the sanitizers
    char buffer[32];
    for (int i = 0; i < 5; i++) {
        snprintf(buffer, sizeof buffer, "step %d", i);
        report_inner("test", 2, REPORT_MESSAGE, buffer, 1);
    }
    report_inner("test", 3, REPORT_BEGIN, buffer, 1);
    report_inner("test", 4, REPORT_END, nullptr, 0);
    report_inner("test", 5, REPORT_MESSAGE, "constant", 0);
    EXPECT_EQ(seen.back().text, "constant");
}

TEST_F(Report, WarningGoesToBothLogsWithAStamp)
{
    report_handler = report_console_handler;
    windowed = 1;
    report_inner("test", 2, REPORT_WARNING, "Retry loop needed in segment()", 0);
    std::smatch m;
    std::string warnings = read_file("warnings.log");
    ASSERT_TRUE(std::regex_match(warnings, m, stamped_line)) << warnings;
    EXPECT_EQ(m[2], "Retry loop needed in segment()");
    std::string errors = read_file("graphics_error.log");
    ASSERT_TRUE(std::regex_match(errors, m, stamped_line)) << errors;
}

TEST_F(Report, UnopenableLogIsSkipped)
{
    // a directory in the log's place cannot be opened for append
    ASSERT_EQ(mkdir("warnings.log", 0755), 0);
    ASSERT_EQ(mkdir("graphics_error.log", 0755), 0);
    report_handler = report_console_handler;
    report_inner("test", 2, REPORT_WARNING, "nowhere to write", 0);
    EXPECT_EQ(report_stack.count, base_count);
}

// The fatal paths: the child process ends with status 1 and leaves its log line.
class ReportFatal : public Report {};

TEST_F(ReportFatal, FatalEndsWithStatusOneAndOneLogLine)
{
    EXPECT_EXIT(
        {
            report_handler = report_console_handler;
            windowed = 1;
            report_inner("test", 2, REPORT_FATAL, "cannot go on", 1);
        },
        ::testing::ExitedWithCode(1), "");
    std::smatch m;
    std::string log = read_file("graphics_error.log");
    ASSERT_TRUE(std::regex_match(log, m, stamped_line)) << log;
    EXPECT_EQ(m[2], "cannot go on");
}

TEST_F(ReportFatal, StartupCheckWithoutAWindowIsFatal)
{
    EXPECT_EXIT(
        {
            report_handler = report_console_handler;
            windowed = 1;
            screen_w = 0;
            startup_check_screen();
        },
        ::testing::ExitedWithCode(1), "");
    std::smatch m;
    std::string log = read_file("graphics_error.log");
    ASSERT_TRUE(std::regex_match(log, m, stamped_line)) << log;
    EXPECT_EQ(m[2], "GRAPHICS() macro not called at LOOP start, or no resolution specified");
}

TEST_F(ReportFatal, StartupCheckWithAWindowPasses)
{
    screen_w = 864;
    startup_check_screen();
    screen_w = 0;
    EXPECT_EQ(read_file("graphics_error.log"), "");
}

TEST_F(ReportFatal, StackRuleViolationsAreFatal)
{
    struct Case {
        const char *name;
        ReportType type;
        const char *message;
    };
    const Case cases[] = {
        {"END on a one-record stack", REPORT_END, "Trying to pop empty stack in report_inner"},
        {"PROGRESS", REPORT_PROGRESS, "Unknown ReportType in report_inner"},
        {"type 0", (ReportType)0, "Unknown ReportType in report_inner"},
        {"type 8", (ReportType)8, "Unknown ReportType in report_inner"},
    };
    for (const Case &c : cases) {
        unlink("graphics_error.log");
        EXPECT_EXIT(
            {
                report_handler = report_console_handler;
                windowed = 1;
                report_inner("test", 2, c.type, "ignored", 0);
            },
            ::testing::ExitedWithCode(1), "")
            << c.name;
        std::smatch m;
        std::string log = read_file("graphics_error.log");
        ASSERT_TRUE(std::regex_match(log, m, stamped_line)) << c.name << ": " << log;
        EXPECT_EQ(m[2], c.message) << c.name;
    }
}

TEST_F(ReportFatal, FatalWithoutHandlerStillExits)
{
    EXPECT_EXIT(
        {
            report_handler = nullptr;
            report_inner("test", 2, REPORT_FATAL, "silent", 0);
        },
        ::testing::ExitedWithCode(1), "");
    EXPECT_EQ(read_file("graphics_error.log"), "");
}

}  // namespace
