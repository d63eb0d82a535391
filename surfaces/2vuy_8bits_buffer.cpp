// 8-bit 2VUY buffer surface. It reports the 8-bit YCbCr 4:2:2 buffer type, so
// it tells an 8-bit YUYV source from a 2VUY one by its class; it converts
// without a table.
#include "surfaces/buffersurfacedefs.h"

typedef qxc2VUY_8bits_BufferSurfaceSSE2 CLeaf;
QXC_DEFINE_BUFFER_LEAF_LIFETIME(qxc2VUY_8bits_BufferSurfaceSSE2, qxc2VUY_8bits_BufferSurface)
QXC_DEFINE_YUV_FILL(CLeaf, KFill2vuy8)

bool CLeaf::CopyFrom(const CQxcBufferSurface* in_pSource, unsigned int in_uiWidth, unsigned int in_uiHeight)
{
    unsigned int uiMode = 0;
    bool bDone = false;
    if (!PrepareCopyFrom(in_pSource, in_uiWidth, in_uiHeight, false, uiMode, bDone))
        return false;
    if (bDone)
        return true;
    switch (in_pSource->GetSurfaceType()) {
    case keQxcSurfaceTypeYCbCr422_8bits_Buffer:
        if (dynamic_cast<const qxc2VUY_8bits_BufferSurface*>(in_pSource) != nullptr)
            return RunPixelJob(QXC_SSE2_PIXEL_JOB(K2vuy8From2vuy8), in_pSource, in_uiWidth, in_uiHeight, this);
        return RunPixelJob(QXC_SSE2_PIXEL_JOB(K2vuy8FromYuyv8), in_pSource, in_uiWidth, in_uiHeight, this);
    case keQxcSurfaceTypeRGBA_8bits_Unshaped:
        return RunPixelJob(uiMode == 1 ? QXC_SSE2_PIXEL_JOB(K2vuy8FromRgba8Filter) : QXC_SSE2_PIXEL_JOB(K2vuy8FromRgba8),
                           in_pSource, in_uiWidth, in_uiHeight, in_pSource);
    case keQxcSurfaceTypeRGB24_8bits:
        return RunPixelJob(uiMode == 1 ? QXC_SSE2_PIXEL_JOB(K2vuy8FromRgb24Filter) : QXC_SSE2_PIXEL_JOB(K2vuy8FromRgb24),
                           in_pSource, in_uiWidth, in_uiHeight, in_pSource);
    default:
        return false;
    }
}

bool CLeaf::CopyBlocksFrom(const CQxcSurface* in_pSource, unsigned int in_uiWidthInBlocks, unsigned int in_uiHeight)
{
    if (in_uiWidthInBlocks == 0 || in_uiHeight == 0)
        return true;
    if (!BlockRangeFits(in_uiWidthInBlocks, in_uiHeight) ||
        static_cast<uint64_t>(in_pSource->GetCursorBlock()) + in_uiWidthInBlocks > in_pSource->GetWidthInBlocks() ||
        static_cast<uint64_t>(in_pSource->GetCursorLine()) + in_uiHeight > in_pSource->GetHeight())
        return false;
    PFNQxcPixelJob pfnJob = nullptr;
    if (in_pSource->GetSurfaceType() == keQxcSurfaceTypeYCbCr422_8bits)
        pfnJob = QXC_SSE2_PIXEL_JOB(K2vuy8FromYuyv8);
    else if (in_pSource->GetSurfaceType() == keQxcSurfaceType2VUY_8bits)
        pfnJob = QXC_SSE2_PIXEL_JOB(K2vuy8From2vuy8);
    else
        return false;
    // The blocks' pixels, as far as both pictures reach.
    const uint64_t uiPixels = 16 * static_cast<uint64_t>(in_uiWidthInBlocks);
    const uint64_t uiHere = m_uiWidth - m_uiCursorPixel;
    const uint64_t uiThere = in_pSource->GetWidth() - 16 * static_cast<uint64_t>(in_pSource->GetCursorBlock());
    const uint64_t uiWidth = uiPixels < uiHere ? (uiPixels < uiThere ? uiPixels : uiThere) : (uiHere < uiThere ? uiHere : uiThere);
    return RunPixelJob(pfnJob, in_pSource, static_cast<unsigned int>(uiWidth), in_uiHeight, this);
}
