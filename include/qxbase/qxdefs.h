// Basic types of the component runtime: the export macro, HRESULT, GUID and
// the common status codes. Every other public header starts from this one.
#ifndef QXBASE_QXDEFS_H
#define QXBASE_QXDEFS_H

#include <cstddef>
#include <cstdint>
#include <cstring>

// Symbols of libqxbase are hidden unless a public header marks them.
#define QXBASE_API __attribute__((visibility("default")))

// Signed 32-bit status: negative is failure.
typedef int32_t HRESULT;

#define SUCCEEDED(hr) (static_cast<HRESULT>(hr) >= 0)
#define FAILED(hr) (static_cast<HRESULT>(hr) < 0)

// Status values are written as unsigned literals and stored as the signed
// HRESULT they stand for.
#define QX_HRESULT(value) static_cast<HRESULT>(static_cast<uint32_t>(value))

#ifndef S_OK
#define S_OK QX_HRESULT(0x00000000u)
#define S_FALSE QX_HRESULT(0x00000001u)
#define E_NOTIMPL QX_HRESULT(0x80004001u)
#define E_NOINTERFACE QX_HRESULT(0x80004002u)
#define E_POINTER QX_HRESULT(0x80004003u)
#define E_FAIL QX_HRESULT(0x80004005u)
#define E_OUTOFMEMORY QX_HRESULT(0x8007000Eu)
#define E_INVALIDARG QX_HRESULT(0x80070057u)
// The code the component runtime answers for an unknown class identifier
// (COM's name for it is CLASS_E_NOAGGREGATION).
#define CLASS_E_NOAGGREGATION QX_HRESULT(0x80040110u)
#define CLASS_E_CLASSNOTAVAILABLE QX_HRESULT(0x80040111u)
#endif

// Class context of CoCreateInstance; accepted and ignored.
#ifndef CLSCTX_INPROC_SERVER
#define CLSCTX_INPROC_SERVER 0x1u
#endif

// 16-byte identifier: the integer fields are stored little-endian, so the
// in-memory bytes are those of the conventional binary form.
#ifndef GUID_DEFINED
#define GUID_DEFINED
typedef struct _GUID {
    uint32_t Data1;
    uint16_t Data2;
    uint16_t Data3;
    uint8_t Data4[8];
} GUID;
#endif
static_assert(sizeof(GUID) == 16, "GUID is 16 bytes");

typedef GUID IID;
typedef GUID CLSID;
typedef const GUID& REFGUID;
typedef const GUID& REFIID;
typedef const GUID& REFCLSID;

// Two identifiers are equal when all 16 bytes are equal.
inline bool IsEqualGUID(const GUID& a, const GUID& b)
{
    return std::memcmp(&a, &b, sizeof(GUID)) == 0;
}
inline bool operator==(const GUID& a, const GUID& b) { return IsEqualGUID(a, b); }
inline bool operator!=(const GUID& a, const GUID& b) { return !IsEqualGUID(a, b); }

#endif  // QXBASE_QXDEFS_H
