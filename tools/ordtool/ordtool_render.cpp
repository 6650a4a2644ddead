// ordtool render: one frame of a view, drawn by the window program's own
// drawing code into an offscreen OSMesa context, written as a PNG.
//
// The frame is what the window shows for that view and size, less the frame
// rate read-out: ticks, labels, names, legend, notation panel and centre
// read-out, in Mesa's software rasterizer (the same one that draws the window
// under a virtual X server).
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#include "tools/ordtool/ordtool.h"
#include "tools/ordtool/ordtool_view.h"

#if ORDTOOL_RENDER
#include <GL/osmesa.h>

#include "notation/notation_rows.h"
#include "ord/font_variants.h"
#include "ord/frame_draw.h"
#include "support/bitmapfonts/font_load.h"
#include "support/gl/gl_state.h"
#include "support/gl/screen.h"
#include "support/gl/texture.h"
#include "support/image/png_write.h"

static const char render_usage[] =
    "ordtool render --width W --height H [--centre P --zoom Z | --zoom-at X --factor F --steps K] "
    "[--rows BITS,BITS,...] -o FILE.png";

// Most notation rows, as many as a window's panel has room for at 1000 pixels.
constexpr int32_t RENDER_MAX_ROWS = 30;

// GL entry points beyond the base set come from OSMesa.
static void *render_proc_address(const char *name)
{
    return (void *)OSMesaGetProcAddress(name);
}

// Rows from "BITS,BITS,...", replacing the first row and adding the others.
static bool render_rows(const char *list)
{
    int32_t count = 0;
    const char *p = list;
    for (;;) {
        const char *end = strchr(p, ',');
        size_t n = end ? (size_t)(end - p) : strlen(p);
        char bits[8] = {};
        NotationRow row;
        if (n != (size_t)NOTATION_TOGGLES || ++count > RENDER_MAX_ROWS)
            return false;
        memcpy(bits, p, n);
        if (!ordtool_read_row(bits, &row))
            return false;
        if (count == 1)
            *notation_row(0) = row;
        else
            DynArray_append(&notation_rows, &row);
        if (!end)
            return true;
        p = end + 1;
    }
}

int ordtool_render(int argc, char **argv)
{
    // static: its decimals stay reachable to the end, on every way out
    static ViewSetup setup = {};
    setup.minsize = 1.0;
    const char *rows = nullptr, *output = nullptr;
    for (int i = 2; i < argc; i++) {
        const char *a = argv[i];
        int32_t taken = view_option(argc, argv, &i, &setup, false, true);
        if (taken < 0)
            return ORDTOOL_FAILED;
        if (taken > 0)
            continue;
        if ((strcmp(a, "--rows") == 0 || strcmp(a, "-o") == 0) && i + 1 < argc) {
            *(a[1] == 'o' ? &output : &rows) = argv[++i];
        } else {
            return ordtool_fail("unknown argument '%s'; usage: %s", ordtool_quote(a),
                                render_usage);
        }
    }
    if (!view_options_check(&setup, render_usage))
        return ORDTOOL_FAILED;
    if (setup.height == 0 || !output)
        return ordtool_fail("--height H and -o FILE.png are needed; usage: %s", render_usage);

    notation_rows_start();
    if (rows && !render_rows(rows))
        return ordtool_fail("--rows wants 1 to %d rows of six digits 0 or 1, separated by commas "
                            "(got '%s')",
                            RENDER_MAX_ROWS, ordtool_quote(rows));

    // the start-up of the window program, in the order it makes it (the rows
    // need no context, so they are read first)
    int32_t w = (int32_t)setup.width, h = (int32_t)setup.height;
    OSMesaContext context = OSMesaCreateContextExt(OSMESA_RGBA, 24, 8, 0, nullptr);
    uint8_t *pixels = (uint8_t *)calloc((size_t)w * h, 4);
    if (!context || !pixels || !OSMesaMakeCurrent(context, pixels, GL_UNSIGNED_BYTE, w, h))
        return ordtool_fail("cannot make an offscreen OpenGL context of %d by %d pixels", w, h);
    // row 0 of the buffer is the top of the picture, as in a screenshot
    OSMesaPixelStore(OSMESA_Y_UP, 0);
    gl_get_proc_address = render_proc_address;
    gl_state_start(w, h);
    loadfont_embedded("fullsize");

    // one frame, as the frame loop draws it
    WalkRecord record = view_setup_record(&setup);
    Bignum view_lo = record.xlo, view_hi = record.xhi;
    char text_buffer[112];
    font_variants_rebuild(screen_h, text_buffer, sizeof text_buffer);
    frame_draw(&record, view_lo, view_hi, nullptr, text_buffer, sizeof text_buffer);
    glFinish();

    bool written = png_write(output, pixels, w, h, true);
    Bignum_free(view_lo);
    Bignum_free(view_hi);
    notation_rows_free();
    OSMesaDestroyContext(context);
    free(pixels);
    if (!written)
        return ordtool_fail("cannot write '%s'", ordtool_quote(output));
    return 0;
}

#else

int ordtool_render(int, char **)
{
    return ordtool_fail("this ordtool was built without render (ORDLINE_RENDER=OFF: it needs "
                        "libosmesa6-dev and libpng-dev)");
}

#endif
