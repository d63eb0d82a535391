// The class factory, the module entry points and the walks of the module's
// class table. This file belongs to the module kit: every component module
// compiles its own copy, so the entry points it exports read that module's
// g_aoTemplates and count that module's objects and locks.
#include <qxbase/qxclassfactory.h>
#include <qxbase/qxregistry.h>

#include "util/qxtext.h"

#include <string>

extern "C" int32_t g_hInst = 0;

int32_t CQxClassFactory::ms_i32LockedCount = 0;

namespace {

bool IsUnknownOrClassFactory(const GUID& riid)
{
    return &riid == &IID_IUnknown || &riid == &IID_IClassFactory ||
           IsEqualGUID(riid, IID_IUnknown) || IsEqualGUID(riid, IID_IClassFactory);
}

// The registration line of one row: at most 255 characters, like the fixed
// buffer the line has always been formatted into.
void PrintRowLine(const wchar_t* in_pwszVerb, const wchar_t* in_pwszName)
{
    std::wstring strLine = L"- - ";
    strLine += in_pwszVerb;
    strLine += L' ';
    strLine += in_pwszName ? in_pwszName : L"(null)";
    strLine += L'\n';
    if (strLine.size() > 255) strLine.resize(255);
    NQxText::ConsoleWrite(strLine);
}

}  // namespace

// --- CQxClassFactory --------------------------------------------------------

CQxClassFactory::CQxClassFactory(const CQxFactoryTemplate* in_pTemplate)
    : m_pTemplate(in_pTemplate), m_i64RefCount(0)
{
    __atomic_add_fetch(&g_i32Objects, 1, __ATOMIC_SEQ_CST);
}

CQxClassFactory::~CQxClassFactory() { __atomic_sub_fetch(&g_i32Objects, 1, __ATOMIC_SEQ_CST); }

HRESULT CQxClassFactory::QueryInterface(const GUID& riid, void** ppv)
{
    if (!IsUnknownOrClassFactory(riid)) return E_NOINTERFACE;
    *ppv = static_cast<IClassFactory*>(this);
    AddRef();
    return S_OK;
}

uint32_t CQxClassFactory::AddRef() { return static_cast<uint32_t>(++m_i64RefCount); }

uint32_t CQxClassFactory::Release()
{
    const int64_t i64Count = --m_i64RefCount;
    if (i64Count == 0) delete this;
    return static_cast<uint32_t>(i64Count);
}

HRESULT CQxClassFactory::CreateInstance(IUnknown* in_pUnkOuter, const GUID& riid, void** ppv)
{
    // An aggregated object hands out its non-delegating side only.
    if (in_pUnkOuter && !(&riid == &IID_IUnknown || IsEqualGUID(riid, IID_IUnknown)))
        return E_NOINTERFACE;

    HRESULT hr = S_OK;
    CQxUnknown* pObject = m_pTemplate->m_pfnCreateInstance(in_pUnkOuter, &hr);
    if (!pObject) return FAILED(hr) ? hr : E_OUTOFMEMORY;
    if (FAILED(hr)) {
        delete pObject;
        return hr;
    }
    // The temporary reference makes a failed query destroy the object again;
    // a successful one leaves it with exactly the query's reference.
    pObject->NonDelegatingAddRef();
    hr = pObject->NonDelegatingQueryInterface(riid, ppv);
    pObject->NonDelegatingRelease();
    return hr;
}

HRESULT CQxClassFactory::LockServer(int in_iLock)
{
    __atomic_add_fetch(&ms_i32LockedCount, in_iLock ? 1 : -1, __ATOMIC_SEQ_CST);
    return S_OK;
}

// --- table walks ------------------------------------------------------------

namespace QxBaseCOMNamespace {

HRESULT QxInternalGetClassObject(const GUID& rclsid, const GUID& riid, void** ppv)
{
    if (!IsUnknownOrClassFactory(riid)) return E_NOINTERFACE;
    // An unknown class answers CLASS_E_NOAGGREGATION: clients of this
    // runtime test for that very code.
    if (g_iTemplates < 1) return CLASS_E_NOAGGREGATION;
    for (int32_t i = 0; i < g_iTemplates; ++i) {
        const CQxFactoryTemplate* pRow = &g_aoTemplates[i];
        if (!IsEqualGUID(*pRow->m_pClsid, rclsid)) continue;
        CQxClassFactory* pFactory = new CQxClassFactory(pRow);
        *ppv = static_cast<IClassFactory*>(pFactory);
        pFactory->AddRef();
        return S_OK;
    }
    return CLASS_E_NOAGGREGATION;
}

void QxInternalInitClasses(bool in_bLoading)
{
    for (int32_t i = 0; i < g_iTemplates; ++i) {
        const CQxFactoryTemplate& row = g_aoTemplates[i];
        if (row.m_pfnInit) row.m_pfnInit(in_bLoading, row.m_pClsid);
    }
}

HRESULT QxInternalRegisterAllServers(const wchar_t* in_pwszModulePath)
{
    HRESULT hr = S_OK;
    for (int32_t i = 0; i < g_iTemplates; ++i) {
        const CQxFactoryTemplate& row = g_aoTemplates[i];
        if (row.m_pfnRegister) {
            const HRESULT hrRow = row.m_pfnRegister(true, row.m_pClsid);
            if (FAILED(hrRow)) return hrRow;
        }
        hr = QxInternalRegisterServer(*row.m_pClsid, row.m_pwszName, in_pwszModulePath);
        // Printed even for a row that failed, so the console shows where the
        // walk stopped.
        PrintRowLine(L"Register", row.m_pwszName);
        if (FAILED(hr)) break;
    }
    return hr;
}

HRESULT QxInternalRegisterClass(bool, const GUID* in_pClsid)
{
    if (!in_pClsid) return E_POINTER;
    for (int32_t i = 0; i < g_iTemplates; ++i)
        if (IsEqualGUID(*g_aoTemplates[i].m_pClsid, *in_pClsid)) return S_OK;
    return CLASS_E_NOAGGREGATION;
}

HRESULT QxInternalUnregisterAllServers()
{
    HRESULT hr = S_OK;
    for (int32_t i = 0; i < g_iTemplates; ++i) {
        const CQxFactoryTemplate& row = g_aoTemplates[i];
        if (row.m_pfnRegister) row.m_pfnRegister(false, row.m_pClsid);
        hr = QxInternalUnregisterServer(*row.m_pClsid);
        PrintRowLine(L"Unregister", row.m_pwszName);
        if (FAILED(hr)) break;
    }
    return hr;
}

}  // namespace QxBaseCOMNamespace

// --- entry points -----------------------------------------------------------

extern "C" {

int DllEntryPoint(int in_iInstance, int in_iReason, void*)
{
    if (in_iReason == 1) {
        g_hInst = in_iInstance;
        QxBaseCOMNamespace::QxInternalInitClasses(true);
    } else if (in_iReason == 0) {
        QxBaseCOMNamespace::QxInternalInitClasses(false);
    }
    return 1;
}

HRESULT DllGetClassObject(const GUID& rclsid, const GUID& riid, void** ppv)
{
    return QxBaseCOMNamespace::QxInternalGetClassObject(rclsid, riid, ppv);
}

HRESULT DllCanUnloadNow()
{
    if (__atomic_load_n(&g_i32Objects, __ATOMIC_SEQ_CST) != 0 ||
        __atomic_load_n(&CQxClassFactory::ms_i32LockedCount, __ATOMIC_SEQ_CST) != 0)
        return S_FALSE;
    return S_OK;
}

HRESULT DllRegisterServer(const wchar_t* in_pwszModulePath)
{
    return QxBaseCOMNamespace::QxInternalRegisterAllServers(in_pwszModulePath);
}

HRESULT DllUnregisterServer() { return QxBaseCOMNamespace::QxInternalUnregisterAllServers(); }

}  // extern "C"
