// libqxbase's own class table: the library is a component module like any
// other, and its entry points (from the module kit) walk this table. The
// buffer-engine factories take their rows here.
#include <qxbase/qxclassfactory.h>

// A C++ array cannot be empty; the placeholder row is never read while
// g_iTemplates is 0.
extern "C" CQxFactoryTemplate g_aoTemplates[1] = {
    {nullptr, nullptr, nullptr, nullptr, nullptr},
};

extern "C" int32_t g_iTemplates = 0;
