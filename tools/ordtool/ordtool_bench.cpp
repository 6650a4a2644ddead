// ordtool bench: the cost of the three passes of a frame (ticks, labels with
// their texts, the centre read-out) at several zoom depths, on the heap and in
// the arena (the read-out on the heap only, as in the frame). Nothing is
// drawn: the label and read-out passes make and measure their texts with a
// root font that has no texture.
//
// Each view is measured still (the same view frame after frame, as the viewer
// shows it at rest, with the expansions it keeps, timed once it has filled
// in) and moving (30 frames, each
// zoomed in by exp(0.3) about the centre, as the fastest key zoom does).
//
// Each measurement runs in a child process of its own, so that one that runs
// away can be given up without taking the table down. Its outcome is one of:
// ok; budget (the frame's work budget left "too deep" leaves, the time is
// that of the frame as drawn); memory (out of memory: over 2 GiB more than at
// the start); timeout (a frame over 2 seconds); crash (any other death).
// A timed row also gives the most memory its process held (mb, resident).
#include <math.h>
#include <signal.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <time.h>
#include <unistd.h>

#include "OrdBuchholz/memstack.h"
#include "OrdBuchholz/ord_lazy.h"
#include "PlotSegment2/centre_readout.h"
#include "PlotSegment2/labels.h"
#include "PlotSegment2/tick_classify.h"
#include "PlotSegment2/tick_walk.h"
#include "notation/notation_rows.h"
#include "ord/font_variants.h"
#include "ord/navigation.h"
#include "support/bitmapfonts/font_pack.h"
#include "support/bitmapfonts/font_registry.h"
#include "support/bitmapfonts/text_measure.h"
#include "support/gl/screen.h"
#include "support/report/report.h"
#include "tools/ordtool/ordtool.h"
#include "tools/ordtool/ordtool_view.h"

// Window width of every measurement, and the passes per median.
constexpr double BENCH_WIDTH = 1280.0;
constexpr int32_t BENCH_PASSES = 21;
constexpr int32_t BENCH_GIVE_UP_SECONDS = 2;
constexpr rlim_t BENCH_MEMORY_LIMIT = (rlim_t)2 << 30;

// Frames of a moving measurement, and the zoom of each.
constexpr int32_t BENCH_MOVING_FRAMES = 30;
constexpr double BENCH_MOVING_STEP = 0.3;
// Frames a still view may take to fill in before it is timed.
constexpr int32_t BENCH_WARM_FRAMES = 60;

static const int32_t bench_depths[] = {0, 10, 20, 50, 100, 200, 1000};
// 640 is the centre of the first view: no pan
static const double bench_targets[] = {640.0, 700.0, 770.0, 1000.0, 1100.0, 1150.0};

// How a child ends: its exit status for each outcome it reports itself.
enum BenchExit : int { EXIT_OK = 0, EXIT_BUDGET = 10, EXIT_MEMORY = 11, EXIT_FATAL = 12 };

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

// The label pass without placing or drawing: every line made, measured and freed.
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
    CentreText text;
    if (centre_text((float)(screen_w / 2), record, (float)screen_h, &text))
        bench_ticks++;
    centre_text_free(&text);
}

// One pass as the frame runs it, in the arena if one is given.
static void bench_pass(int32_t pass, WalkRecord record, MemStack *stack, bool at_rest)
{
    walk_frame_start(at_rest);
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
        ord_lazy_rewind();
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

// In the child: a fatal report ends it with a status that says which kind;
// warnings are not written anywhere.
static void bench_report(ReportRecord *record)
{
    if (record->type != REPORT_FATAL)
        return;
    _exit(strncmp(record->text, "Out of memory", 13) == 0 ? EXIT_MEMORY : EXIT_FATAL);
}

// In the child: time the frames and write "median ticks" to fd.
static void bench_measure(int fd, int32_t depth, double target, bool arena, int32_t pass, bool moving)
{
    report_handler = bench_report;
    struct rlimit limit;
    getrlimit(RLIMIT_AS, &limit);
    struct rusage usage;
    getrusage(RUSAGE_SELF, &usage);
    // what the process holds now, plus the allowance
    limit.rlim_cur = (rlim_t)usage.ru_maxrss * 1024 + BENCH_MEMORY_LIMIT + ((rlim_t)256 << 20);
#ifndef __SANITIZE_ADDRESS__
    // the sanitizer reserves terabytes of address space for its shadow
    setrlimit(RLIMIT_AS, &limit);
#endif

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

    // still: the view as it stands once it has filled in, after at most
    // BENCH_WARM_FRAMES frames of work carried over in the kept expansions
    // (budget: it still has "too deep" leaves then); moving: every frame new
    // (budget: any frame had them)
    int32_t frames = moving ? BENCH_MOVING_FRAMES : BENCH_PASSES;
    double times[BENCH_PASSES > BENCH_MOVING_FRAMES ? BENCH_PASSES : BENCH_MOVING_FRAMES];
    int64_t too_deep = segment_too_deep;
    for (int32_t warm = 0; !moving && warm < BENCH_WARM_FRAMES; warm++) {
        alarm(BENCH_GIVE_UP_SECONDS);
        too_deep = segment_too_deep;
        bench_pass(pass, record, arena ? &stack : nullptr, !moving);
        alarm(0);
        if (segment_too_deep == too_deep)
            break;
    }
    for (int32_t i = 0; i < frames; i++) {
        alarm(BENCH_GIVE_UP_SECONDS);
        bench_ticks = 0;
        if (!moving)
            too_deep = segment_too_deep;
        double start = monotonic_ms();
        bench_pass(pass, record, arena ? &stack : nullptr, !moving);
        times[i] = monotonic_ms() - start;
        alarm(0);
        if (moving)
            view_update(&record.xlo, &record.xhi, exp(BENCH_MOVING_STEP), 0);
    }
    qsort(times, (size_t)frames, sizeof(double), compare_doubles);
    // the most memory the process held, whatever it was held for
    getrusage(RUSAGE_SELF, &usage);
    char result[64];
    int len = snprintf(result, sizeof result, "%.3f %lld %ld", times[frames / 2], (long long)bench_ticks,
                       (long)(usage.ru_maxrss / 1024));
    if (write(fd, result, (size_t)len) != len)
        _exit(EXIT_FATAL);
    _exit(segment_too_deep > too_deep ? EXIT_BUDGET : EXIT_OK);
}

// One line of the table, measured in a child process.
static int bench_row(int32_t depth, double target, int32_t pass, bool arena, bool moving)
{
    int fds[2];
    if (pipe(fds) != 0)
        return ordtool_fail("cannot make a pipe");
    fflush(stdout);
    pid_t child = fork();
    if (child == 0) {
        close(fds[0]);
        bench_measure(fds[1], depth, target, arena, pass, moving);
    }
    close(fds[1]);
    char result[64] = {};
    ssize_t got = read(fds[0], result, sizeof result - 1);
    close(fds[0]);
    int status = 0;
    waitpid(child, &status, 0);
    double ms = 0;
    long long ticks = 0;
    long mb = 0;
    bool timed = got > 0 && sscanf(result, "%lf %lld %ld", &ms, &ticks, &mb) == 3;
    const char *outcome = "crash";
    if (WIFSIGNALED(status) && WTERMSIG(status) == SIGALRM)
        outcome = "timeout";
    else if (WIFEXITED(status) && WEXITSTATUS(status) == EXIT_MEMORY)
        outcome = "memory";
    else if (WIFEXITED(status) && WEXITSTATUS(status) == EXIT_OK && timed)
        outcome = "ok";
    else if (WIFEXITED(status) && WEXITSTATUS(status) == EXIT_BUDGET && timed)
        outcome = "budget";
    if (bench_view_given)
        printf("view mode=%s motion=%s pass=%s outcome=%s", arena ? "arena" : "heap",
               moving ? "moving" : "still", bench_pass_names[pass], outcome);
    else
        printf("depth=10^%d target=%.0f mode=%s motion=%s pass=%s outcome=%s", depth, target,
               arena ? "arena" : "heap", moving ? "moving" : "still", bench_pass_names[pass], outcome);
    if (timed)
        printf(" ms=%.3f ticks=%lld mb=%ld", ms, ticks, mb);
    putchar('\n');
    fflush(stdout);
    return 0;
}

// A comma-separated list of whole numbers into out (at most `most`); its count, or -1.
static int32_t bench_list(const char *text, double *out, int32_t most)
{
    int32_t count = 0;
    while (*text && count < most) {
        char *end;
        double v = strtod(text, &end);
        if (end == text || !(v >= 0 && v <= 100000) || (*end && *end != ','))
            return -1;
        out[count++] = v;
        text = *end ? end + 1 : end;
    }
    return *text ? -1 : count;
}

int ordtool_bench(int argc, char **argv)
{
    static const char usage[] =
        "ordtool bench [--depths K,K,...] [--targets X,X,...] [--motion still|moving|both] "
        "[--width W] [--centre P --zoom Z | --zoom-at X --factor F --steps K]";
    double depths[16], targets[16];
    int32_t depth_count = 0, target_count = 0;
    for (int32_t d : bench_depths)
        depths[depth_count++] = d;
    for (double t : bench_targets)
        targets[target_count++] = t;
    bool still = true, moving = true;
    bench_view.width = BENCH_WIDTH;
    bench_view.minsize = 1.0;
    for (int i = 2; i < argc; i++) {
        // a view option: that one view in place of the table
        int32_t taken = view_option(argc, argv, &i, &bench_view, false, false);
        if (taken < 0)
            return ORDTOOL_FAILED;
        if (taken > 0) {
            bench_view_given = true;
            continue;
        }
        const char *value = i + 1 < argc ? argv[i + 1] : "";
        bool table = strcmp(argv[i], "--depths") == 0 || strcmp(argv[i], "--targets") == 0;
        if (strcmp(argv[i], "--depths") == 0)
            depth_count = bench_list(value, depths, 16);
        else if (strcmp(argv[i], "--targets") == 0)
            target_count = bench_list(value, targets, 16);
        else if (strcmp(argv[i], "--motion") == 0 && strcmp(value, "still") == 0)
            moving = false;
        else if (strcmp(argv[i], "--motion") == 0 && strcmp(value, "moving") == 0)
            still = false;
        else if (strcmp(argv[i], "--motion") != 0 || strcmp(value, "both") != 0)
            return ordtool_fail("unknown argument '%s'; usage: %s", ordtool_quote(argv[i]), usage);
        if (table && (depth_count <= 0 || target_count <= 0))
            return ordtool_fail("%s wants whole numbers from 0 to 100000, separated by commas "
                                "(got '%s'); usage: %s", argv[i], ordtool_quote(value), usage);
        i++;
    }
    if (bench_view_given && !view_options_check(&bench_view, usage))
        return ORDTOOL_FAILED;
    if (bench_view_given)
        depth_count = target_count = 1;
    // the classification constants must stand on the heap before any arena pass
    tick_classify(Ord_zero());
    for (int32_t motion = 0; motion < 2; motion++) {
        if (!(motion ? moving : still))
            continue;
        for (int32_t d = 0; d < depth_count; d++)
            for (int32_t t = 0; t < target_count; t++)
                for (int32_t pass = 0; pass < BENCH_PASS_COUNT; pass++)
                    // the read-out runs on the heap whatever M does: no arena row
                    for (int mode = 0; mode < (pass == PASS_READOUT ? 1 : 2); mode++)
                        if (bench_row((int32_t)depths[d], targets[t], pass, mode == 1, motion == 1) != 0)
                            return ORDTOOL_FAILED;
    }
    return 0;
}
