// The leak checker of a sanitizer build: what it may pass over at exit.
#pragma once

// Keeps every library loaded so far mapped to the end of the process: when
// closing the window unloads the graphics driver, the blocks it still holds
// would otherwise count as leaks. Call once the window stands; does nothing
// in builds without the sanitizers.
void leak_checks_pin_libraries();
