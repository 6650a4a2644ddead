// Reports: the stack rules, the fatal paths, the log lines and owned texts.
#include <gtest/gtest.h>

#include <fstream>
#include <regex>
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

// The stack made and back to one record; returns its count.
uint32_t start_recording()
{
    report_handler = recording_handler;
    report_inner("test", 1, REPORT_MESSAGE, "start", 0);
    seen.clear();
    return report_stack.count;
}

std::string read_file(const char *name)
{
    std::ifstream f(name);
    return std::string(std::istreambuf_iterator<char>(f), {});
}

// A log holds exactly one line: the UTC stamp, then the text.
void expect_one_stamped_line(const char *log, const char *text)
{
    static const std::regex stamped_line(
        R"(\d{4}-(Jan|Feb|Mar|Apr|May|Jun|Jul|Aug|Sep|Oct|Nov|Dec)-\d{2} \d{2}:\d{2}:\d{2} (.*)\n)");
    std::smatch m;
    std::string s = read_file(log);
    ASSERT_TRUE(std::regex_match(s, m, stamped_line)) << log << ": " << s;
    EXPECT_EQ(m[2], text);
}

TEST(Report, StackRulesByType)
{
    uint32_t base_count = start_recording();
    // a message replaces the top record, freeing its copy of the text (a
    // double free or a leak of these copies shows under the sanitizers)
    report_inner("test", 2, REPORT_MESSAGE, "one", 1);
    report_inner("test", 3, REPORT_MESSAGE, "two", 0);
    // a warning and a question leave the stack as it was
    report_inner("test", 4, REPORT_WARNING, "careful", 1);
    EXPECT_EQ(report_inner("test", 5, REPORT_QUESTION, "sure?", 0), 1);
    EXPECT_EQ(report_stack.count, base_count);
    ReportRecord *top = DynArray_at<ReportRecord>(&report_stack, report_stack.count - 1);
    EXPECT_STREQ(top->text, "two");
    EXPECT_EQ(top->line, 3u);
    // BEGIN opens a level that a message inside it keeps
    report_inner("test", 6, REPORT_BEGIN, "loading", 1);
    report_inner("test", 7, REPORT_MESSAGE, "inner step", 1);
    EXPECT_EQ(report_stack.count, base_count + 1);
    report_inner("test", 8, REPORT_END, nullptr, 0);
    EXPECT_EQ(report_stack.count, base_count);
    EXPECT_EQ(seen.size(), 7u) << "the handler sees every report";
    EXPECT_TRUE(seen.back().first == REPORT_END && seen.back().second == "loading")
        << "the END carries the text of its BEGIN";
    report_handler = report_console_handler;
}

// A warning goes to both logs; each fatal path ends the (child) process with
// status 1 and one line in the error log, a handler or not. All in a fresh
// working directory, where the logs are written.
TEST(Report, LogsAndFatalPaths)
{
    char dir[] = "/tmp/ordline-report-XXXXXX";
    ASSERT_EQ(chdir(mkdtemp(dir)), 0);
    uint32_t base_count = start_recording();
    report_handler = report_console_handler;  // the one that writes the logs
    report_inner("test", 2, REPORT_WARNING, "Retry loop needed in segment()", 0);
    expect_one_stamped_line("warnings.log", "Retry loop needed in segment()");
    expect_one_stamped_line("graphics_error.log", "Retry loop needed in segment()");
    // a directory in the log's place cannot be opened for append, and a
    // symbolic link is not followed (to a path it could create): skipped
    ASSERT_EQ(system("rm warnings.log graphics_error.log && mkdir warnings.log && "
                     "ln -s elsewhere.log graphics_error.log"), 0);
    report_inner("test", 3, REPORT_WARNING, "nowhere to write", 0);
    EXPECT_EQ(report_stack.count, base_count);
    EXPECT_NE(access("elsewhere.log", F_OK), 0) << "the log followed its link";

    const char *unknown = "Unknown ReportType in report_inner";
    const std::pair<void (*)(), const char *> cases[] = {
        {[] { report_inner("test", 2, REPORT_FATAL, "cannot go on", 1); }, "cannot go on"},
        {[] { report_inner("test", 2, REPORT_END, "ignored", 0); },
         "Trying to pop empty stack in report_inner"},  // on a one-record stack
        {[] { report_inner("test", 2, REPORT_PROGRESS, "ignored", 0); }, unknown},
        {[] { report_inner("test", 2, (ReportType)0, "ignored", 0); }, unknown},
        {[] { report_inner("test", 2, (ReportType)8, "ignored", 0); }, unknown},
        {[] { startup_check_screen(); },  // without a window
         "GRAPHICS() macro not called at LOOP start, or no resolution specified"},
        {[] {
             report_handler = nullptr;
             report_inner("test", 2, REPORT_FATAL, "silent", 0);
         },
         nullptr},
    };
    screen_w = 0;
    for (const auto &[body, message] : cases) {
        SCOPED_TRACE(message ? message : "no handler");
        unlink("graphics_error.log");
        EXPECT_EXIT(body(), ::testing::ExitedWithCode(1), "");
        if (message)
            expect_one_stamped_line("graphics_error.log", message);
        else
            EXPECT_EQ(read_file("graphics_error.log"), "");
    }
    // with a window the check passes, silently
    screen_w = 864;
    startup_check_screen();
    screen_w = 0;
    EXPECT_EQ(read_file("graphics_error.log"), "");
    ASSERT_EQ(chdir("/tmp"), 0);
    ASSERT_EQ(system((std::string("rm -rf ") + dir).c_str()), 0);
}

}  // namespace
