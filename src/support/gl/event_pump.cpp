// The event pump: SDL events to plain input state.
#include "support/gl/event_pump.h"

#include <SDL2/SDL.h>

#include "support/gl/input_state.h"
#include "support/gl/window.h"

int32_t LOOP()
{
    input_pump_begin();
    // one answer governs all motion of this pump
    bool relative = SDL_GetRelativeMouseMode();
    SDL_Event event;
    while (SDL_PollEvent(&event)) {
        switch (event.type) {
        case SDL_QUIT:
            window_close();
            return 1;
        case SDL_WINDOWEVENT:
            if (event.window.event == SDL_WINDOWEVENT_SIZE_CHANGED)
                resize_viewport(event.window.data1, event.window.data2);
            break;
        case SDL_KEYDOWN:
        case SDL_KEYUP:
            input_key(event.key.keysym.sym, event.type == SDL_KEYDOWN, event.key.repeat != 0);
            break;
        case SDL_TEXTINPUT:
            input_text(event.text.text);
            break;
        case SDL_MOUSEMOTION:
            input_motion(relative, event.motion.x, event.motion.y, event.motion.xrel,
                         event.motion.yrel);
            break;
        case SDL_MOUSEBUTTONDOWN:
        case SDL_MOUSEBUTTONUP:
            input_button(event.button.button, event.button.state == SDL_PRESSED);
            break;
        case SDL_MOUSEWHEEL:
            input_wheel(event.wheel.y);
            break;
        default:
            break;
        }
    }
    input_pump_end();
    return 0;
}
