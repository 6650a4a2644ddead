// The leak checker of a sanitizer build: what it may pass over at exit.
#include "ord/leak_checks.h"

#ifdef __SANITIZE_ADDRESS__
#include <dlfcn.h>
#include <link.h>

// Called by the leak checker at exit: the session bus library keeps a block
// from SDL's video start-up to the end of the process.
extern "C" const char *__lsan_default_suppressions()
{
    return "leak:libdbus-1.so\n";
}

// Called by the leak checker at start: a clean run prints nothing.
extern "C" const char *__lsan_default_options()
{
    return "print_suppressions=0";
}

static int pin_library(struct dl_phdr_info *info, size_t, void *)
{
    // a second reference that is never dropped, and no unloading at all
    if (info->dlpi_name && info->dlpi_name[0])
        dlopen(info->dlpi_name, RTLD_LAZY | RTLD_NOLOAD | RTLD_NODELETE);
    return 0;
}

void leak_checks_pin_libraries()
{
    dl_iterate_phdr(pin_library, nullptr);
}
#else
void leak_checks_pin_libraries() {}
#endif
