// The host buffer engine's vocabulary: internal surface types, colour
// ranges, fill colours, and the mapping from the SDK's surface descriptions
// to them. Every engine service validates its surfaces here; every per-type
// table of the engine and of the pixel surfaces is indexed by
// EQxcSurfaceType.
#ifndef QXBASE_QXCBUFFERENGINECOMMON_H
#define QXBASE_QXCBUFFERENGINECOMMON_H

#include <qxbase/qxdefs.h>
#include <qxbase/qxdescriptions.h>
#include <qxbase/qxenums.h>

#include <cstdint>

// Internal surface type. Each value selects one pixel-surface class; the
// "Reserved" values exist only as table positions.
enum EQxcSurfaceType : int32_t {
    keQxcSurfaceTypeInvalid = -1,
    keQxcSurfaceTypeYCbCr422_8bits = 0,
    keQxcSurfaceTypeYCbCrA4224_8bits_Unshaped = 1,
    keQxcSurfaceTypeYCbCrA4224_8bits_Shaped = 2,
    keQxcSurfaceTypeYCbCr422_10bits = 3,
    keQxcSurfaceTypeYCbCrA4224_10bits_Unshaped = 4,
    keQxcSurfaceTypeYCbCrA4224_10bits_Shaped = 5,
    keQxcSurfaceTypeReserved6 = 6,
    keQxcSurfaceTypeReserved7 = 7,
    keQxcSurfaceTypeReserved8 = 8,
    keQxcSurfaceTypeReserved9 = 9,
    keQxcSurfaceTypeAYCbCr4444_8bits_Shaped = 10,
    keQxcSurfaceTypeV210_10bits = 11,
    keQxcSurfaceType2VUY_8bits = 12,
    keQxcSurfaceTypeRGBA_8bits_Unshaped = 13,
    keQxcSurfaceTypeRGBA_8bits_Shaped = 14,
    keQxcSurfaceTypeYCbCr422_8bits_Buffer = 15,
    keQxcSurfaceTypeYCbCrA4224_8bits_UnshapedBuffer = 16,
    keQxcSurfaceTypeYCbCrA4224_8bits_ShapedBuffer = 17,
    keQxcSurfaceTypeYCbCr422_10bits_Buffer = 18,
    keQxcSurfaceTypeYCbCrA4224_10bits_UnshapedBuffer = 19,
    keQxcSurfaceTypeYCbCrA4224_10bits_ShapedBuffer = 20,
    keQxcSurfaceTypeReserved21 = 21,
    keQxcSurfaceTypeRGB24_8bits = 22,
    keQxcSurfaceTypeAlpha = 23,
    keQxcSurfaceTypeAlphaLuminance = 24,
    keQxcSurfaceTypeOpaqueData = 25,
    keQxcSurfaceTypeBGRA_8bits_Unshaped = 26,
    keQxcSurfaceTypeBGRA_8bits_Shaped = 27,
    keQxcSurfaceTypeA2R10G10B10_Unshaped = 28,
    keQxcSurfaceTypeReserved29 = 29,
    keQxcSurfaceTypeReserved30 = 30,
    keQxcSurfaceTypeV210_10bits_Buffer = 31,
    keQxcSurfaceTypeABGR_16bits_Unshaped = 32,
    keQxcSurfaceType2VUY_8bits_Buffer = 33,
    keQxcSurfaceTypeA2B10G10R10_Unshaped = 34,
    keQxcSurfaceTypeReserved35 = 35,
    keQxcSurfaceTypeRGB36_12bits = 36,

    // The names the surface classes give to table positions that the
    // description mapping never yields.
    keQxcSurfaceTypeYCbCr422_16bits = 6,
    keQxcSurfaceTypeYCbCrA4224_16bits_Unshaped = 7,
    keQxcSurfaceTypeYCbCrA4224_16bits_Shaped = 8,
    keQxcSurfaceTypeYCbCrA4444_16bits_Unshaped = 9,
    keQxcSurfaceTypeYCbCrA4444_16bits_UnshapedBuffer = 21,
    keQxcSurfaceTypeK64ARGB_Unshaped = 29,
    keQxcSurfaceTypeR4FL_Unshaped = 30
};

// Number of internal surface types; every per-type table has this many rows.
static const int32_t kiQxcSurfaceTypeCount = 37;

// The level convention of a surface's colour values.
enum EQxcColorRange : int32_t {
    keQxcColorRangeInvalid = -1,
    keQxcColorRangeGraphic = 0,  // RGB at full levels, 0 to 255
    keQxcColorRangeVideo = 1,    // RGB at studio levels, 16 to 235
    keQxcColorRangeYuv = 2       // every non-RGB format
};

// A YCbCr colour with key, each component on a 10-bit scale (0 to 1023).
struct SQxcYuvaPixel {
    uint16_t Y;
    uint16_t Cb;
    uint16_t Cr;
    uint16_t A;
};
static_assert(sizeof(SQxcYuvaPixel) == 8, "SQxcYuvaPixel layout");

// An 8-bit RGB colour with alpha, in memory order R, G, B, A.
struct SQxcRGBAPixel {
    uint8_t R;
    uint8_t G;
    uint8_t B;
    uint8_t A;
};
static_assert(sizeof(SQxcRGBAPixel) == 4, "SQxcRGBAPixel layout");

// The same four components as 16-bit values.
struct SQxcRGBAPixel_16bits {
    uint16_t R;
    uint16_t G;
    uint16_t B;
    uint16_t A;
};
static_assert(sizeof(SQxcRGBAPixel_16bits) == 8, "SQxcRGBAPixel_16bits layout");

// Static helpers over constant tables; never instantiated.
class QXBASE_API CQxcBufferEngineCommon {
public:
    // Maps a description to the engine's type, colorimetry, range and YUV
    // flag. True means the format is known; the type may still be -1 for a
    // bit count or shaped variant the engine does not convert, which every
    // caller tests for itself.
    static bool GetParamsFromQxSurfaceDescription(SQxSurfaceDescription in_sDescription,
                                                  EQxcSurfaceType* out_peType,
                                                  EQxColorimetry* out_peColorimetry,
                                                  EQxcColorRange* out_peRange, bool* out_pbIsYuv);
    static bool GetParamsFromQxSurfaceDescription(SQxSurfaceDescription in_sDescription,
                                                  EQxcSurfaceType* out_peType,
                                                  EQxColorimetry* out_peColorimetry,
                                                  EQxcColorRange* out_peRange);

    // Copies the rectangle as it is: no clipping, no normalising.
    static void GetParamsFromQxRect(SQxRect in_sRect, SQxRect* out_psRect);

    // The buffer-surface variant of a type, or keQxcSurfaceTypeInvalid.
    static EQxcSurfaceType SetFormatToQxcBufferSurface(EQxcSurfaceType in_eType);

    // Byte offset of the block that holds the pixel. The type must be one
    // with block arithmetic (a non-zero pixels-per-block entry).
    static int64_t GetOffset(EQxcSurfaceType in_eType, int in_iLine, long in_lPitch, long in_lPixel);

    // Bytes of the whole blocks in a run of pixels (a partial block rounds
    // down); v210 answers the padded line length for 1280, 2048 and 4096.
    static uint32_t GetBytesFromPixels(EQxcSurfaceType in_eType, unsigned int in_uiPixels);

    // Fills both pixel forms of a clear colour; a colour outside the named
    // ones leaves the colour components alone and sets only the alphas.
    static void GetHostColor(EQxColor in_eColor, float in_fAlpha, SQxcYuvaPixel* out_psYuva,
                             SQxcRGBAPixel* out_psRgba, EQxcColorRange in_eRange);

    // The block columns, filled when the library is loaded.
    static uint32_t ms_auiMinPixelsPerBlock[kiQxcSurfaceTypeCount];
    static uint32_t ms_auiBytesPerBlocksMinPixels[kiQxcSurfaceTypeCount];

    // Colours of a clear, indexed by colour value minus 1.
    static const SQxcYuvaPixel ms_asYuvaPixelData[6];
    static const SQxcRGBAPixel ms_asRgbaVideoPixelData[6];
    static const SQxcRGBAPixel ms_asRgbaGraphicPixelData[6];

private:
    CQxcBufferEngineCommon() = delete;

    class CStaticInitializer {
    public:
        CStaticInitializer();
    };
    static CStaticInitializer ms_oStaticInitializer;
};

#endif  // QXBASE_QXCBUFFERENGINECOMMON_H
