// The views that ordtool walks, and their options.
#include "tools/ordtool/ordtool_view.h"

#include <math.h>
#include <stdlib.h>
#include <string.h>

#include "PlotSegment2/locate.h"
#include "PlotSegment2/tick_walk.h"
#include "ord/navigation.h"
#include "support/gl/screen.h"
#include "tools/ordtool/ordtool.h"

// A finite number from the whole text.
static bool parse_double(const char *text, double *out)
{
    char *end;
    *out = strtod(text, &end);
    return end != text && *end == 0 && isfinite(*out);
}

// "10^K" or a decimal, at least 1.
static bool parse_zoom(const char *text, Decimal *out)
{
    if (strncmp(text, "10^", 3) == 0) {
        const char *k = text + 3;
        if (!*k || strspn(k, "0123456789") != strlen(k) || strlen(k) > 7)
            return false;
        long K = strtol(k, nullptr, 10);
        if (K > VIEW_MAX_ZOOM_EXPONENT)
            return false;
        Decimal one = decimal_from_int(1);
        *out = decimal_shift(one, K);
        decimal_free(one);
        return true;
    }
    if (strlen(text) > (size_t)VIEW_MAX_DIGITS || !decimal_parse(text, out))
        return false;
    Decimal one = decimal_from_int(1);
    bool ok = decimal_cmp(*out, one) >= 0;
    decimal_free(one);
    if (!ok)
        decimal_free(*out);
    return ok;
}

int32_t view_option(int argc, char **argv, int *i, ViewSetup *setup, bool minsize, bool height)
{
    const char *a = argv[*i];
    const char *value = *i + 1 < argc ? argv[*i + 1] : nullptr;
    double *target = nullptr;
    const char *wants = nullptr;
    if (strcmp(a, "--width") == 0) {
        target = &setup->width;
        wants = "a whole number of pixels from 1 to 100000";
    } else if (height && strcmp(a, "--height") == 0) {
        target = &setup->height;
        wants = "a whole number of pixels from 1 to 100000";
    } else if (minsize && strcmp(a, "--minsize") == 0) {
        target = &setup->minsize;
        wants = "a number of pixels from 0.01 to 100000";
    } else if (strcmp(a, "--zoom-at") == 0) {
        target = &setup->zoom_at;
        setup->zoomed = true;
        wants = "a pixel of the first view from -100000 to 100000";
    } else if (strcmp(a, "--factor") == 0) {
        target = &setup->factor;
        wants = "a number above 0, at most 10";
    } else if (strcmp(a, "--steps") == 0) {
        target = &setup->steps;
        wants = "a whole number from 0 to 2000 (for deeper views: --centre P --zoom 10^K)";
    } else if (strcmp(a, "--centre") == 0 || strcmp(a, "--zoom") == 0) {
        bool centre = a[2] == 'c';
        Decimal *d = centre ? &setup->centre : &setup->zoom;
        bool ok = value && (centre ? strlen(value) <= (size_t)VIEW_MAX_DIGITS && decimal_parse(value, d)
                                   : parse_zoom(value, d));
        if (!ok) {
            ordtool_fail("%s wants %s (got '%s')", a,
                         centre ? "an exact decimal such as 640 or -3.25"
                                : "a decimal of at least 1, or 10^K with K from 0 to 200000",
                         ordtool_quote(value ? value : ""));
            return -1;
        }
        setup->by_position = true;
        (*i)++;
        return 1;
    } else {
        return 0;
    }
    double v = 0;
    if (!value || !parse_double(value, &v)) {
        ordtool_fail("%s wants %s (got '%s')", a, wants, ordtool_quote(value ? value : ""));
        return -1;
    }
    bool whole = target == &setup->width || target == &setup->height || target == &setup->steps;
    double low = target == &setup->minsize ? 0.01
                 : target == &setup->zoom_at ? -100000
                 : target == &setup->factor  ? 1e-300
                 : target == &setup->steps   ? 0
                                             : 1;
    double high = target == &setup->steps ? (double)VIEW_MAX_STEPS
                  : target == &setup->factor ? 10
                                             : 100000;
    if (v < low || v > high || (whole && v != floor(v))) {
        ordtool_fail("%s wants %s (got '%s')", a, wants, ordtool_quote(value));
        return -1;
    }
    *target = v;
    (*i)++;
    return 1;
}

bool view_options_check(ViewSetup *setup, const char *usage)
{
    if (setup->width == 0) {
        ordtool_fail("--width W is needed; usage: %s", usage);
        return false;
    }
    if (setup->by_position && setup->zoomed) {
        ordtool_fail("--centre/--zoom and --zoom-at/--factor/--steps are two ways to one view: "
                     "give one; usage: %s", usage);
        return false;
    }
    if (setup->by_position && (setup->centre.digits == nullptr || setup->zoom.digits == nullptr)) {
        ordtool_fail("--centre P and --zoom Z go together; usage: %s", usage);
        return false;
    }
    if (setup->by_position) {
        Decimal limit = decimal_from_int(1000000);
        Decimal magnitude = setup->centre;
        magnitude.neg = false;
        bool far = decimal_cmp(magnitude, limit) > 0;
        decimal_free(limit);
        if (far) {
            ordtool_fail("--centre wants a point of the first view from -1000000 to 1000000");
            return false;
        }
    }
    if (setup->zoomed && setup->factor == 0) {
        ordtool_fail("--zoom-at X needs --factor F with 0 < F <= 10 and --steps K; usage: %s", usage);
        return false;
    }
    if (!setup->zoomed && (setup->factor != 0 || setup->steps != 0)) {
        ordtool_fail("--factor and --steps go with --zoom-at; usage: %s", usage);
        return false;
    }
    return true;
}

void view_first(double width, Decimal *lo, Decimal *hi)
{
    int32_t saved = screen_w;
    screen_w = (int32_t)width;
    Bignum blo, bhi;
    double min_line_length;
    view_start(&blo, &bhi, &min_line_length);
    screen_w = saved;
    *lo = decimal_from_bignum(blo);
    *hi = decimal_from_bignum(bhi);
    Bignum_free(blo);
    Bignum_free(bhi);
}

WalkRecord view_setup_record(const ViewSetup *setup)
{
    screen_w = (int32_t)setup->width;
    screen_h = setup->height > 0 ? (int32_t)setup->height : screen_w * 3 / 4;
    Bignum lo, hi;
    double min_line_length;
    view_start(&lo, &hi, &min_line_length);
    if (setup->by_position) {
        Decimal dlo, dhi;
        view_first(setup->width, &dlo, &dhi);
        Bignum_free(lo);
        Bignum_free(hi);
        locate_view_ends(dlo, dhi, setup->centre, setup->zoom, (int32_t)setup->width / 2, &lo, &hi);
        decimal_free(dlo);
        decimal_free(dhi);
    } else if (setup->zoomed) {
        // as the arrow keys would: one update that only pans
        view_update(&lo, &hi, 1.0, (int32_t)(setup->zoom_at - setup->width / 2));
        for (int64_t i = 0; i < (int64_t)setup->steps; i++)
            view_update(&lo, &hi, setup->factor, 0);
    }
    WalkRecord r = {};
    r.xlo = lo;
    r.xhi = hi;
    r.minsize = (float)setup->minsize;
    walk_record_screen(&r);
    return r;
}
