// qxregsvr [-u] MODULE.so
//
// Registers the component classes of a module in the class registry file
// named by PLWUTILS ("$PLWUTILS/CLSIDs"), or removes them with -u. The
// module's own messages go to standard output; the tool's errors go to
// standard error with a non-zero exit status.
#include <qxbase/qxclassfactory.h>

#include "com/qxmoduleloader.h"
#include "util/qxtext.h"

#include <dlfcn.h>
#include <sys/stat.h>

#include <cerrno>
#include <climits>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>

namespace {

enum EExitStatus {
    kExitOk = 0,
    kExitUsage = 2,
    kExitNoRegistryFolder = 3,
    kExitNoFile = 4,
    kExitNotLoadable = 5,
    kExitNoEntryPoint = 6,
    kExitFailed = 7,
};

int Usage()
{
    fprintf(stderr,
            "usage: qxregsvr [-u] MODULE.so\n"
            "  Registers the module's classes in $PLWUTILS/CLSIDs (-u: unregisters them).\n");
    return kExitUsage;
}

}  // namespace

int main(int argc, char** argv)
{
    bool bUnregister = false;
    const char* pszModule = nullptr;
    for (int i = 1; i < argc; ++i) {
        if (std::strcmp(argv[i], "-u") == 0 && !bUnregister && !pszModule)
            bUnregister = true;
        else if (std::strcmp(argv[i], "-h") == 0 || std::strcmp(argv[i], "--help") == 0)
        {
            Usage();
            return kExitOk;
        }
        else if (!pszModule && argv[i][0] != '-')
            pszModule = argv[i];
        else
            return Usage();
    }
    if (!pszModule) return Usage();

    if (!getenv("PLWUTILS")) {
        fprintf(stderr,
                "qxregsvr: PLWUTILS is not set; set it to the folder that holds (or will hold) "
                "the class registry file CLSIDs\n");
        return kExitNoRegistryFolder;
    }

    struct stat st;
    if (stat(pszModule, &st) != 0 || !S_ISREG(st.st_mode)) {
        fprintf(stderr, "qxregsvr: %s: no such module file\n", pszModule);
        return kExitNoFile;
    }
    // The registry keeps the module's absolute path: clients load it from
    // wherever they run.
    char szAbsolute[PATH_MAX];
    if (!realpath(pszModule, szAbsolute)) {
        fprintf(stderr, "qxregsvr: %s: cannot resolve the path: %s\n", pszModule, strerror(errno));
        return kExitNoFile;
    }

    void* hModule = dlopen(szAbsolute, RTLD_NOW);
    if (!hModule) {
        fprintf(stderr, "qxregsvr: %s is not a loadable module: %s\n", szAbsolute, dlerror());
        return kExitNotLoadable;
    }

    const char* pszEntry = bUnregister ? "DllUnregisterServer" : "DllRegisterServer";
    void* pEntry = NQxModuleLoader::FindOwnSymbol(hModule, pszEntry);
    if (!pEntry) {
        fprintf(stderr, "qxregsvr: %s has no %s entry point; is it a component module?\n", szAbsolute,
                pszEntry);
        return kExitNoEntryPoint;
    }

    HRESULT hr;
    if (bUnregister) {
        hr = reinterpret_cast<PFNDllUnregisterServer>(pEntry)();
    } else {
        const std::wstring strPath = NQxText::DecodeUtf8(szAbsolute, std::strlen(szAbsolute));
        hr = reinterpret_cast<PFNDllRegisterServer>(pEntry)(strPath.c_str());
    }
    fflush(stdout);
    if (FAILED(hr)) {
        fprintf(stderr, "qxregsvr: %s failed with 0x%08X\n", pszEntry, static_cast<unsigned>(hr));
        return kExitFailed;
    }
    // The module stays loaded until exit: its static objects may still be
    // referenced by what it registered.
    return kExitOk;
}
