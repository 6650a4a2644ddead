// ordtool render: placeholder until the offscreen context is in.
#include "tools/ordtool/ordtool.h"

int ordtool_render(int, char **)
{
    return ordtool_fail("render is not built in");
}
