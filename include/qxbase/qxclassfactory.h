// Class factories and the module entry points.
//
// A component module describes its classes in one table, g_aoTemplates /
// g_iTemplates, and exports DllEntryPoint, DllGetClassObject,
// DllCanUnloadNow, DllRegisterServer and DllUnregisterServer, which walk that
// table. A module author writes only the table and the classes: the entry
// points, the class factory, the object counter and the lock count come from
// the module kit (the static library qxbase_modulekit, linked by the CMake
// function qxbase_add_module), so each module keeps its own copies even
// though libqxbase, itself such a module, exports the same names.
#ifndef QXBASE_QXCLASSFACTORY_H
#define QXBASE_QXCLASSFACTORY_H

#include <qxbase/qxdefs.h>
#include <qxbase/qxguids.h>
#include <qxbase/qxunknown.h>

#include <cstdint>

class IClassFactory : public IUnknown {
public:
    // An aggregated object (in_pUnkOuter set) may only be asked for IID_IUnknown.
    virtual HRESULT CreateInstance(IUnknown* in_pUnkOuter, const GUID& riid, void** ppv) = 0;
    // Non-zero takes a lock on the module, zero drops one.
    virtual HRESULT LockServer(int in_iLock) = 0;
};

// Creates one object and stores its status in *out_phr; returns the object's
// non-delegating side with a count of 0, or null.
typedef CQxUnknown* (*PFNQxCreateInstance)(IUnknown* in_pUnkOuter, HRESULT* out_phr);
// Called with true when the module is loaded (possibly several times) and
// with false when it is unloaded.
typedef void (*PFNQxInitRoutine)(bool in_bLoading, const GUID* in_pClsid);
// Called before the row is registered (true) or unregistered (false).
typedef HRESULT (*PFNQxRegisterRoutine)(bool in_bRegistering, const GUID* in_pClsid);

// One row per component class of the module.
struct CQxFactoryTemplate {
    const wchar_t* m_pwszName;  // display name printed by registration
    const GUID* m_pClsid;
    PFNQxCreateInstance m_pfnCreateInstance;
    PFNQxInitRoutine m_pfnInit;          // may be null
    PFNQxRegisterRoutine m_pfnRegister;  // may be null
};

// The class factory handed out for one row. Its own count is plain: one
// factory is not shared between threads.
class QXBASE_API CQxClassFactory : public IClassFactory {
public:
    explicit CQxClassFactory(const CQxFactoryTemplate* in_pTemplate);
    ~CQxClassFactory() override;

    HRESULT QueryInterface(const GUID& riid, void** ppv) override;
    uint32_t AddRef() override;
    uint32_t Release() override;
    HRESULT CreateInstance(IUnknown* in_pUnkOuter, const GUID& riid, void** ppv) override;
    HRESULT LockServer(int in_iLock) override;

    // Server locks of this module; changed only atomically.
    static int32_t ms_i32LockedCount;

private:
    const CQxFactoryTemplate* m_pTemplate;
    int64_t m_i64RefCount;

    CQxClassFactory(const CQxClassFactory&) = delete;
    CQxClassFactory& operator=(const CQxClassFactory&) = delete;
};

extern "C" {
// The module's class table, defined by the module author:
//   CQxFactoryTemplate g_aoTemplates[] = { {L"My Class", &CLSID_My, &CMy::Create, nullptr, nullptr} };
//   int32_t g_iTemplates = sizeof(g_aoTemplates) / sizeof(g_aoTemplates[0]);
QXBASE_API extern CQxFactoryTemplate g_aoTemplates[];
QXBASE_API extern int32_t g_iTemplates;
// The instance value last given to DllEntryPoint on attach.
QXBASE_API extern int32_t g_hInst;

// in_iReason 1 attaches (runs every row's init routine with true), 0
// detaches (with false); other reasons do nothing. Always returns 1.
QXBASE_API int DllEntryPoint(int in_iInstance, int in_iReason, void* in_pReserved);
QXBASE_API HRESULT DllGetClassObject(const GUID& rclsid, const GUID& riid, void** ppv);
// S_FALSE while objects of the module live or a server lock is held.
QXBASE_API HRESULT DllCanUnloadNow();
QXBASE_API HRESULT DllRegisterServer(const wchar_t* in_pwszModulePath);
QXBASE_API HRESULT DllUnregisterServer();
}

// The signatures under which clients find the entry points with dlsym.
typedef int (*PFNDllEntryPoint)(int, int, void*);
typedef HRESULT (*PFNDllGetClassObject)(const GUID&, const GUID&, void**);
typedef HRESULT (*PFNDllCanUnloadNow)();
typedef HRESULT (*PFNDllRegisterServer)(const wchar_t*);
typedef HRESULT (*PFNDllUnregisterServer)();

namespace QxBaseCOMNamespace {
// The walks of the module's class table behind the entry points.
QXBASE_API HRESULT QxInternalGetClassObject(const GUID& rclsid, const GUID& riid, void** ppv);
QXBASE_API void QxInternalInitClasses(bool in_bLoading);
QXBASE_API HRESULT QxInternalRegisterAllServers(const wchar_t* in_pwszModulePath);
QXBASE_API HRESULT QxInternalUnregisterAllServers();
// The registration hook a class can name in its row (m_pfnRegister), shared
// by every factory: S_OK for a class of this module's table, so that its
// row is registered or unregistered; E_POINTER without an identifier and
// CLASS_E_NOAGGREGATION (the runtime's answer for an unknown class) for a
// class the module does not offer, which stops a registration.
QXBASE_API HRESULT QxInternalRegisterClass(bool in_bRegistering, const GUID* in_pClsid);
}  // namespace QxBaseCOMNamespace

#endif  // QXBASE_QXCLASSFACTORY_H
