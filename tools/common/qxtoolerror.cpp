#include "tools/common/qxtoolerror.h"

#include <qxbase/qxerrors.h>

#include <cstdio>
#include <cstring>

namespace NQxTool {

namespace {

struct SMeaning {
    HRESULT hr;
    const char* pszText;
};

const SMeaning kasMeanings[] = {
    {E_NOINTERFACE, "no such interface"},
    {E_POINTER, "a null pointer"},
    {E_FAIL, "failure"},
    {E_OUTOFMEMORY, "out of memory"},
    {E_INVALIDARG, "an invalid argument"},
    {CLASS_E_NOAGGREGATION, "the class is not registered"},
    {CLASS_E_CLASSNOTAVAILABLE, "the class is not available"},
    {QX_E_OPERATION_REFUSED, "the engine was busy with another operation"},
    {QX_E_INCOMPATIBLE_OPAQUE_FORMATS, "opaque surfaces of different formats"},
    {QX_E_INVALID_GEOMETRY, "sizes, rectangles or pitches that do not fit together"},
    {QX_E_CONVERSION_NOT_ALLOWED, "the engine has no conversion between these formats"},
    {QX_E_ENGINE_ALLOCATION_FAILED, "the engine could not be allocated"},
    {QX_E_INVALID_OPERATION, "an operation the engine does not know"},
    {QX_E_INVALID_POINTER, "a missing surface or argument"},
    {QX_E_NOT_INITIALIZED, "the engine is not ready"},
    {QX_E_TIMEOUT, "a wait ran out of time"},
    {QX_E_INVALID_WIDTH, "a width that the format cannot carry"},
    {QX_E_COLORIMETRY_MISMATCH, "colorimetries that cannot be converted into each other"},
    {QX_E_OPERATION_FAILED, "the work itself failed"},
};

}  // namespace

std::string DescribeHResult(HRESULT in_hr)
{
    char szCode[16];
    std::snprintf(szCode, sizeof(szCode), "0x%08X", static_cast<uint32_t>(in_hr));
    for (const SMeaning& r : kasMeanings)
        if (r.hr == in_hr) return std::string(szCode) + " (" + r.pszText + ")";
    return szCode;
}

std::string FileError(const std::string& in_strPath, int in_iErrno)
{
    return in_strPath + ": " + std::strerror(in_iErrno);
}

int ToolMain(const char* in_pszTool, const std::function<int()>& in_fnRun)
{
    try {
        return in_fnRun();
    } catch (const CQxToolError& e) {
        std::fprintf(stderr, "%s: %s\n", in_pszTool, e.what());
        if (e.GetStatus() == keExitUsage) std::fprintf(stderr, "Try '%s --help' for the options.\n", in_pszTool);
        return e.GetStatus();
    } catch (const std::exception& e) {
        std::fprintf(stderr, "%s: %s\n", in_pszTool, e.what());
        return keExitFailure;
    }
}

}  // namespace NQxTool
