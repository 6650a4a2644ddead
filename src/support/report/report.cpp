// Reports: the record stack, the console handler and the two log files.
#include "support/report/report.h"

#include <ctype.h>
#include <fcntl.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <time.h>
#include <unistd.h>

#include "support/gl/screen.h"
#include "support/timing/clock.h"

DynArray report_stack;
uint8_t report_started = 0;
double report_start_time;
ReportHandler report_handler = report_console_handler;
int32_t warnings_to_file = 1;
int32_t console_mode = 0;
void (*report_shutdown)() = nullptr;

static ReportRecord *report_top()
{
    return DynArray_at<ReportRecord>(&report_stack, report_stack.count - 1);
}

static void report_free_text(ReportRecord *record)
{
    if (record->owned)
        free((void *)record->text);
}

static void report_push_empty()
{
    ReportRecord empty = {};
    DynArray_append(&report_stack, &empty);
}

static bool report_type_known(ReportType type)
{
    return type == REPORT_MESSAGE || type == REPORT_BEGIN || type == REPORT_FATAL ||
           type == REPORT_WARNING || type == REPORT_QUESTION;
}

int32_t report_inner(const char *source, uint32_t line, ReportType type, const char *message,
                     int32_t copy)
{
    // first use: the stack is born with one empty record
    if (!report_started) {
        DynArray_init(&report_stack, sizeof(ReportRecord), dyn_default_capacity);
        report_push_empty();
        report_start_time = clock_seconds();
        report_started = 1;
    }

    if (type == REPORT_END) {
        if (report_stack.count < 2) {
            REPORT(REPORT_FATAL, "Trying to pop empty stack in report_inner", 0);
            return 0;
        }
        report_free_text(report_top());
        DynArray_remove(&report_stack, report_stack.count - 1);
        // the END is shown with the text of its BEGIN
        ReportRecord *top = report_top();
        if (report_handler) {
            top->type = REPORT_END;
            report_handler(top);
        }
        report_free_text(top);
        *top = ReportRecord{};
        return 0;
    }

    if (!report_type_known(type)) {
        REPORT(REPORT_FATAL, "Unknown ReportType in report_inner", 0);
        return 0;
    }

    ReportRecord record = {};
    record.type = type;
    record.source = source;
    record.line = line;
    record.text = copy ? strdup(message) : message;
    record.owned = copy ? 1 : 0;
    record.time = clock_seconds();

    // the text of the record being replaced goes; a warning or question leaves
    // that record standing (with its old pointer and flag)
    report_free_text(report_top());

    bool pushed = type == REPORT_WARNING || type == REPORT_QUESTION;
    if (pushed)
        DynArray_append(&report_stack, &record);
    else
        *report_top() = record;

    if (report_handler)
        report_handler(report_top());
    int32_t answer = report_top()->answer;

    if (type == REPORT_BEGIN)
        report_push_empty();
    else if (type == REPORT_FATAL)
        exit(1);
    else if (pushed) {
        report_free_text(report_top());
        DynArray_remove(&report_stack, report_stack.count - 1);
    }
    return answer;
}

void report_console_handler(ReportRecord *record)
{
    switch (record->type) {
    case REPORT_FATAL:
        if (windowed == 1)
            report_fatal_exit(record->text);
        printf("\n[FATAL ERROR] %s\n", record->text);
        fflush(stdout);
        // let the words be read on a screen that is about to go away
        usleep(2500000);
        break;
    case REPORT_WARNING:
        if (warnings_to_file)
            report_log_line("warnings.log", record->text);
        if (windowed == 1) {
            if (console_mode == 0) {
                report_log_line("graphics_error.log", record->text);
                printf("\n%s\n", record->text);
            } else {
                printf("\n[WARNING] %s\nPress any key to continue program\n", record->text);
            }
            fflush(stdout);
        }
        break;
    case REPORT_QUESTION:
        report_ask(record);
        break;
    default:
        if (record->text)
            printf("%s", record->text);
        if (record->progress > 0 && !(record->progress_total > 0))
            printf(" [%lg]", record->progress);
        if (record->progress_total > 0)
            printf(" [%lg/%lg]", record->progress, record->progress_total);
        printf("\n");
        fflush(stdout);
        break;
    }
}

void report_fatal_exit(const char *text)
{
    report_log_line("graphics_error.log", text);
    printf("\n%s\n", text);
    fflush(stdout);
    if (report_shutdown)
        report_shutdown();
    exit(1);
}

void report_log_line(const char *file, const char *text)
{
    static char stamp[30];
    // never through a symbolic link: one planted in the working directory
    // would have the log written wherever it points
    int fd = open(file, O_WRONLY | O_APPEND | O_CREAT | O_NOFOLLOW | O_CLOEXEC, 0666);
    if (fd < 0)
        return;
    FILE *log = fdopen(fd, "a");
    if (!log) {
        close(fd);
        return;
    }
    time_t now = time(nullptr);
    struct tm utc;
    gmtime_r(&now, &utc);
    strftime(stamp, sizeof stamp, "%Y-%b-%d %H:%M:%S", &utc);
    fprintf(log, "%s %s\n", stamp, text);
    fclose(log);
}

int32_t report_ask(ReportRecord *record)
{
    char word[1008];
    printf("%s (Y/N) ", record->text);
    fflush(stdout);
    record->answer = 0;
    if (scanf("%1007s", word) == 1)
        record->answer = tolower((unsigned char)word[0]) == 'y';
    return 1;
}
