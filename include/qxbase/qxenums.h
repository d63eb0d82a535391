// Enumerations of the SDK's public interface that this library consumes.
// Every enumeration is a signed 32-bit value; modules built separately share
// them, so values never change once published.
#ifndef QXBASE_QXENUMS_H
#define QXBASE_QXENUMS_H

#include <cstdint>

// Pixel format of a surface. Byte orders are given for the formats that the
// host buffer engine converts; the compressed and data formats are opaque to
// it (copied as bytes, never converted).
enum EQxSurfaceFormat : int32_t {
    keQxSurfaceFormatInvalid = 0,
    // "ARGB Graphic": 8-bit RGB with alpha at graphics (full) levels, 0..255.
    // Memory order per pixel: B, G, R, A.
    keQxSurfaceFormatARGBGraphic = 1,
    // "RGB Graphic": RGB without alpha at graphics levels; 8 bits: 3 bytes a
    // pixel (RGB24), otherwise 12 bits packed 8 pixels in 36 bytes (RGB36).
    keQxSurfaceFormatRGBGraphic = 2,
    // "ARGB Video": as ARGB Graphic but at video (studio) levels, 16..235.
    keQxSurfaceFormatARGBVideo = 3,
    // "RGB Video": RGB without alpha at video levels (not converted here).
    keQxSurfaceFormatRGBVideo = 4,
    // "YUYV 422": 4:2:2, 8 bits: Y0 Cb0 Y1 Cr0 ...; 10 bits: the packed 10-bit
    // YUYV layout (40 bytes per 16 pixels: 32 upper bytes, then 8 bytes of
    // low bit pairs).
    keQxSurfaceFormatYUYV422 = 5,
    // "YUAYVA 4224": 4:2:2:4 with key. 8 bits: groups of 8 pixels, 16 bytes of
    // YUYV then 8 key bytes; 10 bits: 32 bits a pixel.
    keQxSurfaceFormatYUAYVA4224 = 6,
    // "Alpha": one 8-bit key value a pixel.
    keQxSurfaceFormatAlpha = 7,
    keQxSurfaceFormatReserved8 = 8,
    keQxSurfaceFormatReserved9 = 9,
    keQxSurfaceFormatReserved10 = 10,
    // Compressed and data formats (opaque to the host buffer engine).
    keQxSurfaceFormatDVCAM411 = 11,
    keQxSurfaceFormatDVCAM420 = 12,
    keQxSurfaceFormatDVBased25_411 = 13,
    keQxSurfaceFormatDVBased50_422 = 14,
    keQxSurfaceFormatDVBased100_HD = 15,
    keQxSurfaceFormatMPEG2IFrame = 16,
    // 17 and 18: the first and second field of the same compressed pattern.
    keQxSurfaceFormatMPEG2IBPField1 = 17,
    keQxSurfaceFormatMPEG2IBPField2 = 18,
    keQxSurfaceFormatD10 = 19,
    keQxSurfaceFormatMPEG2LongGOP420HD = 20,
    keQxSurfaceFormatMPEG2LongGOP422HD = 21,
    keQxSurfaceFormatMPEG2LongGOP420HDVBR = 22,
    keQxSurfaceFormatH264Intra50 = 23,
    keQxSurfaceFormatH264Intra100 = 24,
    keQxSurfaceFormatH264 = 25,
    keQxSurfaceFormatMPEG2LongGOP = 26,
    keQxSurfaceFormatDNxHD = 27,
    keQxSurfaceFormatReserved28 = 28,
    keQxSurfaceFormatReserved29 = 29,
    keQxSurfaceFormatH264Intra200 = 30,
    keQxSurfaceFormatH264Intra444 = 31,
    keQxSurfaceFormatHEVC = 32,
    // "AYUV 4444": 8-bit 4:4:4:4, key first: A, Y, Cb, Cr per pixel.
    keQxSurfaceFormatAYUV4444 = 33,
    keQxSurfaceFormatReserved34 = 34,
    keQxSurfaceFormatMJPEG = 35,
    keQxSurfaceFormatJPEG2000 = 36,
    // "Alpha Luminance": 8-bit key and 8-bit luma a pixel.
    keQxSurfaceFormatAlphaLuminance = 37,
    // "BGRA Graphic": 8-bit RGB with alpha at graphics levels. Memory order
    // per pixel: A, R, G, B.
    keQxSurfaceFormatBGRAGraphic = 38,
    keQxSurfaceFormatReserved39 = 39,
    keQxSurfaceFormatReserved40 = 40,
    // 41 and 42: the first and second field of the same compressed pattern.
    keQxSurfaceFormatDV25Field1 = 41,
    keQxSurfaceFormatDV25Field2 = 42,
    keQxSurfaceFormatRDD36_422 = 43,
    keQxSurfaceFormatRDD36_4444 = 44,
    keQxSurfaceFormatJPEGXS = 45,
    keQxSurfaceFormatReserved46 = 46,
    keQxSurfaceFormatVC3UHD = 47,
    keQxSurfaceFormatReserved48 = 48,
    keQxSurfaceFormatReserved49 = 49,
    keQxSurfaceFormatReserved50 = 50,
    // 10-bit RGB at video levels with a 2-bit key, one 32-bit word a pixel:
    // A (2 bits), R, G, B (10 bits each) from the most significant bits.
    keQxSurfaceFormatA2R10G10B10Video = 51,
    // "DNxHD With Alpha".
    keQxSurfaceFormatDNxHDWithAlpha = 52,
    // "Uncompressed V210": six pixels in four little-endian 32-bit words, 10-bit
    // fields at bits 0, 10, 20: (Cb0 Y0 Cr0) (Y1 Cb1 Y2) (Cr1 Y3 Cb2) (Y4 Cr2 Y5).
    keQxSurfaceFormatV210 = 53,
    // 8-bit 4:2:2 in 2VUY order: Cb0 Y0 Cr0 Y1 ...
    keQxSurfaceFormat2VUY = 54,
    keQxSurfaceFormatReserved55 = 55,
    // "MPEG-4 SStP".
    keQxSurfaceFormatMPEG4SStP = 56,
    keQxSurfaceFormatH264UHD = 57,
    keQxSurfaceFormatTimecodeData = 58,
    // 16-bit RGB with alpha at graphics levels: A, B, G, R as 16-bit words.
    keQxSurfaceFormatABGR16 = 59,
    // "Quelto Ancillary Data": ancillary data packets of a frame (opaque).
    keQxSurfaceFormatQueltoAncillaryData = 60,
    keQxSurfaceFormatReserved61 = 61,
    keQxSurfaceFormatReserved62 = 62,
    keQxSurfaceFormatReserved63 = 63,
    keQxSurfaceFormatReserved64 = 64,
    keQxSurfaceFormatReserved65 = 65,
    keQxSurfaceFormatReserved66 = 66,
    keQxSurfaceFormatReserved67 = 67,
    keQxSurfaceFormatReserved68 = 68,
    keQxSurfaceFormatReserved69 = 69,
    keQxSurfaceFormatReserved70 = 70,
    keQxSurfaceFormatReserved71 = 71,
    keQxSurfaceFormatReserved72 = 72,
    keQxSurfaceFormatReserved73 = 73,
    keQxSurfaceFormatReserved74 = 74,
    keQxSurfaceFormatReserved75 = 75,
    keQxSurfaceFormatReserved76 = 76,
    keQxSurfaceFormatReserved77 = 77,
    keQxSurfaceFormatReserved78 = 78,
    keQxSurfaceFormatReserved79 = 79,
    keQxSurfaceFormatClosedCaptionData = 80,
    // 10-bit RGB at graphics levels with a 2-bit key, one 32-bit word a pixel:
    // A (2 bits), B, G, R (10 bits each) from the most significant bits.
    keQxSurfaceFormatA2B10G10R10Graphic = 81,
    keQxSurfaceFormatLast = 82
};

// Colour standard of a surface. 0 and 7 have no conversion matrix.
enum EQxColorimetry : int32_t {
    keQxColorimetryInvalid = 0,
    keQxColorimetryITUR_BT_601 = 1,
    keQxColorimetryITUR_BT_709 = 2,
    // 3 to 6 share the ITU-R BT.2020 matrix; they differ in transfer.
    keQxColorimetryITUR_BT_2020 = 3,
    keQxColorimetryITUR_BT_2100_PQ = 4,
    keQxColorimetryITUR_BT_2100_HLG = 5,
    keQxColorimetryITUR_BT_2020_Linear = 6,
    // Declared but not identified: accepted where no matrix is needed.
    keQxColorimetryUnknown = 7,
    keQxColorimetryLast = 8
};

enum EQxFrameRate : int32_t {
    keQxFrameRateInvalid = 0,
    keQxFrameRate24 = 1,
    keQxFrameRate2398 = 2,
    keQxFrameRate25 = 3,
    keQxFrameRate30 = 4,
    keQxFrameRate2997 = 5,
    keQxFrameRate48 = 6,
    keQxFrameRate4795 = 7,
    keQxFrameRate50 = 8,
    keQxFrameRate60 = 9,
    keQxFrameRate5994 = 10,
    keQxFrameRateVariable = 11,
    keQxFrameRateLast = 12
};

// How a video signal is scanned. 1 and 2 are field based: one buffer holds
// one field.
enum EQxScanMode : int32_t {
    keQxScanModeInvalid = 0,
    keQxScanModeFirstFieldTop = 1,
    keQxScanModeSecondFieldTop = 2,
    keQxScanModeProgressive = 3,
    keQxScanModeProgressiveSegmentedFrame = 4,
    keQxScanModeInterlacedFieldsInAFrame = 5,
    keQxScanModeLast = 6
};

// What a buffer holds: one field (F0, F1), a whole frame (Interlaced,
// Progressive), or both fields stored one after the other (Back to back).
enum EQxPolarity : int32_t {
    keQxPolarityInvalid = 0,
    keQxPolarityF0 = 1,
    keQxPolarityF1 = 2,
    keQxPolarityInterlaced = 3,
    keQxPolarityProgressive = 4,
    keQxPolarityBackToBack = 5,
    keQxPolarityLast = 6
};

// Named colours of a clear.
enum EQxColor : int32_t {
    keQxColorInvalid = 0,
    keQxColorBlack = 1,           // video black (Y 64 on 10 bits)
    keQxColorZeroLevelBlack = 2,  // Y 0
    keQxColorWhite = 3,
    keQxColorRed = 4,
    keQxColorGreen = 5,
    keQxColorBlue = 6,
    keQxColorLast = 7
};

enum EQxRotationAngle : int32_t {
    keQxRotationAngleNone = 0,
    keQxRotationAngle90 = 1,
    keQxRotationAngle180 = 2,
    keQxRotationAngle270 = 3,
    keQxRotationAngleLast = 4
};

// Chroma handling of a copy between 4:4:4 RGB and 4:2:2 YUV.
enum EQxFilterMode : int32_t {
    keQxFilterModeInvalid = 0,
    // Chroma of the first pixel of each pair; duplicated when widening.
    keQxFilterModeNearest = 1,
    // Five-tap filter when reducing to 4:2:2, interpolation when widening.
    keQxFilterModeFiltered = 2,
    keQxFilterModeLast = 3
};

// Picture aspect ratio of a resolution.
enum EQxAspectRatio : int32_t {
    keQxAspectRatioInvalid = 0,
    keQxAspectRatio4_3 = 1,
    keQxAspectRatio16_9 = 2,
    keQxAspectRatioSquarePixels = 3,
    keQxAspectRatioLast = 4
};

// Where a buffer lives.
enum EQxMemoryLocation : int32_t {
    keQxMemoryLocationInvalid = 0,
    keQxMemoryLocationHost = 1,
    keQxMemoryLocationOnBoard = 2,
    keQxMemoryLocationLast = 3
};

#endif  // QXBASE_QXENUMS_H
