// Mapping of SDK surface descriptions to the engine's surface types, and the
// block arithmetic of offsets and line sizes.
#include <qxbase/qxcbufferenginecommon.h>

namespace {

// Block columns of types 0 to 27; 28 to 36 are set by the initializer.
const uint32_t kauiPixelsPerBlock0To27[28] = {
    2, 8, 8, 16, 2, 2, 16, 16, 16, 16, 1, 6, 2, 1, 1, 2, 8, 8, 16, 2, 2, 1, 4, 1, 1, 1, 1, 1};
const uint32_t kauiBytesPerBlock0To27[28] = {
    4, 24, 24, 40, 8, 8, 16, 0, 0, 0, 4, 16, 4, 4, 4, 4, 24, 24, 40, 8, 8, 1, 12, 1, 2, 1, 4, 4};

// The three v210 widths whose line length is answered padded to 128 bytes.
struct SPaddedV210Line {
    uint32_t uiPixels;
    uint32_t uiBytes;
};
const SPaddedV210Line kasPaddedV210Lines[] = {{1280, 3456}, {2048, 5504}, {4096, 11008}};

// Format -> (range, isYuv, type chooser) for the formats the engine converts.
enum EFormatClass {
    keNone,     // unknown within 1..81: refused at once
    keOpaque,   // compressed and data formats, copied as bytes
    keMapped    // handled by the switch below
};

EFormatClass ClassifyFormat(int32_t in_iFormat)
{
    switch (in_iFormat) {
    case 1: case 2: case 3: case 5: case 6: case 7: case 33: case 37: case 38:
    case 51: case 53: case 54: case 59: case 81:
        return keMapped;
    case 11: case 12: case 13: case 14: case 15: case 16: case 17: case 18: case 19:
    case 20: case 21: case 22: case 23: case 24: case 25: case 26: case 27: case 30:
    case 31: case 32: case 35: case 36: case 41: case 42: case 43: case 44: case 45:
    case 47: case 52: case 56: case 57: case 58: case 60: case 80:
        return keOpaque;
    default:
        return keNone;
    }
}

}  // namespace

uint32_t CQxcBufferEngineCommon::ms_auiMinPixelsPerBlock[kiQxcSurfaceTypeCount];
uint32_t CQxcBufferEngineCommon::ms_auiBytesPerBlocksMinPixels[kiQxcSurfaceTypeCount];

const SQxcYuvaPixel CQxcBufferEngineCommon::ms_asYuvaPixelData[6] = {
    {64, 512, 512, 1020},  {0, 512, 512, 1020},   {940, 512, 512, 1020},
    {324, 364, 960, 1020}, {576, 216, 136, 1020}, {160, 960, 444, 1020}};
const SQxcRGBAPixel CQxcBufferEngineCommon::ms_asRgbaVideoPixelData[6] = {
    {16, 16, 16, 255},  {0, 0, 0, 255},     {235, 235, 235, 255},
    {235, 16, 16, 255}, {16, 235, 16, 255}, {16, 16, 235, 255}};
const SQxcRGBAPixel CQxcBufferEngineCommon::ms_asRgbaGraphicPixelData[6] = {
    {0, 0, 0, 255},   {0, 0, 0, 255},   {255, 255, 255, 255},
    {255, 0, 0, 255}, {0, 255, 0, 255}, {0, 0, 255, 255}};

CQxcBufferEngineCommon::CStaticInitializer CQxcBufferEngineCommon::ms_oStaticInitializer;

CQxcBufferEngineCommon::CStaticInitializer::CStaticInitializer()
{
    for (int i = 0; i < 28; ++i) {
        ms_auiMinPixelsPerBlock[i] = kauiPixelsPerBlock0To27[i];
        ms_auiBytesPerBlocksMinPixels[i] = kauiBytesPerBlock0To27[i];
    }
    ms_auiMinPixelsPerBlock[keQxcSurfaceTypeA2R10G10B10_Unshaped] = 1;
    ms_auiBytesPerBlocksMinPixels[keQxcSurfaceTypeA2R10G10B10_Unshaped] = 4;
    ms_auiMinPixelsPerBlock[keQxcSurfaceTypeA2B10G10R10_Unshaped] = 1;
    ms_auiBytesPerBlocksMinPixels[keQxcSurfaceTypeA2B10G10R10_Unshaped] = 4;
    ms_auiMinPixelsPerBlock[keQxcSurfaceTypeRGB36_12bits] = 8;
    ms_auiBytesPerBlocksMinPixels[keQxcSurfaceTypeRGB36_12bits] = 36;
}

bool CQxcBufferEngineCommon::GetParamsFromQxSurfaceDescription(SQxSurfaceDescription in_sDescription,
                                                               EQxcSurfaceType* out_peType,
                                                               EQxColorimetry* out_peColorimetry,
                                                               EQxcColorRange* out_peRange,
                                                               bool* out_pbIsYuv)
{
    *out_pbIsYuv = false;
    *out_peType = keQxcSurfaceTypeInvalid;
    *out_peColorimetry = in_sDescription.eColorimetry;
    *out_peRange = keQxcColorRangeInvalid;

    const int32_t iFormat = in_sDescription.eSurfaceFormat;
    if (iFormat < 1 || iFormat > 81)
        return false;

    const uint32_t uiBits = in_sDescription.ulComponentBitCount;
    const bool bShaped = in_sDescription.bIsAlphaShaped;
    EQxcSurfaceType eType = keQxcSurfaceTypeInvalid;
    EQxcColorRange eRange = keQxcColorRangeYuv;
    bool bIsYuv = false;

    switch (ClassifyFormat(iFormat)) {
    case keNone:
        return false;
    case keOpaque:
        eType = keQxcSurfaceTypeOpaqueData;
        break;
    case keMapped:
        switch (iFormat) {
        case 1:  // "ARGB Graphic"
        case 3:  // "ARGB Video"
            eRange = iFormat == 1 ? keQxcColorRangeGraphic : keQxcColorRangeVideo;
            eType = bShaped ? keQxcSurfaceTypeRGBA_8bits_Shaped : keQxcSurfaceTypeRGBA_8bits_Unshaped;
            break;
        case 2:  // "RGB Graphic"
            eRange = keQxcColorRangeGraphic;
            eType = uiBits == 8 ? keQxcSurfaceTypeRGB24_8bits : keQxcSurfaceTypeRGB36_12bits;
            break;
        case 5:  // "YUYV 422"
            bIsYuv = true;
            eType = uiBits == 8    ? keQxcSurfaceTypeYCbCr422_8bits
                    : uiBits == 10 ? keQxcSurfaceTypeYCbCr422_10bits
                                   : keQxcSurfaceTypeInvalid;
            break;
        case 6:  // "YUAYVA 4224"
            bIsYuv = true;
            if (uiBits == 8)
                eType = bShaped ? keQxcSurfaceTypeYCbCrA4224_8bits_Shaped
                                : keQxcSurfaceTypeYCbCrA4224_8bits_Unshaped;
            else if (uiBits == 10)
                eType = bShaped ? keQxcSurfaceTypeYCbCrA4224_10bits_Shaped
                                : keQxcSurfaceTypeYCbCrA4224_10bits_Unshaped;
            break;
        case 7:  // "Alpha"
            eType = keQxcSurfaceTypeAlpha;
            break;
        case 33:  // "AYUV 4444"
            bIsYuv = true;
            if (uiBits == 8)
                eType = keQxcSurfaceTypeAYCbCr4444_8bits_Shaped;
            break;
        case 37:  // "Alpha Luminance"
            eType = keQxcSurfaceTypeAlphaLuminance;
            break;
        case 38:  // "BGRA Graphic"
            eRange = keQxcColorRangeGraphic;
            eType = bShaped ? keQxcSurfaceTypeBGRA_8bits_Shaped : keQxcSurfaceTypeBGRA_8bits_Unshaped;
            break;
        case 51:  // 10-bit video-range RGB with a 2-bit key
            eRange = keQxcColorRangeVideo;
            if (!bShaped)
                eType = keQxcSurfaceTypeA2R10G10B10_Unshaped;
            break;
        case 53:  // "Uncompressed V210"
            bIsYuv = true;
            if (uiBits == 10)
                eType = keQxcSurfaceTypeV210_10bits;
            break;
        case 54:  // 8-bit 2VUY
            bIsYuv = true;
            if (uiBits == 8)
                eType = keQxcSurfaceType2VUY_8bits;
            break;
        case 59:  // 16-bit ABGR
            eRange = keQxcColorRangeGraphic;
            eType = keQxcSurfaceTypeABGR_16bits_Unshaped;
            break;
        case 81:  // 10-bit graphics RGB with a 2-bit key
            eRange = keQxcColorRangeGraphic;
            if (!bShaped)
                eType = keQxcSurfaceTypeA2B10G10R10_Unshaped;
            break;
        }
        break;
    }

    *out_peRange = eRange;
    *out_pbIsYuv = bIsYuv;
    *out_peType = eType;

    // A YUV surface must say which matrix its values follow.
    if (in_sDescription.eColorimetry == keQxColorimetryInvalid && bIsYuv) {
        *out_peType = keQxcSurfaceTypeInvalid;
        return false;
    }
    if (iFormat == 1 || iFormat == 3 || iFormat == 7 || iFormat == 37)
        *out_peColorimetry = keQxColorimetryInvalid;
    return true;
}

bool CQxcBufferEngineCommon::GetParamsFromQxSurfaceDescription(SQxSurfaceDescription in_sDescription,
                                                               EQxcSurfaceType* out_peType,
                                                               EQxColorimetry* out_peColorimetry,
                                                               EQxcColorRange* out_peRange)
{
    bool bIsYuv = false;
    return GetParamsFromQxSurfaceDescription(in_sDescription, out_peType, out_peColorimetry,
                                             out_peRange, &bIsYuv);
}

void CQxcBufferEngineCommon::GetParamsFromQxRect(SQxRect in_sRect, SQxRect* out_psRect)
{
    out_psRect->left = in_sRect.left;
    out_psRect->top = in_sRect.top;
    out_psRect->right = in_sRect.right;
    out_psRect->bottom = in_sRect.bottom;
}

EQxcSurfaceType CQxcBufferEngineCommon::SetFormatToQxcBufferSurface(EQxcSurfaceType in_eType)
{
    switch (in_eType) {
    case keQxcSurfaceTypeYCbCr422_8bits:
        return keQxcSurfaceTypeYCbCr422_8bits_Buffer;
    case keQxcSurfaceTypeYCbCrA4224_8bits_Unshaped:
        return keQxcSurfaceTypeYCbCrA4224_8bits_UnshapedBuffer;
    case keQxcSurfaceTypeYCbCrA4224_8bits_Shaped:
        return keQxcSurfaceTypeYCbCrA4224_8bits_ShapedBuffer;
    case keQxcSurfaceTypeYCbCr422_10bits:
        return keQxcSurfaceTypeYCbCr422_10bits_Buffer;
    case keQxcSurfaceTypeYCbCrA4224_10bits_Unshaped:
        return keQxcSurfaceTypeYCbCrA4224_10bits_UnshapedBuffer;
    case keQxcSurfaceTypeYCbCrA4224_10bits_Shaped:
        return keQxcSurfaceTypeYCbCrA4224_10bits_ShapedBuffer;
    case keQxcSurfaceTypeV210_10bits:
        return keQxcSurfaceTypeV210_10bits_Buffer;
    case keQxcSurfaceType2VUY_8bits:
        return keQxcSurfaceType2VUY_8bits_Buffer;
    case keQxcSurfaceTypeRGBA_8bits_Unshaped:
    case keQxcSurfaceTypeRGBA_8bits_Shaped:
    case keQxcSurfaceTypeRGB24_8bits:
    case keQxcSurfaceTypeOpaqueData:
    case keQxcSurfaceTypeBGRA_8bits_Unshaped:
    case keQxcSurfaceTypeBGRA_8bits_Shaped:
    case keQxcSurfaceTypeA2R10G10B10_Unshaped:
    case keQxcSurfaceTypeA2B10G10R10_Unshaped:
    case keQxcSurfaceTypeRGB36_12bits:
        return in_eType;
    default:
        return keQxcSurfaceTypeInvalid;
    }
}

int64_t CQxcBufferEngineCommon::GetOffset(EQxcSurfaceType in_eType, int in_iLine, long in_lPitch,
                                          long in_lPixel)
{
    const int64_t i64Blocks = static_cast<int64_t>(in_lPixel) / static_cast<int64_t>(ms_auiMinPixelsPerBlock[in_eType]);
    // The block part is kept as an unsigned 32-bit value, as the line sizes are.
    const uint32_t uiBlockBytes = static_cast<uint32_t>(i64Blocks) * ms_auiBytesPerBlocksMinPixels[in_eType];
    return static_cast<int64_t>(in_iLine) * static_cast<int64_t>(in_lPitch) + uiBlockBytes;
}

uint32_t CQxcBufferEngineCommon::GetBytesFromPixels(EQxcSurfaceType in_eType, unsigned int in_uiPixels)
{
    if (in_eType == keQxcSurfaceTypeV210_10bits) {
        for (const SPaddedV210Line& sLine : kasPaddedV210Lines)
            if (sLine.uiPixels == in_uiPixels)
                return sLine.uiBytes;
    }
    return (in_uiPixels / ms_auiMinPixelsPerBlock[in_eType]) * ms_auiBytesPerBlocksMinPixels[in_eType];
}

void CQxcBufferEngineCommon::GetHostColor(EQxColor in_eColor, float in_fAlpha, SQxcYuvaPixel* out_psYuva,
                                          SQxcRGBAPixel* out_psRgba, EQxcColorRange in_eRange)
{
    if (in_eColor >= keQxColorBlack && in_eColor <= keQxColorBlue) {
        const int iRow = in_eColor - 1;
        *out_psYuva = ms_asYuvaPixelData[iRow];
        *out_psRgba = in_eRange == keQxcColorRangeVideo ? ms_asRgbaVideoPixelData[iRow]
                                                         : ms_asRgbaGraphicPixelData[iRow];
    }
    // Truncation keeps the low bits, as the engine always has; an alpha outside
    // 0..1 is the caller's to avoid.
    out_psRgba->A = static_cast<uint8_t>(static_cast<int32_t>(255.0f * in_fAlpha));
    out_psYuva->A = static_cast<uint16_t>(static_cast<int32_t>(in_fAlpha * 1023.0f));
}
