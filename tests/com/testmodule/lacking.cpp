// A shared object that links libqxbase but has no entry points of its own:
// the loader must not mistake libqxbase's entry points for this module's.
#include <qxbase/qxunknown.h>

extern "C" __attribute__((visibility("default"))) int TestLackingModuleMarker()
{
    return g_i32Objects;
}
