// ordtool: the command-line companion of ordline; what its commands share.
//
// Every command reads its own arguments after the command word. Errors are one
// line on standard error, "ordtool: ...", and the status is 2; results go to
// standard output. With --arena the command runs with ord_arena set, as a
// frame of the viewer does while M is held.
#pragma once

#include <stdint.h>

#include "OrdBuchholz/ord.h"
#include "notation/notation.h"

// Exit status of every refused command.
constexpr int ORDTOOL_FAILED = 2;

// Most positional arguments any command takes.
constexpr int32_t ORDTOOL_MAX_POSITIONAL = 4;

// The arguments of one command, options taken out.
struct OrdtoolArgs {
    const char *positional[ORDTOOL_MAX_POSITIONAL];
    int32_t count;       // positional arguments given
    NotationRow row;     // from --row, else all six on
    bool row_given;      // --row was given
    bool arena;          // --arena was given
};

// Prints "ordtool: <message>" on standard error; returns ORDTOOL_FAILED.
int ordtool_fail(const char *format, ...) __attribute__((format(printf, 1, 2)));

// Splits argv[first..argc) into positional arguments and the options --row
// BITS and --arena. Refuses (with a message) unknown options, a bad BITS, a
// --row when `takes_row` is false, and a count of positional arguments other
// than `wanted`; `usage` names the command's form in that message.
bool ordtool_args(int argc, char **argv, int first, int32_t wanted, bool takes_row,
                  const char *usage, OrdtoolArgs *args);

// Sets ord_arena to the tool's own arena when `arena` is true. The arena is
// never rewound: the process ends after the command.
void ordtool_memory_mode(bool arena);

// The notation of a named ordinal when `text` is its name (in any case, such
// as "Bachmann-Howard ordinal"), else `text` itself.
const char *ordtool_named(const char *text);
// Reads an ordinal argument, or a name of one; on failure prints the reader's
// message and returns false. The value owns its arrays (Ord_free).
bool ordtool_read_ord(const char *text, Ord *out);

// Longest text, in bytes, that print and expand are willing to write for one
// ordinal. With "alpha.n" off a term is written once per unit of its
// coefficient, so omega.4000000000 would be tens of gigabytes.
constexpr double ORDTOOL_MAX_TEXT = 64e6;

// Ord_tostring(x, row), a heap text, or null when it would be longer than
// `limit` bytes: the notation's own iterative writer stops just past it, so a
// text too long to write is never written whole.
char *ordtool_text(Ord x, const NotationRow *row, double limit);

// Bytes of term arrays past which `line` leaves intervals undivided ("too
// deep") rather than take the machine's memory.
constexpr uint64_t ORDTOOL_MEMORY_LIMIT = (uint64_t)4 << 30;

// `text` quoted for a one-line message: control characters as \n, \t or
// \xNN, cut with "..." past 120 bytes. The result lives in one of four static
// buffers, so up to four quotes may stand in one message.
const char *ordtool_quote(const char *text);
// Six digits 0 or 1, in toggle order; false for anything else.
bool ordtool_read_row(const char *bits, NotationRow *row);
// Reports from the core reach the user as one line and status 2, with no log
// file: a layout that gives up on a view is a refusal of that view.
void ordtool_report_handler_install();

// The commands; each returns the exit status.
int ordtool_print(int argc, char **argv);
int ordtool_expand(int argc, char **argv);
int ordtool_cmp(int argc, char **argv);
int ordtool_line(int argc, char **argv);
int ordtool_bench(int argc, char **argv);
int ordtool_locate(int argc, char **argv);
int ordtool_render(int argc, char **argv);
