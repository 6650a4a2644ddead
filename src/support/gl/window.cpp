// The window and its OpenGL context.
#include "support/gl/window.h"

#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#include <GL/gl.h>
#include <GL/glx.h>

#include "support/gl/gl_state.h"
#include "support/gl/input_state.h"
#include "support/gl/screen.h"
#include "support/gl/texture.h"
#include "support/report/report.h"

SDL_Window *sdl_window;
SDL_GLContext gl_context;

struct WindowRect {
    int32_t x, y, w, h;
};

// A display's bounds; the program's window is then 4:3 at six tenths of its height.
static WindowRect window_rect_of_display(int32_t display)
{
    SDL_Rect bounds = {};
    SDL_GetDisplayBounds(display, &bounds);
    WindowRect r = {bounds.x, bounds.y, bounds.w, bounds.h};
    if (windowed == 1) {
        r.h = (int32_t)(bounds.h * 0.6);
        r.w = r.h * 4 / 3;
    }
    return r;
}

// The union of the displays whose bit is set in mask (all of them for mask <= 0).
static WindowRect window_rect_of_union(int32_t mask)
{
    int32_t left = 999999999, top = 999999999;
    int32_t right = -999999999, bottom = -999999999;
    int32_t count = SDL_GetNumVideoDisplays();
    int32_t last = count - 1 < 30 ? count - 1 : 30;
    for (int32_t i = 0; i <= last; i++) {
        if (mask > 0 && !(mask & (1 << i)))
            continue;
        SDL_Rect b = {};
        SDL_GetDisplayBounds(i, &b);
        if (b.x < left) left = b.x;
        if (b.y < top) top = b.y;
        if (b.x + b.w > right) right = b.x + b.w;
        if (b.y + b.h > bottom) bottom = b.y + b.h;
    }
    return WindowRect{0, top, right - left, bottom - top};
}

static WindowRect window_rect(int32_t width, int32_t height)
{
    if (width == 0) {
        int32_t display = 0;
        if (height >= 1 && height <= SDL_GetNumVideoDisplays())
            display = height - 1;
        return window_rect_of_display(display);
    }
    if (width == -1)
        return window_rect_of_union(height);
    return WindowRect{0, 0, width, height};
}

// Ends the program with one line: there is nothing to show a window on.
[[noreturn]] static void window_impossible(const char *what, const char *why)
{
    char text[300];
    snprintf(text, sizeof text, "%s (%s)", what, why);
    REPORT(REPORT_FATAL, text, 1);
    exit(1);  // not reached: a fatal report ends the process
}

// SDL falls back to drivers that draw nowhere when no display answers: a
// window there would run unseen for ever.
static bool video_driver_shows(const char *driver)
{
    return driver && strcmp(driver, "offscreen") != 0 && strcmp(driver, "dummy") != 0 &&
           strcmp(driver, "evdev") != 0;
}

// GL entry points beyond the base set come through GLX.
static void *window_proc_address(const char *name)
{
    return (void *)glXGetProcAddress((const GLubyte *)name);
}

int32_t GRAPHICS(int32_t width, int32_t height, const char *caption)
{
    // video (with its events) is all the program uses; audio start-up only
    // prints noise where HOME is not writable
    if (SDL_Init(SDL_INIT_VIDEO) < 0)
        window_impossible("No display to open the window on", SDL_GetError());
    // a fatal report closes the window before the process ends
    report_shutdown = window_close;
    if (!video_driver_shows(SDL_GetCurrentVideoDriver()))
        window_impossible("No display to open the window on", "DISPLAY is unset or unreachable");

    WindowRect r = window_rect(width, height);
    SDL_GL_SetAttribute(SDL_GL_RED_SIZE, 8);
    SDL_GL_SetAttribute(SDL_GL_GREEN_SIZE, 8);
    SDL_GL_SetAttribute(SDL_GL_BLUE_SIZE, 8);
    SDL_GL_SetAttribute(SDL_GL_ALPHA_SIZE, 8);
    uint32_t flags = windowed ? SDL_WINDOW_OPENGL | SDL_WINDOW_SHOWN | SDL_WINDOW_RESIZABLE
                              : SDL_WINDOW_FULLSCREEN | SDL_WINDOW_OPENGL | SDL_WINDOW_SHOWN;
    sdl_window = SDL_CreateWindow(caption, r.x, r.y, r.w, r.h, flags);
    if (!sdl_window)
        window_impossible("The window cannot be opened", SDL_GetError());
    gl_context = SDL_GL_CreateContext(sdl_window);
    if (!gl_context)
        window_impossible("The window has no OpenGL", SDL_GetError());

    gl_get_proc_address = window_proc_address;
    gl_state_start(r.w, r.h);
    input_reset_keys();
    if (windowed == 0)
        SDL_ShowCursor(0);
    return 1;
}

void window_close()
{
    if (gl_context) {
        glFinish();
        SDL_GL_MakeCurrent(sdl_window, nullptr);
        SDL_GL_DeleteContext(gl_context);
        gl_context = nullptr;
    }
    if (sdl_window)
        SDL_DestroyWindow(sdl_window);
    sdl_window = nullptr;
    SDL_Quit();
}
