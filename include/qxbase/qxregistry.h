// The class registry and instance creation by class identifier.
//
// The registry is an INI file (see qxinifile.h) with one section, "CLSID",
// mapping the text form of each class identifier to the full path of the
// module that implements it. Registration writes the file named by the
// environment variable PLWUTILS ("$PLWUTILS/CLSIDs"); creation always reads
// the fixed path QX_CLASS_REGISTRY_PATH and never consults the variable, so
// registration can be pointed elsewhere and creation cannot.
#ifndef QXBASE_QXREGISTRY_H
#define QXBASE_QXREGISTRY_H

#include <qxbase/qxdefs.h>
#include <qxbase/qxunknown.h>

#include <string>

#define QX_CLASS_REGISTRY_PATH "/opt/QueltoVideo/PLW.utils/CLSIDs"
// Capacity in bytes of the path buffers below.
#define QX_MAX_PATH 4096

// "{XXXXXXXX-XXXX-XXXX-XXXXXXXXXXXXXXXX}": upper-case hexadecimal, 37
// characters, with no hyphen inside the last eight bytes. Registry files
// with the 38-character form of other tools do not match on purpose.
QXBASE_API std::wstring qxGuidToString(const GUID& in_guid);

// Looks the class up in the registry at QX_CLASS_REGISTRY_PATH and writes its
// module path (UTF-8, at most QX_MAX_PATH bytes with the terminator) into
// out_pszPath. False when the class is not registered or the path does not
// fit.
QXBASE_API bool GetDllPath(const GUID& in_clsid, char* out_pszPath);

// Creates an instance of a registered class: loads its module (modules are
// never unloaded), attaches it, asks its class factory for riid. Every
// failure before the factory answers is E_NOINTERFACE; the factory's own
// codes pass through. in_pUnkOuter and in_uiContext are ignored: instances
// made here are never aggregated. *ppv is null on any failure.
QXBASE_API HRESULT CoCreateInstance(const GUID& rclsid, IUnknown* in_pUnkOuter,
                                    unsigned int in_uiContext, const GUID& riid, void** ppv);

namespace QxBaseCOMNamespace {
// Writes "$PLWUTILS/CLSIDs" into out_pszPath (QX_MAX_PATH bytes). Prints a
// message and returns false when PLWUTILS is not set.
QXBASE_API bool QxInternalGetIniFilePath(char* out_pszPath);
// Adds (or replaces) the class's record in the registry named by PLWUTILS.
// E_FAIL when PLWUTILS is not set, else S_OK. in_pwszName is not used.
QXBASE_API HRESULT QxInternalRegisterServer(GUID in_clsid, const wchar_t* in_pwszName,
                                            const wchar_t* in_pwszModulePath);
// Removes the class's record; E_FAIL when PLWUTILS is not set, else S_OK.
QXBASE_API HRESULT QxInternalUnregisterServer(GUID in_clsid);
}  // namespace QxBaseCOMNamespace

#endif  // QXBASE_QXREGISTRY_H
