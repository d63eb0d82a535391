// The class registry file and instance creation by class identifier. These
// functions are the library's alone (no per-module state): modules call
// libqxbase's copies.
#include <qxbase/qxclassfactory.h>
#include <qxbase/qxinifile.h>
#include <qxbase/qxregistry.h>

#include "com/qxmoduleloader.h"
#include "util/qxtext.h"

#include <dlfcn.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>

namespace {

const wchar_t* const kRegistrySection = L"CLSID";

}  // namespace

std::wstring qxGuidToString(const GUID& in_guid)
{
    wchar_t wszText[40];
    swprintf(wszText, 40, L"{%08X-%04X-%04X-%02X%02X%02X%02X%02X%02X%02X%02X}",
             static_cast<unsigned>(in_guid.Data1), static_cast<unsigned>(in_guid.Data2),
             static_cast<unsigned>(in_guid.Data3), in_guid.Data4[0], in_guid.Data4[1],
             in_guid.Data4[2], in_guid.Data4[3], in_guid.Data4[4], in_guid.Data4[5],
             in_guid.Data4[6], in_guid.Data4[7]);
    return wszText;
}

bool GetDllPath(const GUID& in_clsid, char* out_pszPath)
{
    CQxIniFile registry(QX_CLASS_REGISTRY_PATH, false);
    const std::wstring strPath = registry.GetString(qxGuidToString(in_clsid), kRegistrySection, L"");
    if (strPath.empty()) return false;
    // The fixed UTF-8 form, not the process locale: a module path with
    // non-ASCII characters must load in a host that never set a locale.
    const std::string strBytes = NQxText::EncodeUtf8(strPath);
    // A truncated path could name another file; refuse it instead.
    if (strBytes.size() >= QX_MAX_PATH || strBytes.find('\0') != std::string::npos) return false;
    std::memcpy(out_pszPath, strBytes.c_str(), strBytes.size() + 1);
    return true;
}

HRESULT CoCreateInstance(const GUID& rclsid, IUnknown*, unsigned int, const GUID& riid, void** ppv)
{
    *ppv = nullptr;
    char szPath[QX_MAX_PATH];
    if (!GetDllPath(rclsid, szPath)) return E_NOINTERFACE;
    // Never closed: a module once loaded stays loaded, and each creation
    // takes one more reference on it.
    void* hModule = dlopen(szPath, RTLD_NOW);
    if (!hModule) return E_NOINTERFACE;
    auto pfnEntryPoint = reinterpret_cast<PFNDllEntryPoint>(NQxModuleLoader::FindOwnSymbol(hModule, "DllEntryPoint"));
    if (!pfnEntryPoint) return E_NOINTERFACE;
    auto pfnGetClassObject =
        reinterpret_cast<PFNDllGetClassObject>(NQxModuleLoader::FindOwnSymbol(hModule, "DllGetClassObject"));
    if (!pfnGetClassObject) return E_NOINTERFACE;

    pfnEntryPoint(static_cast<int>(getpid()), 1, nullptr);
    IClassFactory* pFactory = nullptr;
    HRESULT hr = pfnGetClassObject(rclsid, IID_IClassFactory, reinterpret_cast<void**>(&pFactory));
    if (hr != S_OK) return hr;
    if (!pFactory) return E_NOINTERFACE;
    hr = pFactory->CreateInstance(nullptr, riid, ppv);
    // The factory is the module's own object; its virtual destructor runs the
    // module's code, whatever allocator the module uses.
    delete pFactory;
    if (hr != S_OK) *ppv = nullptr;
    return hr;
}

namespace QxBaseCOMNamespace {

bool QxInternalGetIniFilePath(char* out_pszPath)
{
    const char* pszFolder = getenv("PLWUTILS");
    if (!pszFolder) {
        NQxText::ConsoleWrite(L"QxInternalGetIniFilePath: Environement variable PLWUTILS not found.\n");
        return false;
    }
    snprintf(out_pszPath, QX_MAX_PATH, "%s/CLSIDs", pszFolder);
    return true;
}

HRESULT QxInternalRegisterServer(GUID in_clsid, const wchar_t*, const wchar_t* in_pwszModulePath)
{
    char szPath[QX_MAX_PATH];
    if (!QxInternalGetIniFilePath(szPath)) return E_FAIL;
    CQxIniFile registry(szPath, true);
    // Written at once by the auto-save; a write failure has printed its own
    // message and does not change the answer.
    registry.SetString(qxGuidToString(in_clsid), kRegistrySection, in_pwszModulePath);
    return S_OK;
}

HRESULT QxInternalUnregisterServer(GUID in_clsid)
{
    char szPath[QX_MAX_PATH];
    if (!QxInternalGetIniFilePath(szPath)) return E_FAIL;
    CQxIniFile registry(szPath, false);
    // Written when the file object goes out of scope.
    registry.DeleteRecord(qxGuidToString(in_clsid), kRegistrySection);
    return S_OK;
}

}  // namespace QxBaseCOMNamespace
