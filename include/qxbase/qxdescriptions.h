// Description structures of the SDK's public interface. Each description
// begins with its own size in bytes; sizes and member offsets are fixed with
// static_asserts because modules built separately share them.
#ifndef QXBASE_QXDESCRIPTIONS_H
#define QXBASE_QXDESCRIPTIONS_H

#include <qxbase/qxenums.h>

#include <cstddef>
#include <cstdint>

// A rectangle of pixels: left and top included, right and bottom excluded.
struct SQxRect {
    int32_t left;
    int32_t top;
    int32_t right;
    int32_t bottom;
};
static_assert(sizeof(SQxRect) == 16, "SQxRect layout");

// Description of an existing surface (64 bytes).
struct SQxSurfaceDescription {
    uint32_t size;  // sizeof(SQxSurfaceDescription)
    // Copied into a create description (first run of five).
    EQxSurfaceFormat eSurfaceFormat;
    uint32_t ulWidth;   // pixels
    uint32_t ulHeight;  // lines of this buffer (of one field for F0/F1)
    EQxPolarity ePolarity;
    EQxColorimetry eColorimetry;  // 0: none (refused for YUV formats)
    // Geometry of the buffer as allocated (not copied).
    int32_t lPitch;         // bytes from one line to the next
    uint32_t ulBufferSize;  // bytes
    // Copied into a create description (second run of five).
    uint32_t ulComponentBitCount;  // 8, 10, 12, 16 ...
    EQxAspectRatio eAspectRatio;
    EQxMemoryLocation eMemoryLocation;
    uint32_t ulAlignment;  // byte alignment of the buffer and of its lines
    EQxFrameRate eFrameRate;
    // Where the second field starts in a "Back to back" buffer, in bytes
    // (not copied).
    uint32_t ulSecondFieldOffset;
    // An application-defined value carried to surfaces created from this
    // description (copied).
    uint32_t ulUserData;
    // Copied flags.
    // The colour components are stored multiplied by the key (premultiplied).
    bool bIsAlphaShaped;
    // The producer of this surface lets the host engine change its pixel
    // format (or, on a single field, its field parity). When clear on a YUV
    // surface, only same-format copies and the lossless 8-bit YUYV/2VUY
    // exchange are allowed.
    bool bAllowHostConversion;
    uint8_t aucReserved[2];
};
static_assert(sizeof(SQxSurfaceDescription) == 64, "SQxSurfaceDescription layout");
static_assert(offsetof(SQxSurfaceDescription, eSurfaceFormat) == 4, "layout");
static_assert(offsetof(SQxSurfaceDescription, eColorimetry) == 20, "layout");
static_assert(offsetof(SQxSurfaceDescription, lPitch) == 24, "layout");
static_assert(offsetof(SQxSurfaceDescription, ulComponentBitCount) == 32, "layout");
static_assert(offsetof(SQxSurfaceDescription, eFrameRate) == 48, "layout");
static_assert(offsetof(SQxSurfaceDescription, ulUserData) == 56, "layout");
static_assert(offsetof(SQxSurfaceDescription, bIsAlphaShaped) == 60, "layout");
static_assert(offsetof(SQxSurfaceDescription, bAllowHostConversion) == 61, "layout");

// Options of the buffer engine's conversions (kept by pointer; the engine
// does not copy them).
struct SQxConversionOptions {
    uint32_t size;  // sizeof(SQxConversionOptions)
    // Colorimetry assumed for RGB surfaces converted to or from YUV when the
    // RGB surface carries none (0: that of the YUV side).
    EQxColorimetry eRgbColorimetry;
    // Default chroma handling when a copy is called with an invalid mode.
    EQxFilterMode eDefaultFilterMode;
    uint32_t ulReserved;
};
static_assert(sizeof(SQxConversionOptions) == 16, "SQxConversionOptions layout");

#endif  // QXBASE_QXDESCRIPTIONS_H
