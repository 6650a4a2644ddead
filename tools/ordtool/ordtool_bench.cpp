// ordtool bench: the cost of the three passes of a frame (ticks, labels with
// their texts, the centre read-out) at several zoom depths, on the heap and in
// the arena (the read-out on the heap only, as in the frame). Nothing is
// drawn: the label and read-out passes make and measure their texts with a
// root font that has no texture.
//
// Each measurement runs in a child process of its own, so that one that
// runs away (a pass over 2 seconds, or over 1 GiB more memory) can be given up
// without taking the table down; it is then printed as ms=>2000.
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <time.h>
#include <unistd.h>

#include "OrdBuchholz/memstack.h"
#include "PlotSegment2/centre_readout.h"
#include "PlotSegment2/labels.h"
#include "PlotSegment2/tick_classify.h"
#include "PlotSegment2/tick_walk.h"
#include "ord/font_variants.h"
#include "ord/notation_rows.h"
#include "support/bitmapfonts/font_pack.h"
#include "support/bitmapfonts/font_registry.h"
#include "support/bitmapfonts/text_measure.h"
#include "support/gl/screen.h"
#include "tools/ordtool/ordtool.h"
#include "tools/ordtool/ordtool_view.h"

// Window width of every measurement, and the passes per median.
constexpr double BENCH_WIDTH = 1280.0;
constexpr int32_t BENCH_PASSES = 21;
constexpr int32_t BENCH_GIVE_UP_SECONDS = 2;
constexpr rlim_t BENCH_MEMORY_LIMIT = (rlim_t)1 << 30;

static const int32_t bench_depths[] = {0, 10, 20, 50, 100, 200, 1000};
// 640 is the centre of the first view: no pan
static const double bench_targets[] = {640.0, 700.0, 1000.0, 1150.0};

enum BenchPass : int32_t { PASS_TICK, PASS_LABEL, PASS_READOUT, BENCH_PASS_COUNT };
static const char *const bench_pass_names[BENCH_PASS_COUNT] = {"tick", "label", "readout"};

// The one view of --centre/--zoom or --zoom-at, when given.
static ViewSetup bench_view;
static bool bench_view_given = false;

// Callback calls of the pass being timed.
static int64_t bench_ticks;

static void bench_tick(WalkRecord r)
{
    bench_ticks++;
    tick_record(r);
}

// label_draw without the drawing: every line made, measured and freed.
static void bench_label(WalkRecord r)
{
    bench_ticks++;
    LabelLine line;
    if (!label_start(r, &line))
        return;
    while (label_next(&line))
        text_width(line.text);
}

static void bench_readout(WalkRecord record)
{
    float x, y;
    char *text = centre_text((float)(screen_w / 2), record, &x, &y);
    if (text) {
        bench_ticks++;
        font_select("normal");
        free(text);
    }
}

// One pass as the frame runs it, in the arena if one is given.
static void bench_pass(int32_t pass, WalkRecord record, MemStack *stack)
{
    if (stack)
        ord_arena = stack;
    switch (pass) {
    case PASS_TICK:
        record.minsize = 1.0f;
        // the frame rebuilds the arrays before its tick pass; later passes reuse them
        tick_arrays_rebuild(record.right);
        walk_line(bench_tick, record);
        break;
    case PASS_LABEL:
        record.minsize = (float)(5 * text_height);
        walk_line(bench_label, record);
        break;
    default:
        bench_readout(record);
        break;
    }
    if (ord_arena) {
        memstack_rewind(stack);
        ord_arena = nullptr;
    }
}

static double monotonic_ms()
{
    struct timespec ts;
    clock_gettime(CLOCK_MONOTONIC, &ts);
    return ts.tv_sec * 1e3 + ts.tv_nsec * 1e-6;
}

static int compare_doubles(const void *a, const void *b)
{
    double x = *(const double *)a, y = *(const double *)b;
    return x < y ? -1 : x > y;
}

// In the child: time the passes and write "median ticks" to fd.
static void bench_measure(int fd, int32_t depth, double target, bool arena, int32_t pass)
{
    struct rlimit limit;
    getrlimit(RLIMIT_AS, &limit);
    struct rusage usage;
    getrusage(RUSAGE_SELF, &usage);
    // what the process holds now, plus the allowance
    limit.rlim_cur = (rlim_t)usage.ru_maxrss * 1024 + BENCH_MEMORY_LIMIT + ((rlim_t)256 << 20);
    setrlimit(RLIMIT_AS, &limit);

    ViewSetup setup = {BENCH_WIDTH, 1.0, true, target, 10.0, (double)depth, false, {}, {}, 0};
    if (bench_view_given)
        setup = bench_view;
    WalkRecord record = view_setup_record(&setup);
    font_pack_measuring_root("fullsize");
    char buffer[112];
    font_variants_rebuild(screen_h, buffer, sizeof buffer);
    notation_rows_start();
    static MemStack stack;
    memstack_init(&stack);
    tick_arrays_rebuild(record.right);

    double times[BENCH_PASSES];
    for (int32_t i = 0; i < BENCH_PASSES; i++) {
        alarm(BENCH_GIVE_UP_SECONDS);
        bench_ticks = 0;
        double start = monotonic_ms();
        bench_pass(pass, record, arena ? &stack : nullptr);
        times[i] = monotonic_ms() - start;
        alarm(0);
    }
    qsort(times, BENCH_PASSES, sizeof(double), compare_doubles);
    char result[64];
    int len = snprintf(result, sizeof result, "%.3f %lld", times[BENCH_PASSES / 2], (long long)bench_ticks);
    if (write(fd, result, (size_t)len) != len)
        _exit(1);
    _exit(0);
}

// One line of the table, measured in a child process.
static int bench_row(int32_t depth, double target, int32_t pass, bool arena)
{
    int fds[2];
    if (pipe(fds) != 0)
        return ordtool_fail("cannot make a pipe");
    pid_t child = fork();
    if (child == 0) {
        close(fds[0]);
        bench_measure(fds[1], depth, target, arena, pass);
    }
    close(fds[1]);
    char result[64] = {};
    ssize_t got = read(fds[0], result, sizeof result - 1);
    close(fds[0]);
    int status = 0;
    waitpid(child, &status, 0);
    double ms = 0;
    long long ticks = 0;
    bool done = got > 0 && WIFEXITED(status) && WEXITSTATUS(status) == 0 &&
                sscanf(result, "%lf %lld", &ms, &ticks) == 2;
    printf("depth=10^%d target=%.0f mode=%s pass=%s ", depth, target, arena ? "arena" : "heap",
           bench_pass_names[pass]);
    if (done)
        printf("ms=%.3f ticks=%lld\n", ms, ticks);
    else
        printf("ms=>%d000 ticks=?\n", BENCH_GIVE_UP_SECONDS);
    fflush(stdout);
    return 0;
}

// The view options: with them, bench times that one view in place of the table.
static bool bench_view_options(int argc, char **argv)
{
    static const char usage[] =
        "ordtool bench [--width W] [--centre P --zoom Z | --zoom-at X --factor F --steps K]";
    bench_view.width = BENCH_WIDTH;
    bench_view.minsize = 1.0;
    for (int i = 2; i < argc; i++) {
        int32_t taken = view_option(argc, argv, &i, &bench_view, false, false);
        if (taken < 0)
            return false;
        if (taken == 0) {
            ordtool_fail("unknown argument '%s'; usage: %s", ordtool_quote(argv[i]), usage);
            return false;
        }
        bench_view_given = true;
    }
    return view_options_check(&bench_view, usage);
}

int ordtool_bench(int argc, char **argv)
{
    if (!bench_view_options(argc, argv))
        return ORDTOOL_FAILED;
    // the classification constants must stand on the heap before any arena pass
    tick_classify(Ord_zero());
    fflush(stdout);
    if (bench_view_given) {
        for (int32_t pass = 0; pass < BENCH_PASS_COUNT; pass++)
            for (int mode = 0; mode < (pass == PASS_READOUT ? 1 : 2); mode++)
                if (bench_row(0, bench_view.zoom_at, pass, mode == 1) != 0)
                    return ORDTOOL_FAILED;
        return 0;
    }
    for (int32_t depth : bench_depths)
        for (double target : bench_targets)
            for (int32_t pass = 0; pass < BENCH_PASS_COUNT; pass++)
                // the read-out runs on the heap whatever M does: no arena row
                for (int mode = 0; mode < (pass == PASS_READOUT ? 1 : 2); mode++)
                    if (bench_row(depth, target, pass, mode == 1) != 0)
                        return ORDTOOL_FAILED;
    return 0;
}
