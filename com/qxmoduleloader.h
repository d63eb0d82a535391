// Private: finding a module's own entry points after dlopen.
#ifndef QXBASE_COM_QXMODULELOADER_H
#define QXBASE_COM_QXMODULELOADER_H

#include <dlfcn.h>
#include <link.h>

#include <cstring>

namespace NQxModuleLoader {

// dlsym on a module handle also searches the module's dependencies, and
// libqxbase exports the same entry points as every module; a module that
// lacks its own must not be served libqxbase's class table instead. Returns
// the symbol only when the module itself defines it.
inline void* FindOwnSymbol(void* in_hModule, const char* in_pszName)
{
    void* pSymbol = dlsym(in_hModule, in_pszName);
    if (!pSymbol) return nullptr;
    struct link_map* pMap = nullptr;
    if (dlinfo(in_hModule, RTLD_DI_LINKMAP, &pMap) != 0 || !pMap || !pMap->l_name) return nullptr;
    Dl_info info;
    if (!dladdr(pSymbol, &info) || !info.dli_fname) return nullptr;
    return std::strcmp(info.dli_fname, pMap->l_name) == 0 ? pSymbol : nullptr;
}

}  // namespace NQxModuleLoader

#endif  // QXBASE_COM_QXMODULELOADER_H
