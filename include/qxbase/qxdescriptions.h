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

// What a new surface is made from (96 bytes). The members shared with
// SQxSurfaceDescription carry the same names and meanings and are copied by
// NQxfFlexEngineHelper::CopySurfaceDescriptionToCreateSurfaceDescription; the
// pitch, buffer size and second-field offset of an existing surface are
// results of its allocation, so they have no counterpart here.
struct SQxCreateSurfaceDescription {
    uint32_t size;  // sizeof(SQxCreateSurfaceDescription), 96
    // Shared with SQxSurfaceDescription (its first run of five).
    EQxSurfaceFormat eSurfaceFormat;
    uint32_t ulWidth;   // pixels
    uint32_t ulHeight;  // lines of the buffer (of one field for F0/F1)
    EQxPolarity ePolarity;
    EQxColorimetry eColorimetry;
    // Shared with SQxSurfaceDescription (its second run of five).
    uint32_t ulComponentBitCount;
    EQxAspectRatio eAspectRatio;
    EQxMemoryLocation eMemoryLocation;
    uint32_t ulAlignment;  // byte alignment of the buffer and of its lines
    EQxFrameRate eFrameRate;
    // Shared with SQxSurfaceDescription.
    uint32_t ulUserData;
    bool bIsAlphaShaped;
    bool bAllowHostConversion;
    uint8_t aucReserved[2];  // zero
    // Creation only.
    // Bytes to allocate at least; 0 lets the allocator compute them from the
    // format and geometry. Compressed and data formats need it, since their
    // size does not follow from width and height.
    uint32_t ulMinimumBufferSize;
    // Colour the new buffer is cleared to; keQxColorInvalid leaves its
    // contents undefined (no clear at all).
    EQxColor eInitialColor;
    // Key of that clear, 0.0 transparent to 1.0 opaque.
    float fInitialAlpha;
    uint32_t aulReserved[8];  // zero; room to grow without changing the size
};
static_assert(sizeof(SQxCreateSurfaceDescription) == 96, "SQxCreateSurfaceDescription layout");
static_assert(offsetof(SQxCreateSurfaceDescription, eSurfaceFormat) == 4, "layout");
static_assert(offsetof(SQxCreateSurfaceDescription, eColorimetry) == 20, "layout");
static_assert(offsetof(SQxCreateSurfaceDescription, ulComponentBitCount) == 24, "layout");
static_assert(offsetof(SQxCreateSurfaceDescription, eFrameRate) == 40, "layout");
static_assert(offsetof(SQxCreateSurfaceDescription, ulUserData) == 44, "layout");
static_assert(offsetof(SQxCreateSurfaceDescription, bIsAlphaShaped) == 48, "layout");
static_assert(offsetof(SQxCreateSurfaceDescription, bAllowHostConversion) == 49, "layout");
static_assert(offsetof(SQxCreateSurfaceDescription, ulMinimumBufferSize) == 52, "layout");
static_assert(offsetof(SQxCreateSurfaceDescription, eInitialColor) == 56, "layout");
static_assert(offsetof(SQxCreateSurfaceDescription, fInitialAlpha) == 60, "layout");
static_assert(offsetof(SQxCreateSurfaceDescription, aulReserved) == 64, "layout");

// A video resolution: the geometry and timing of a signal (20 bytes).
struct SQxResolutionInfo {
    uint32_t size;      // sizeof(SQxResolutionInfo), 20
    uint32_t ulWidth;   // pixels
    uint32_t ulHeight;  // lines of the whole frame, also for field-based scans
    // Copied into a surface created for this resolution (the fourth 32-bit
    // member, counting the size).
    EQxFrameRate eFrameRate;
    EQxScanMode eScanMode;
};
static_assert(sizeof(SQxResolutionInfo) == 20, "SQxResolutionInfo layout");
static_assert(offsetof(SQxResolutionInfo, ulWidth) == 4, "layout");
static_assert(offsetof(SQxResolutionInfo, ulHeight) == 8, "layout");
static_assert(offsetof(SQxResolutionInfo, eFrameRate) == 12, "layout");
static_assert(offsetof(SQxResolutionInfo, eScanMode) == 16, "layout");

// Description of an existing buffer of audio samples (56 bytes). Samples are
// PCM, little-endian; with ulInterleaved set, the channels of one sampling
// instant follow one another (L R L R ... for stereo).
struct SQxAudioSamplesDescription {
    uint32_t size;          // sizeof(SQxAudioSamplesDescription), 56
    uint32_t ulBufferSize;  // bytes (not copied: a create description sizes its own)
    // Copied into a create description, member for member.
    EQxPolarity ePolarity;  // the video field or frame the samples go with
    EQxMemoryLocation eMemoryLocation;
    // Index of the first channel carried, 0 for the signal's channel 1; a
    // buffer of 4 channels starting at 4 holds the second embedded group.
    uint32_t ulFirstChannel;
    // Bits of a sample word on the link (24 for embedded audio); samples are
    // widened or cut to it on output.
    uint32_t ulTransportBitsPerSample;
    EQxChannelType eChannelType;  // also the channel count
    uint32_t ulInterleaved;       // 1 interleaved, 0 one block per channel
    uint32_t ulSampleRate;        // Hz
    uint32_t ulContainerBitsPerSample;  // 16 or 32: the bits a sample occupies
    EQxAudioBitsPerSample eBitsPerSample;  // significant bits of a sample
    uint32_t ulUserData;          // application-defined
    // Not copied: state of this buffer.
    EQxFrameRate eFrameRate;      // video rate the buffer is paced by
    uint32_t ulSampleCount;       // samples per channel held now
};
static_assert(sizeof(SQxAudioSamplesDescription) == 56, "SQxAudioSamplesDescription layout");
static_assert(offsetof(SQxAudioSamplesDescription, ulBufferSize) == 4, "layout");
static_assert(offsetof(SQxAudioSamplesDescription, ePolarity) == 8, "layout");
static_assert(offsetof(SQxAudioSamplesDescription, eChannelType) == 24, "layout");
static_assert(offsetof(SQxAudioSamplesDescription, eBitsPerSample) == 40, "layout");
static_assert(offsetof(SQxAudioSamplesDescription, ulUserData) == 44, "layout");
static_assert(offsetof(SQxAudioSamplesDescription, eFrameRate) == 48, "layout");
static_assert(offsetof(SQxAudioSamplesDescription, ulSampleCount) == 52, "layout");

// What a new audio-samples buffer is made from (56 bytes). Every member up to
// the user data has the name, meaning and offset of SQxAudioSamplesDescription's.
struct SQxCreateAudioSamplesDescription {
    uint32_t size;          // sizeof(SQxCreateAudioSamplesDescription), 56
    uint32_t ulBufferSize;  // bytes to allocate
    EQxPolarity ePolarity;
    EQxMemoryLocation eMemoryLocation;   // default keQxMemoryLocationHost (1)
    uint32_t ulFirstChannel;             // default 0
    uint32_t ulTransportBitsPerSample;   // default 24
    EQxChannelType eChannelType;
    uint32_t ulInterleaved;              // default 1
    uint32_t ulSampleRate;               // default 48000
    uint32_t ulContainerBitsPerSample;
    EQxAudioBitsPerSample eBitsPerSample;
    uint32_t ulUserData;                 // default 0
    uint32_t aulReserved[2];             // zero
};
static_assert(sizeof(SQxCreateAudioSamplesDescription) == 56, "SQxCreateAudioSamplesDescription layout");
static_assert(offsetof(SQxCreateAudioSamplesDescription, ulBufferSize) == 4, "layout");
static_assert(offsetof(SQxCreateAudioSamplesDescription, ePolarity) == 8, "layout");
static_assert(offsetof(SQxCreateAudioSamplesDescription, eMemoryLocation) == 12, "layout");
static_assert(offsetof(SQxCreateAudioSamplesDescription, ulFirstChannel) == 16, "layout");
static_assert(offsetof(SQxCreateAudioSamplesDescription, ulTransportBitsPerSample) == 20, "layout");
static_assert(offsetof(SQxCreateAudioSamplesDescription, eChannelType) == 24, "layout");
static_assert(offsetof(SQxCreateAudioSamplesDescription, ulInterleaved) == 28, "layout");
static_assert(offsetof(SQxCreateAudioSamplesDescription, ulSampleRate) == 32, "layout");
static_assert(offsetof(SQxCreateAudioSamplesDescription, ulContainerBitsPerSample) == 36, "layout");
static_assert(offsetof(SQxCreateAudioSamplesDescription, eBitsPerSample) == 40, "layout");
static_assert(offsetof(SQxCreateAudioSamplesDescription, ulUserData) == 44, "layout");

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
