// Reports: the one road of every message, fatal error and warning.
//
// report_inner keeps a stack of records, so a long job can say what it does at
// each nesting level, and hands every report to one replaceable handler. The
// console handler writes fatal errors to "graphics_error.log" and warnings to
// "warnings.log" in the working directory, each line stamped in UTC, and prints
// them on standard output. A fatal report ends the process with status 1.
//
// A log file that cannot be opened is skipped: the program may run from a
// directory the user cannot write. A log is never opened through a symbolic
// link.
#pragma once

#include <stdint.h>

#include "support/dynarray/dynarray.h"

enum ReportType : int32_t {
    REPORT_MESSAGE = 1,   // replaces the top record
    REPORT_BEGIN = 2,     // replaces the top record, then opens a level
    REPORT_END = 3,       // closes the level; fatal on a one-record stack
    REPORT_PROGRESS = 4,  // not accepted by report_inner
    REPORT_FATAL = 5,     // the process ends with status 1
    REPORT_WARNING = 6,   // pushed, shown, removed again
    REPORT_QUESTION = 7,  // pushed, asked on the console, removed again
};

struct ReportRecord {
    int32_t type;         // the ReportType; a record revealed by an END gets 3
    const char *source;   // source file name, not owned
    uint32_t line;        // line in that file
    uint32_t tag;         // always 0
    const char *text;     // the message
    int32_t owned;        // 1 if the record owns a heap copy of text
    double time;          // wall clock when the report was made, seconds
    double progress;      // 0
    double progress_total;  // 0
    int32_t answer;       // the result of a question, else 0
};

typedef void (*ReportHandler)(ReportRecord *record);

// The stack of records; at least one record once made (on first use).
extern DynArray report_stack;
// Non-zero once report_stack exists.
extern uint8_t report_started;
// Wall clock of the very first report, seconds.
extern double report_start_time;
// Receives every report; may be null, then nothing is shown. Start: console.
extern ReportHandler report_handler;
// Warnings go to "warnings.log". Start value 1; nothing changes it.
extern int32_t warnings_to_file;
// Warnings would ask for a key press instead of going to the error log. Start 0.
extern int32_t console_mode;
// Called just before a fatal exit to shut the platform down (closes the
// window). Null until the platform layer sets it; the core knows no SDL.
extern void (*report_shutdown)();

// Sends a report. With copy non-zero the message is copied to the heap, so a
// local buffer may be handed in; with copy 0 the pointer is kept and must
// outlive the record. Returns the answer of a question (1 for yes), else 0.
int32_t report_inner(const char *source, uint32_t line, ReportType type, const char *message,
                     int32_t copy);

// Every call site names its own file and line.
#define REPORT(type, message, copy) report_inner(__FILE__, __LINE__, (type), (message), (copy))

// The handler of this program: logs and console, by record type.
void report_console_handler(ReportRecord *record);
// Logs the text to "graphics_error.log", prints it, shuts down, exits with 1.
[[noreturn]] void report_fatal_exit(const char *text);
// Appends "<UTC stamp> <text>" to the named file; does nothing if it can't be
// opened or is a symbolic link.
void report_log_line(const char *file, const char *text);
// Asks a yes-or-no question on the console; sets the record's answer.
int32_t report_ask(ReportRecord *record);
