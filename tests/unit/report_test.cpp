// Reports: the stack rules, the fatal paths, the log lines and owned texts.
#include <gtest/gtest.h>

#include <fstream>
#include <regex>
#include <sstream>
#include <string>
#include <vector>

#include <stdlib.h>
#include <unistd.h>

#include "ord/startup_check.h"
#include "support/gl/screen.h"
#include "support/report/report.h"

namespace {

// The type and text of every report the handler saw.
std::vector<std::pair<int32_t, std::string>> seen;

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
        std::stringstream s;
        s << std::ifstream(dir + "/" + name).rdbuf();
        return s.str();
    }
    std::string dir;
    uint32_t base_count = 0;
};

// A log holds exactly one line: the UTC stamp, then the text.
void expect_one_stamped_line(const std::string &log, const char *text)
{
    static const std::regex stamped_line(
        R"(\d{4}-(Jan|Feb|Mar|Apr|May|Jun|Jul|Aug|Sep|Oct|Nov|Dec)-\d{2} \d{2}:\d{2}:\d{2} (.*)\n)");
    std::smatch m;
    ASSERT_TRUE(std::regex_match(log, m, stamped_line)) << log;
    EXPECT_EQ(m[2], text);
}

TEST_F(Report, StackRulesByType)
{
    // a message replaces the top record, freeing its copy of the text (a
    // double free or a leak of these copies shows under the sanitizers)
    report_inner("test", 2, REPORT_MESSAGE, "one", 1);
    report_inner("test", 3, REPORT_MESSAGE, "two", 0);
    EXPECT_EQ(report_stack.count, base_count);
    ReportRecord *top = DynArray_at<ReportRecord>(&report_stack, report_stack.count - 1);
    EXPECT_STREQ(top->text, "two");
    EXPECT_EQ(top->line, 3u);
    // a warning and a question leave the stack as it was
    report_inner("test", 4, REPORT_WARNING, "careful", 1);
    EXPECT_EQ(report_inner("test", 5, REPORT_QUESTION, "sure?", 0), 1);
    EXPECT_EQ(report_stack.count, base_count);
    // BEGIN opens a level that a message inside it keeps
    report_inner("test", 6, REPORT_BEGIN, "loading", 1);
    report_inner("test", 7, REPORT_MESSAGE, "inner step", 1);
    EXPECT_EQ(report_stack.count, base_count + 1);
    report_inner("test", 8, REPORT_END, nullptr, 0);
    EXPECT_EQ(report_stack.count, base_count);
    std::vector<int32_t> types;
    for (const auto &[type, text] : seen)
        types.push_back(type);
    EXPECT_EQ(types, (std::vector<int32_t>{REPORT_MESSAGE, REPORT_MESSAGE, REPORT_WARNING,
                                           REPORT_QUESTION, REPORT_BEGIN, REPORT_MESSAGE,
                                           REPORT_END}));
    EXPECT_EQ(seen.back().second, "loading") << "the END carries the text of its BEGIN";
    // the revealed record is cleared to all zeros
    top = DynArray_at<ReportRecord>(&report_stack, report_stack.count - 1);
    EXPECT_EQ(top->text, nullptr);
    EXPECT_EQ(top->type, 0);
    report_inner("test", 9, REPORT_MESSAGE, "constant", 0);
    EXPECT_EQ(seen.back().second, "constant");
}

TEST_F(Report, WarningGoesToBothLogsWithAStamp)
{
    report_handler = report_console_handler;
    windowed = 1;
    report_inner("test", 2, REPORT_WARNING, "Retry loop needed in segment()", 0);
    expect_one_stamped_line(read_file("warnings.log"), "Retry loop needed in segment()");
    expect_one_stamped_line(read_file("graphics_error.log"), "Retry loop needed in segment()");

    // a directory in the log's place cannot be opened for append, and a
    // symbolic link is not followed (to a path it could create): skipped
    ASSERT_EQ(system("rm warnings.log graphics_error.log && mkdir warnings.log && "
                     "ln -s elsewhere.log graphics_error.log"), 0);
    report_inner("test", 3, REPORT_WARNING, "nowhere to write", 0);
    EXPECT_EQ(report_stack.count, base_count);
    EXPECT_NE(access("elsewhere.log", F_OK), 0) << "the log followed its link";
}

// The fatal paths: the child process ends with status 1 and leaves one
// stamped line in the error log.
TEST_F(Report, FatalPathsExitWithStatusOneAndOneLogLine)
{
    struct Case {
        const char *name;
        void (*body)();
        const char *message;
    };
    const Case cases[] = {
        {"FATAL", [] { report_inner("test", 2, REPORT_FATAL, "cannot go on", 1); }, "cannot go on"},
        {"END on a one-record stack", [] { report_inner("test", 2, REPORT_END, "ignored", 0); },
         "Trying to pop empty stack in report_inner"},
        {"PROGRESS", [] { report_inner("test", 2, REPORT_PROGRESS, "ignored", 0); },
         "Unknown ReportType in report_inner"},
        {"type 0", [] { report_inner("test", 2, (ReportType)0, "ignored", 0); },
         "Unknown ReportType in report_inner"},
        {"type 8", [] { report_inner("test", 2, (ReportType)8, "ignored", 0); },
         "Unknown ReportType in report_inner"},
        {"startup check without a window",
         [] {
             screen_w = 0;
             startup_check_screen();
         },
         "GRAPHICS() macro not called at LOOP start, or no resolution specified"},
    };
    for (const Case &c : cases) {
        SCOPED_TRACE(c.name);
        unlink("graphics_error.log");
        EXPECT_EXIT(
            {
                report_handler = report_console_handler;
                windowed = 1;
                c.body();
            },
            ::testing::ExitedWithCode(1), "");
        expect_one_stamped_line(read_file("graphics_error.log"), c.message);
    }
}

TEST_F(Report, FatalWithoutHandlerStillExitsAndAWindowPassesTheCheck)
{
    EXPECT_EXIT(
        {
            report_handler = nullptr;
            report_inner("test", 2, REPORT_FATAL, "silent", 0);
        },
        ::testing::ExitedWithCode(1), "");
    screen_w = 864;
    startup_check_screen();
    screen_w = 0;
    EXPECT_EQ(read_file("graphics_error.log"), "");
}

}  // namespace
