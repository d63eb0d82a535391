// Enumerations of the SDK's public interface. Every enumeration is a signed
// 32-bit value; modules built separately share them, so values never change
// once published. A value outside the listed ones can reach any function
// through a cast or a corrupted description: the helpers of this library
// treat it as invalid and never index a table with it.
#ifndef QXBASE_QXENUMS_H
#define QXBASE_QXENUMS_H

#include <cstdint>

// Pixel format of a surface. The quoted name is the text the format-to-text
// helper gives. Byte orders are given lowest address first for the formats
// that the host buffer engine converts; multi-byte words are little-endian.
// The compressed and data formats are opaque to the engine: their buffers are
// copied as bytes and never converted.
enum EQxSurfaceFormat : int32_t {
    keQxSurfaceFormatInvalid = 0,
    // "ARGB Graphic": 8-bit RGB with key at graphics (full) levels, 0..255.
    // 4 bytes a pixel in memory order B, G, R, A (the name reads the 32-bit
    // little-endian word from its most significant byte).
    keQxSurfaceFormatARGBGraphic = 1,
    // "RGB Graphic": RGB without key at graphics levels. At 8 bits: 3 bytes a
    // pixel, B, G, R (ARGB Graphic without its key). At any other bit count:
    // 12-bit components, 8 pixels in 36 bytes; the 24 components B, G, R of
    // pixel 0, then of pixel 1 ..., form a little-endian bit stream
    // (component k in bits 12k to 12k+11 of the group).
    keQxSurfaceFormatRGBGraphic = 2,
    // "ARGB Video": as ARGB Graphic but at video (studio) levels, 16..235;
    // the key still spans 0..255.
    keQxSurfaceFormatARGBVideo = 3,
    // "RGB Video": RGB without key at video levels. Known by name only; the
    // host engine refuses it.
    keQxSurfaceFormatRGBVideo = 4,
    // "YUYV 422": 4:2:2 without key, a Cb/Cr pair shared by two pixels and
    // co-sited with the first. 8 bits: Y0 Cb0 Y1 Cr0 Y2 Cb1 ... 10 bits:
    // 40 bytes per 16 pixels, the upper 8 bits of the 32 components in YUYV
    // order (32 bytes), then their low bit pairs, four to a byte: component k
    // in bits 2(k mod 4) and 2(k mod 4)+1 of byte 32 + k/4.
    keQxSurfaceFormatYUYV422 = 5,
    // "YUAYVA 4224": 4:2:2:4, YUYV with a key a pixel. 8 bits: groups of 8
    // pixels in 24 bytes, 16 bytes of YUYV then the 8 key bytes. 10 bits: a
    // little-endian 32-bit word a pixel, (Y << 20) | (C << 10) | A, C being
    // Cb on an even pixel and Cr on an odd one; bits 30, 31 zero.
    keQxSurfaceFormatYUAYVA4224 = 6,
    // "Alpha": a key byte a pixel, 0 transparent to 255 opaque.
    keQxSurfaceFormatAlpha = 7,
    // 8 to 10: not assigned.
    keQxSurfaceFormatReserved8 = 8,
    keQxSurfaceFormatReserved9 = 9,
    keQxSurfaceFormatReserved10 = 10,
    // 11 to 32: compressed video, opaque (see the text of each in the
    // format-to-text helper).
    keQxSurfaceFormatDVCAM411 = 11,            // "DVCAM 411": DV 25 Mb/s, 525 lines
    keQxSurfaceFormatDVCAM420 = 12,            // "DVCAM 420": DV 25 Mb/s, 625 lines
    keQxSurfaceFormatDVBased25_411 = 13,       // "DV-Based 25 411": SMPTE 314M, 25 Mb/s
    keQxSurfaceFormatDVBased50_422 = 14,       // "DV-Based 50 422": SMPTE 314M, 50 Mb/s
    keQxSurfaceFormatDVBased100_HD = 15,       // "DV-Based 100 HD": SMPTE 370M
    keQxSurfaceFormatMPEG2IFrame = 16,         // "MPEG-2 I-Frame": intra-only MPEG-2
    // 17 and 18: the first and second field of the same compressed pattern.
    keQxSurfaceFormatMPEG2IBPField1 = 17,      // "MPEG-2 IBP Field 1"
    keQxSurfaceFormatMPEG2IBPField2 = 18,      // "MPEG-2 IBP Field 2"
    keQxSurfaceFormatD10 = 19,                 // "D-10": SMPTE 356M, MPEG-2 422P@ML intra
    keQxSurfaceFormatMPEG2LongGOP420HD = 20,   // "MPEG-2 Long GOP 420 HD": MP@HL
    keQxSurfaceFormatMPEG2LongGOP422HD = 21,   // "MPEG-2 Long GOP 422 HD": 422P@HL
    keQxSurfaceFormatMPEG2LongGOP420HDVBR = 22,// "MPEG-2 Long GOP 420 HD VBR"
    keQxSurfaceFormatH264Intra50 = 23,         // "H.264 Intra 50": High 10 Intra, class 50
    keQxSurfaceFormatH264Intra100 = 24,        // "H.264 Intra 100": High 4:2:2 Intra, class 100
    keQxSurfaceFormatH264 = 25,                // "H.264": long GOP
    keQxSurfaceFormatMPEG2LongGOP = 26,        // "MPEG-2 Long GOP": any other long-GOP MPEG-2
    keQxSurfaceFormatDNxHD = 27,               // "DNxHD": SMPTE VC-3
    // 28 and 29: not assigned.
    keQxSurfaceFormatReserved28 = 28,
    keQxSurfaceFormatReserved29 = 29,
    keQxSurfaceFormatH264Intra200 = 30,        // "H.264 Intra 200": High 4:2:2 Intra, class 200
    keQxSurfaceFormatH264Intra444 = 31,        // "H.264 Intra 444": High 4:4:4 Intra
    keQxSurfaceFormatHEVC = 32,                // "HEVC": H.265
    // "AYUV 4444": 8-bit 4:4:4:4 with premultiplied (shaped) key, 4 bytes a
    // pixel: A, Y, Cb, Cr. A source format only.
    keQxSurfaceFormatAYUV4444 = 33,
    keQxSurfaceFormatReserved34 = 34,          // not assigned
    keQxSurfaceFormatMJPEG = 35,               // "Motion JPEG"
    keQxSurfaceFormatJPEG2000 = 36,            // "JPEG 2000"
    // "Alpha Luminance": 2 bytes a pixel, key then luma.
    keQxSurfaceFormatAlphaLuminance = 37,
    // "BGRA Graphic": 8-bit RGB with key at graphics levels, 4 bytes a pixel
    // in memory order A, R, G, B.
    keQxSurfaceFormatBGRAGraphic = 38,
    // 39 and 40: not assigned.
    keQxSurfaceFormatReserved39 = 39,
    keQxSurfaceFormatReserved40 = 40,
    // 41 and 42: the first and second field of a DV 25 Mb/s pattern.
    keQxSurfaceFormatDV25Field1 = 41,          // "DV25 Field 1"
    keQxSurfaceFormatDV25Field2 = 42,          // "DV25 Field 2"
    keQxSurfaceFormatRDD36_422 = 43,           // "RDD 36 422": SMPTE RDD 36, 4:2:2 profiles
    keQxSurfaceFormatRDD36_4444 = 44,          // "RDD 36 4444": SMPTE RDD 36, 4:4:4:4 profiles
    keQxSurfaceFormatJPEGXS = 45,              // "JPEG XS"
    keQxSurfaceFormatReserved46 = 46,          // not assigned
    keQxSurfaceFormatVC3UHD = 47,              // "VC-3 UHD": VC-3 above HD sizes
    // 48 to 50: not assigned.
    keQxSurfaceFormatReserved48 = 48,
    keQxSurfaceFormatReserved49 = 49,
    keQxSurfaceFormatReserved50 = 50,
    // "A2R10G10B10 Video": 10-bit RGB at video levels with a 2-bit key, one
    // little-endian 32-bit word a pixel: A (bits 30-31), R (20-29),
    // G (10-19), B (0-9). Unshaped only.
    keQxSurfaceFormatA2R10G10B10Video = 51,
    keQxSurfaceFormatDNxHDWithAlpha = 52,      // "DNxHD With Alpha": VC-3 with a key
    // "Uncompressed V210": 4:2:2 10-bit, six pixels in four little-endian
    // 32-bit words, 10-bit fields at bits 0, 10, 20 (bits 30, 31 zero):
    // (Cb0 Y0 Cr0) (Y1 Cb1 Y2) (Cr1 Y3 Cb2) (Y4 Cr2 Y5).
    keQxSurfaceFormatV210 = 53,
    // "2VUY 422": 8-bit 4:2:2, Cb0 Y0 Cr0 Y1 ...: YUYV with the two bytes of
    // every 16-bit word exchanged.
    keQxSurfaceFormat2VUY = 54,
    keQxSurfaceFormatReserved55 = 55,          // not assigned
    keQxSurfaceFormatMPEG4SStP = 56,           // "MPEG-4 SStP": MPEG-4 Simple Studio Profile
    keQxSurfaceFormatH264UHD = 57,             // "H.264 UHD": H.264 at UHD sizes
    keQxSurfaceFormatTimecodeData = 58,        // "Timecode Data": timecode of a frame (opaque)
    // "ABGR 16-bit Graphic": RGB with key at graphics levels, four
    // little-endian 16-bit words a pixel: A, B, G, R.
    keQxSurfaceFormatABGR16 = 59,
    // "Quelto Ancillary Data": the ancillary data packets of a frame, opaque,
    // behind the default block header (see qxflexenginehelper.h).
    keQxSurfaceFormatQueltoAncillaryData = 60,
    // 61 to 79: not assigned.
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
    keQxSurfaceFormatClosedCaptionData = 80,   // "Closed Caption Data": caption packets (opaque)
    // "A2B10G10R10 Graphic": 10-bit RGB at graphics levels with a 2-bit key,
    // one little-endian 32-bit word a pixel: A (bits 30-31), B (20-29),
    // G (10-19), R (0-9). Unshaped only.
    keQxSurfaceFormatA2B10G10R10Graphic = 81,
    keQxSurfaceFormatLast = 82                 // one past the last value
};

// Colour standard of a surface: which matrix links its YCbCr to RGB. A YUV
// surface must name one; RGB, key and data surfaces may leave it 0.
enum EQxColorimetry : int32_t {
    keQxColorimetryInvalid = 0,         // "Invalid": none stated
    keQxColorimetryITUR_BT_601 = 1,     // "ITU-R BT.601": standard definition
    keQxColorimetryITUR_BT_709 = 2,     // "ITU-R BT.709": high definition
    // 3 to 6 share the ITU-R BT.2020 matrix; they differ in transfer.
    keQxColorimetryITUR_BT_2020 = 3,    // "ITU-R BT.2020": SDR transfer
    keQxColorimetryITUR_BT_2100_PQ = 4, // "ITU-R BT.2100 PQ": perceptual quantiser
    keQxColorimetryITUR_BT_2100_HLG = 5,// "ITU-R BT.2100 HLG": hybrid log-gamma
    keQxColorimetryITUR_BT_2020_Linear = 6, // "ITU-R BT.2020 Linear": linear light
    // "Unknown": declared but not identified; accepted where no matrix is
    // needed, refused by conversions that need one.
    keQxColorimetryUnknown = 7,
    keQxColorimetryLast = 8             // one past the last value
};

// Video frame rate. The 1000/1001 rates are named by their rounded value.
enum EQxFrameRate : int32_t {
    keQxFrameRateInvalid = 0,   // "Invalid"
    keQxFrameRate24 = 1,        // "24 fps"
    keQxFrameRate2398 = 2,      // "23.98 fps": 24000/1001
    keQxFrameRate25 = 3,        // "25 fps"
    keQxFrameRate30 = 4,        // "30 fps"
    keQxFrameRate2997 = 5,      // "29.97 fps": 30000/1001
    keQxFrameRate48 = 6,        // "48 fps"
    keQxFrameRate4795 = 7,      // "47.95 fps": 48000/1001
    keQxFrameRate50 = 8,        // "50 fps"
    keQxFrameRate60 = 9,        // "60 fps"
    keQxFrameRate5994 = 10,     // "59.94 fps": 60000/1001
    keQxFrameRateVariable = 11, // "Variable": no fixed rate (files, streams)
    keQxFrameRateLast = 12      // one past the last value
};

// How a video signal is scanned. 1 and 2 are field based: one buffer holds
// one field.
enum EQxScanMode : int32_t {
    keQxScanModeInvalid = 0,                    // "Invalid"
    keQxScanModeFirstFieldTop = 1,              // "First field top": fields, the first holds the top line
    keQxScanModeSecondFieldTop = 2,             // "Second field top": fields, the second holds the top line
    keQxScanModeProgressive = 3,                // "Progressive"
    keQxScanModeProgressiveSegmentedFrame = 4,  // "Progressive segmented frame": progressive picture sent as two fields
    keQxScanModeInterlacedFieldsInAFrame = 5,   // "Interlaced fields in a frame": both fields woven in one buffer
    keQxScanModeLast = 6                        // one past the last value
};

// What a buffer holds: one field (F0, F1), a whole frame (Interlaced,
// Progressive), or both fields stored one after the other (Back to back).
enum EQxPolarity : int32_t {
    keQxPolarityInvalid = 0,      // "Invalid"
    keQxPolarityF0 = 1,           // "F0": the first field alone
    keQxPolarityF1 = 2,           // "F1": the second field alone
    keQxPolarityInterlaced = 3,   // "Interlaced": both fields woven line by line
    keQxPolarityProgressive = 4,  // "Progressive": one progressive frame
    keQxPolarityBackToBack = 5,   // "Back to back": F0's lines, then F1's lines
    keQxPolarityLast = 6          // one past the last value
};

// Named colours of a clear.
enum EQxColor : int32_t {
    keQxColorInvalid = 0,         // not a colour: a clear writes only the key
    keQxColorBlack = 1,           // video black (Y 64 on 10 bits, RGB 16 at video levels)
    keQxColorZeroLevelBlack = 2,  // Y 0 and RGB 0 at either level
    keQxColorWhite = 3,           // Y 940, RGB 235 (video) or 255 (graphics)
    keQxColorRed = 4,             // 100% red
    keQxColorGreen = 5,           // 100% green
    keQxColorBlue = 6,            // 100% blue
    keQxColorLast = 7             // one past the last value
};

// Clockwise rotation of a picture.
enum EQxRotationAngle : int32_t {
    keQxRotationAngleNone = 0,    // no rotation
    keQxRotationAngle90 = 1,      // a quarter turn clockwise
    keQxRotationAngle180 = 2,     // a half turn
    keQxRotationAngle270 = 3,     // three quarter turns clockwise
    keQxRotationAngleLast = 4     // one past the last value
};

// Chroma handling of a copy between 4:4:4 RGB and 4:2:2 YUV.
enum EQxFilterMode : int32_t {
    keQxFilterModeInvalid = 0,
    // Chroma of the first pixel of each pair; duplicated when widening.
    keQxFilterModeNearest = 1,
    // Five-tap filter when reducing to 4:2:2, interpolation when widening.
    keQxFilterModeFiltered = 2,
    keQxFilterModeLast = 3        // one past the last value
};

// Picture aspect ratio of a resolution.
enum EQxAspectRatio : int32_t {
    keQxAspectRatioInvalid = 0,       // not stated
    keQxAspectRatio4_3 = 1,           // 4:3 picture, non-square pixels at SD sizes
    keQxAspectRatio16_9 = 2,          // 16:9 picture
    keQxAspectRatioSquarePixels = 3,  // the picture's shape is its pixel count
    keQxAspectRatioLast = 4           // one past the last value
};

// Where a buffer lives.
enum EQxMemoryLocation : int32_t {
    keQxMemoryLocationInvalid = 0,
    keQxMemoryLocationHost = 1,       // host memory, reachable by the CPU
    keQxMemoryLocationOnBoard = 2,    // memory of an I/O board
    keQxMemoryLocationLast = 3        // one past the last value
};

// The audio channels of a buffer. The value is the number of channels, so it
// may be used directly as a count (an audio buffer's size is the channel
// count times the bytes of one channel).
enum EQxChannelType : int32_t {
    keQxChannelTypeInvalid = 0,       // "Invalid"
    keQxChannelTypeMono = 1,          // "Mono"
    keQxChannelTypeStereo = 2,        // "Stereo": left, right
    keQxChannelType4Channels = 4,     // "4 Channels": one embedded audio group
    keQxChannelType6Channels = 6,     // "6 Channels": 5.1 surround
    keQxChannelType8Channels = 8,     // "8 Channels": two groups, or 7.1 surround
    keQxChannelType16Channels = 16    // "16 Channels": all four embedded groups
};

// Significant bits of an audio sample. The value is the number of bits.
// Samples of up to 16 bits are stored in 16-bit containers, wider ones in
// 32-bit containers with the significant bits at the top (the unused low
// bits are zero).
enum EQxAudioBitsPerSample : int32_t {
    keQxAudioBitsPerSampleInvalid = 0,  // "Invalid"
    keQxAudioBitsPerSample16 = 16,      // "16 bits"
    keQxAudioBitsPerSample20 = 20,      // "20 bits"
    keQxAudioBitsPerSample24 = 24,      // "24 bits": what embedded audio carries
    keQxAudioBitsPerSample32 = 32       // "32 bits"
};

#endif  // QXBASE_QXENUMS_H
