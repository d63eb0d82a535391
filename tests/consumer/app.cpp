// Uses the installed library: registers the consumer module into a
// temporary registry, reads the registry back with CQxIniFile, and creates
// an object through the module's entry points.
#include "shared.h"

#include <dlfcn.h>
#include <stdlib.h>
#include <unistd.h>

#include <cstdio>
#include <string>

static int Fail(const char* what)
{
    fprintf(stderr, "consumer: %s\n", what);
    return 1;
}

int main(int argc, char** argv)
{
    if (argc != 2) return Fail("usage: consumer_app MODULE.so");
    char szFolder[] = "/tmp/qxbase-consumer-XXXXXX";
    if (!mkdtemp(szFolder)) return Fail("mkdtemp");
    setenv("PLWUTILS", szFolder, 1);

    void* hModule = dlopen(argv[1], RTLD_NOW);
    if (!hModule) return Fail(dlerror());
    auto pfnRegister = reinterpret_cast<PFNDllRegisterServer>(dlsym(hModule, "DllRegisterServer"));
    auto pfnGetClassObject = reinterpret_cast<PFNDllGetClassObject>(dlsym(hModule, "DllGetClassObject"));
    auto pfnCanUnload = reinterpret_cast<PFNDllCanUnloadNow>(dlsym(hModule, "DllCanUnloadNow"));
    if (!pfnRegister || !pfnGetClassObject || !pfnCanUnload) return Fail("missing entry point");
    if (pfnRegister(L"/installed/consumer_module.so") != S_OK) return Fail("registration");

    const std::string strRegistry = std::string(szFolder) + "/CLSIDs";
    {
        CQxIniFile registry(strRegistry, false);
        if (registry.GetString(qxGuidToString(CLSID_ConsumerAdder), L"CLSID") != L"/installed/consumer_module.so")
            return Fail("registry content");
    }
    unlink(strRegistry.c_str());
    rmdir(szFolder);

    IClassFactory* pFactory = nullptr;
    if (pfnGetClassObject(CLSID_ConsumerAdder, IID_IClassFactory, reinterpret_cast<void**>(&pFactory)) != S_OK)
        return Fail("class object");
    IConsumerAdder* pAdder = nullptr;
    if (pFactory->CreateInstance(nullptr, IID_IConsumerAdder, reinterpret_cast<void**>(&pAdder)) != S_OK)
        return Fail("create");
    pFactory->Release();
    const int iSum = pAdder->Add(40, 2);
    // The module counts its own object; libqxbase's table and counter are
    // separate.
    if (pfnCanUnload() != S_FALSE || DllCanUnloadNow() != S_OK) return Fail("per-module state");
    pAdder->Release();
    if (iSum != 42 || pfnCanUnload() != S_OK) return Fail("object");
    printf("consumer: module object answered %d; %ls\n", iSum, qxGuidToString(CLSID_QxcBufferEngine).c_str());
    return 0;
}
