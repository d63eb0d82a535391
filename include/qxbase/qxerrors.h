// The SDK's own failure codes (0x8999xxxx) returned by this library.
#ifndef QXBASE_QXERRORS_H
#define QXBASE_QXERRORS_H

#include <qxbase/qxdefs.h>

// An engine operation had to wait behind another one, or was refused as a
// nested call. (The asynchronous engine still carries the work out.)
#define QX_E_OPERATION_REFUSED QX_HRESULT(0x8999802Fu)
// Opaque (compressed or data) surfaces of incompatible formats.
#define QX_E_INCOMPATIBLE_OPAQUE_FORMATS QX_HRESULT(0x89998037u)
// Bad or out-of-bounds rectangle, unsupported size relation, a line too wide
// for the intermediate, or opaque data larger than its destination.
#define QX_E_INVALID_GEOMETRY QX_HRESULT(0x89998038u)
// A change of pixel format that the surfaces do not allow.
#define QX_E_CONVERSION_NOT_ALLOWED QX_HRESULT(0x89998039u)
// The buffer engine object could not be allocated.
#define QX_E_ENGINE_ALLOCATION_FAILED QX_HRESULT(0x89998043u)
// An unknown operation kind, or a field weave of an odd height.
#define QX_E_INVALID_OPERATION QX_HRESULT(0x89998044u)
// A null surface, rectangle or argument; for a work queue, an empty task
// function.
#define QX_E_INVALID_POINTER QX_HRESULT(0x89998045u)
// No implementation, no task function, or a component that could not be
// obtained.
#define QX_E_NOT_INITIALIZED QX_HRESULT(0x89998047u)
// A wait ran out of time.
#define QX_E_TIMEOUT QX_HRESULT(0x89998048u)
// A width that is not a multiple of what the format needs.
#define QX_E_INVALID_WIDTH QX_HRESULT(0x899980C4u)
// Two different colorimetries where one of them has no conversion.
#define QX_E_COLORIMETRY_MISMATCH QX_HRESULT(0x899981DAu)
// The work itself failed (a slice or a clear), or no dispatch queue exists
// for the requested priority.
#define QX_E_OPERATION_FAILED QX_HRESULT(0x89998FFFu)

#endif  // QXBASE_QXERRORS_H
