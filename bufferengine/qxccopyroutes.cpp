#include "bufferengine/qxccopyroutes.h"

#include <qxbase/qxcsurfacefactory.h>

#include <initializer_list>

namespace NQxcCopyRoutes {

namespace {

bool In(EQxcSurfaceType in_eType, std::initializer_list<int> in_aiTypes)
{
    for (int i : in_aiTypes)
        if (in_eType == i) return true;
    return false;
}

// The sources each buffer surface converts from in one CopyFrom.
bool BufferKernelExists(EQxcSurfaceType in_eSource, EQxcSurfaceType in_eDestination)
{
    switch (in_eDestination) {
    case keQxcSurfaceTypeYCbCr422_8bits_Buffer:
    case keQxcSurfaceTypeYCbCr422_10bits_Buffer:
    case keQxcSurfaceTypeV210_10bits_Buffer:
    case keQxcSurfaceTypeYCbCrA4224_10bits_UnshapedBuffer:
        return In(in_eSource, {keQxcSurfaceTypeRGBA_8bits_Unshaped, keQxcSurfaceTypeRGB24_8bits});
    case keQxcSurfaceTypeYCbCrA4224_8bits_UnshapedBuffer:
        return In(in_eSource, {keQxcSurfaceTypeRGBA_8bits_Unshaped, keQxcSurfaceTypeBGRA_8bits_Unshaped,
                               keQxcSurfaceTypeRGB24_8bits});
    case keQxcSurfaceTypeYCbCrA4224_8bits_ShapedBuffer:
    case keQxcSurfaceTypeYCbCrA4224_10bits_ShapedBuffer:
        return in_eSource == keQxcSurfaceTypeRGBA_8bits_Shaped;
    case keQxcSurfaceTypeRGBA_8bits_Unshaped:
        return In(in_eSource, {keQxcSurfaceTypeYCbCr422_8bits_Buffer, keQxcSurfaceTypeYCbCrA4224_8bits_UnshapedBuffer,
                               keQxcSurfaceTypeYCbCr422_10bits_Buffer,
                               keQxcSurfaceTypeYCbCrA4224_10bits_UnshapedBuffer, keQxcSurfaceTypeRGBA_8bits_Unshaped,
                               keQxcSurfaceTypeV210_10bits_Buffer, keQxcSurfaceTypeA2B10G10R10_Unshaped,
                               keQxcSurfaceTypeRGB24_8bits, keQxcSurfaceTypeRGB36_12bits});
    case keQxcSurfaceTypeRGBA_8bits_Shaped:
        return In(in_eSource, {keQxcSurfaceTypeYCbCrA4224_8bits_ShapedBuffer,
                               keQxcSurfaceTypeYCbCrA4224_10bits_ShapedBuffer, keQxcSurfaceTypeRGBA_8bits_Shaped});
    case keQxcSurfaceTypeBGRA_8bits_Unshaped:
        return In(in_eSource, {keQxcSurfaceTypeYCbCrA4224_8bits_UnshapedBuffer, keQxcSurfaceTypeBGRA_8bits_Unshaped});
    default:
        return false;
    }
}

// Sources of each 16-bit intermediate (block kernels).
bool Into422_16bits(EQxcSurfaceType t)
{
    return In(t, {keQxcSurfaceTypeYCbCr422_8bits, keQxcSurfaceTypeYCbCr422_10bits,
                  keQxcSurfaceTypeYCbCrA4224_8bits_Unshaped, keQxcSurfaceTypeYCbCrA4224_10bits_Unshaped,
                  keQxcSurfaceTypeV210_10bits});
}

bool Into4224Shaped(EQxcSurfaceType t)
{
    return In(t, {keQxcSurfaceTypeYCbCr422_8bits, keQxcSurfaceTypeYCbCr422_10bits,
                  keQxcSurfaceTypeYCbCrA4224_8bits_Unshaped, keQxcSurfaceTypeYCbCrA4224_8bits_Shaped,
                  keQxcSurfaceTypeYCbCrA4224_10bits_Unshaped, keQxcSurfaceTypeYCbCrA4224_10bits_Shaped,
                  keQxcSurfaceTypeAYCbCr4444_8bits_Shaped});
}

bool Into4224Unshaped(EQxcSurfaceType t)
{
    return Into4224Shaped(t) || t == keQxcSurfaceTypeV210_10bits || t == keQxcSurfaceTypeA2R10G10B10_Unshaped;
}

}  // namespace

ERoute RouteOf(EQxcSurfaceType in_eSource, EQxcSurfaceType in_eDestination, bool in_bYuvPath)
{
    if (!in_bYuvPath) {
        const EQxcSurfaceType eSource = CQxcBufferEngineCommon::SetFormatToQxcBufferSurface(in_eSource);
        const EQxcSurfaceType eDestination = CQxcBufferEngineCommon::SetFormatToQxcBufferSurface(in_eDestination);
        return BufferKernelExists(eSource, eDestination) ? keRouteBuffer : keRouteNone;
    }
    const bool bSource2Vuy = in_eSource == keQxcSurfaceType2VUY_8bits;
    const bool bDestination2Vuy = in_eDestination == keQxcSurfaceType2VUY_8bits;
    if (bSource2Vuy || bDestination2Vuy) {
        const EQxcSurfaceType eOther = bSource2Vuy ? in_eDestination : in_eSource;
        const bool bDirect = bSource2Vuy != bDestination2Vuy &&
                             (eOther == keQxcSurfaceTypeYCbCr422_8bits || eOther == keQxcSurfaceTypeV210_10bits);
        return bDirect ? keRouteDirect : keRouteNone;
    }
    switch (in_eDestination) {
    case keQxcSurfaceTypeV210_10bits:
        return Into422_16bits(in_eSource) ? keRouteVia422_16bits : keRouteNone;
    case keQxcSurfaceTypeYCbCrA4224_8bits_Shaped:
    case keQxcSurfaceTypeYCbCrA4224_10bits_Shaped:
        return Into4224Shaped(in_eSource) ? keRouteVia4224Shaped : keRouteNone;
    case keQxcSurfaceTypeYCbCr422_8bits:
    case keQxcSurfaceTypeYCbCrA4224_8bits_Unshaped:
    case keQxcSurfaceTypeYCbCr422_10bits:
    case keQxcSurfaceTypeYCbCrA4224_10bits_Unshaped:
    case keQxcSurfaceTypeA2R10G10B10_Unshaped:
    case keQxcSurfaceTypeABGR_16bits_Unshaped:
        return Into4224Unshaped(in_eSource) ? keRouteVia4224Unshaped : keRouteNone;
    default:
        return keRouteNone;
    }
}

bool HasKey(EQxcSurfaceType in_eType)
{
    return In(in_eType, {keQxcSurfaceTypeYCbCrA4224_8bits_Unshaped, keQxcSurfaceTypeYCbCrA4224_8bits_Shaped,
                         keQxcSurfaceTypeYCbCrA4224_10bits_Unshaped, keQxcSurfaceTypeYCbCrA4224_10bits_Shaped,
                         keQxcSurfaceTypeAYCbCr4444_8bits_Shaped, keQxcSurfaceTypeRGBA_8bits_Unshaped,
                         keQxcSurfaceTypeRGBA_8bits_Shaped, keQxcSurfaceTypeYCbCrA4224_8bits_UnshapedBuffer,
                         keQxcSurfaceTypeYCbCrA4224_8bits_ShapedBuffer,
                         keQxcSurfaceTypeYCbCrA4224_10bits_UnshapedBuffer,
                         keQxcSurfaceTypeYCbCrA4224_10bits_ShapedBuffer, keQxcSurfaceTypeAlpha,
                         keQxcSurfaceTypeAlphaLuminance, keQxcSurfaceTypeBGRA_8bits_Unshaped,
                         keQxcSurfaceTypeBGRA_8bits_Shaped, keQxcSurfaceTypeA2R10G10B10_Unshaped,
                         keQxcSurfaceTypeABGR_16bits_Unshaped, keQxcSurfaceTypeA2B10G10R10_Unshaped});
}

bool IsRgb(EQxcSurfaceType in_eType)
{
    return In(in_eType, {keQxcSurfaceTypeRGBA_8bits_Unshaped, keQxcSurfaceTypeRGBA_8bits_Shaped,
                         keQxcSurfaceTypeRGB24_8bits, keQxcSurfaceTypeBGRA_8bits_Unshaped,
                         keQxcSurfaceTypeBGRA_8bits_Shaped, keQxcSurfaceTypeA2R10G10B10_Unshaped,
                         keQxcSurfaceTypeABGR_16bits_Unshaped, keQxcSurfaceTypeA2B10G10R10_Unshaped,
                         keQxcSurfaceTypeRGB36_12bits});
}

uint64_t ByteOffsetOfPixel(EQxcSurfaceType in_eType, uint64_t in_uX)
{
    // The 16-bit RGB types have no block arithmetic; they hold 8 bytes a
    // pixel.
    if (in_eType == keQxcSurfaceTypeABGR_16bits_Unshaped || in_eType == keQxcSurfaceTypeK64ARGB_Unshaped)
        return 8 * in_uX;
    const uint32_t uiPixels = CQxcBufferEngineCommon::ms_auiMinPixelsPerBlock[in_eType];
    if (uiPixels == 0) return 0;
    return in_uX / uiPixels * CQxcBufferEngineCommon::ms_auiBytesPerBlocksMinPixels[in_eType];
}

uint64_t ByteEndOfPixels(EQxcSurfaceType in_eType, uint64_t in_uPixels)
{
    if (in_eType == keQxcSurfaceTypeABGR_16bits_Unshaped || in_eType == keQxcSurfaceTypeK64ARGB_Unshaped)
        return 8 * in_uPixels;
    // RGB24 is packed 3 bytes a pixel; its 4-pixel groups are an
    // arithmetic convenience, not padding.
    if (in_eType == keQxcSurfaceTypeRGB24_8bits) return 3 * in_uPixels;
    const uint32_t uiPixels = CQxcBufferEngineCommon::ms_auiMinPixelsPerBlock[in_eType];
    if (uiPixels == 0) return 0;
    return (in_uPixels + uiPixels - 1) / uiPixels * CQxcBufferEngineCommon::ms_auiBytesPerBlocksMinPixels[in_eType];
}


CQxcSurface* CreateSurfaceOfType(EQxcSurfaceType in_eType, bool in_bCachedStores)
{
    const CQxcSurfaceFactory oFactory;
    const bool c = in_bCachedStores;
    switch (in_eType) {
    case keQxcSurfaceTypeYCbCr422_8bits: return oFactory.CreateYCbCr422_8bitsSurface(c);
    case keQxcSurfaceTypeYCbCrA4224_8bits_Unshaped: return oFactory.CreateYCbCrA4224_8bits_UnshapedSurface(c);
    case keQxcSurfaceTypeYCbCrA4224_8bits_Shaped: return oFactory.CreateYCbCrA4224_8bits_ShapedSurface(c);
    case keQxcSurfaceTypeYCbCr422_10bits: return oFactory.CreateYCbCr422_10bitsSurface(c);
    case keQxcSurfaceTypeYCbCrA4224_10bits_Unshaped: return oFactory.CreateYCbCrA4224_10bits_UnshapedSurface(c);
    case keQxcSurfaceTypeYCbCrA4224_10bits_Shaped: return oFactory.CreateYCbCrA4224_10bits_ShapedSurface(c);
    case keQxcSurfaceTypeAYCbCr4444_8bits_Shaped: return oFactory.CreateAYCbCr4444_8bits_ShapedSurface(c);
    case keQxcSurfaceTypeV210_10bits: return oFactory.CreateV210_10bitsSurface(c);
    case keQxcSurfaceType2VUY_8bits: return oFactory.Create2VUY_8bitsSurface(c);
    case keQxcSurfaceTypeRGBA_8bits_Unshaped: return oFactory.CreateRGBA_8bits_UnshapedBufferSurface(c);
    case keQxcSurfaceTypeRGBA_8bits_Shaped: return oFactory.CreateRGBA_8bits_ShapedBufferSurface(c);
    case keQxcSurfaceTypeYCbCr422_8bits_Buffer: return oFactory.CreateYCbCr422_8bits_BufferSurface(c);
    case keQxcSurfaceTypeYCbCrA4224_8bits_UnshapedBuffer:
        return oFactory.CreateYCbCrA4224_8bits_UnshapedBufferSurface(c);
    case keQxcSurfaceTypeYCbCrA4224_8bits_ShapedBuffer: return oFactory.CreateYCbCrA4224_8bits_ShapedBufferSurface(c);
    case keQxcSurfaceTypeYCbCr422_10bits_Buffer: return oFactory.CreateYCbCr422_10bits_BufferSurface(c);
    case keQxcSurfaceTypeYCbCrA4224_10bits_UnshapedBuffer:
        return oFactory.CreateYCbCrA4224_10bits_UnshapedBufferSurface(c);
    case keQxcSurfaceTypeYCbCrA4224_10bits_ShapedBuffer:
        return oFactory.CreateYCbCrA4224_10bits_ShapedBufferSurface(c);
    case keQxcSurfaceTypeRGB24_8bits: return oFactory.CreateRGB24_8bits_BufferSurface(c);
    case keQxcSurfaceTypeBGRA_8bits_Unshaped: return oFactory.CreateBGRA_8bits_UnshapedBufferSurface(c);
    case keQxcSurfaceTypeA2R10G10B10_Unshaped: return oFactory.CreateA2R10G10B10_UnshapedBufferSurface(c);
    case keQxcSurfaceTypeV210_10bits_Buffer: return oFactory.CreateV210_10bits_BufferSurface(c);
    case keQxcSurfaceTypeABGR_16bits_Unshaped: return oFactory.CreateABGR_16bits_UnshapedBufferSurface(c);
    case keQxcSurfaceType2VUY_8bits_Buffer: return oFactory.Create2VUY_8bits_BufferSurface(c);
    case keQxcSurfaceTypeA2B10G10R10_Unshaped: return oFactory.CreateA2B10G10R10_UnshapedBufferSurface(c);
    case keQxcSurfaceTypeRGB36_12bits: return oFactory.CreateRGB36_12bits_BufferSurface(c);
    default: return nullptr;
    }
}

}  // namespace NQxcCopyRoutes
