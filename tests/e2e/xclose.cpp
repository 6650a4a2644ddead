// Asks a window to close, as a window manager's close button does: a
// WM_DELETE_WINDOW client message. Usage: xclose WINDOW_ID
#include <X11/Xlib.h>
#include <stdio.h>
#include <stdlib.h>

int main(int argc, char **argv)
{
    Display *display = argc == 2 ? XOpenDisplay(nullptr) : nullptr;
    if (!display) {
        fprintf(stderr, "usage: xclose WINDOW_ID, with a display to reach\n");
        return 2;
    }
    XEvent event = {};
    event.xclient.type = ClientMessage;
    event.xclient.window = (Window)strtoul(argv[1], nullptr, 0);
    event.xclient.message_type = XInternAtom(display, "WM_PROTOCOLS", False);
    event.xclient.format = 32;
    event.xclient.data.l[0] = (long)XInternAtom(display, "WM_DELETE_WINDOW", False);
    event.xclient.data.l[1] = CurrentTime;
    XSendEvent(display, event.xclient.window, False, NoEventMask, &event);
    XCloseDisplay(display);
    return 0;
}
