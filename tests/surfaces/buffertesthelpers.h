// Helpers of the buffer-family tests: surfaces of every buffer format (and
// the 16-bit 4:2:2:4 hub, a source of the deep RGB formats), the bytes a line
// of each needs, and the job a buffer surface builds for a call, so that a
// scalar reference can run the same call on other memory.
#ifndef QXBASE_TESTS_SURFACES_BUFFERTESTHELPERS_H
#define QXBASE_TESTS_SURFACES_BUFFERTESTHELPERS_H

#include "surfaces/kernels/buffermatrix.h"
#include "tests/surfaces/surfacetesthelpers.h"

#include <string>

namespace NQxTest {

// Kind 33 stands for the 2VUY buffer surface (which reports type 15), 7 for
// the hub, every other kind is the surface type (see CreateSurface).
const int kiKind2vuyBuffer = keQxcSurfaceType2VUY_8bits_Buffer;

// Pixels and bytes of the smallest run of whole pixels of a kind's layout.
struct SUnit {
    unsigned uiPixels;
    unsigned uiBytes;
};
inline SUnit UnitOf(int in_iKind)
{
    switch (in_iKind) {
    case 7: return {16, 96};
    case 13: case 14: case 26: case 28: case 34: return {1, 4};
    case 15: case 33: return {2, 4};
    case 16: case 17: return {8, 24};
    case 18: return {16, 40};
    case 19: case 20: return {2, 8};
    case 21: case 29: case 32: return {1, 8};
    case 22: return {1, 3};
    case 30: return {1, 16};
    case 31: return {2, 0};  // v210: any even pixel, six pixels in 16 bytes
    case 36: return {2, 9};
    default: return {0, 0};
    }
}

inline bool IsRgbKind(int in_iKind)
{
    switch (in_iKind) {
    case 13: case 14: case 22: case 26: case 28: case 29: case 30: case 32: case 34: case 36: return true;
    default: return false;
    }
}

// Bytes one line of in_uiWidth pixels needs.
inline long BufferLineBytes(int in_iKind, unsigned in_uiWidth)
{
    if (in_iKind == 31)
        return NQxcKernels::V210LinePixels(in_uiWidth) / 6 * 16;
    if (in_iKind == 22)
        return (in_uiWidth + 3) / 4 * 12;
    const SUnit s = UnitOf(in_iKind);
    return (in_uiWidth + s.uiPixels - 1) / s.uiPixels * s.uiBytes;
}

// Binds a surface: a buffer surface with its range, the hub as a plain
// block surface.
inline bool Bind(CQxcSurface& io_r, uint8_t* in_puc, unsigned in_uiWidth, unsigned in_uiLines, long in_lPitch,
                 bool in_bKeyPresent, EQxColorimetry in_eColorimetry, EQxcColorRange in_eRange)
{
    if (CQxcBufferSurface* p = dynamic_cast<CQxcBufferSurface*>(&io_r))
        return p->Initialize(in_puc, in_uiWidth, in_uiLines, in_lPitch, in_bKeyPresent, in_eColorimetry, in_eRange);
    return io_r.Initialize(in_puc, in_uiWidth, in_uiLines, in_lPitch, in_bKeyPresent, in_eColorimetry);
}

inline unsigned CursorPixel(const CQxcSurface& in_r)
{
    if (const CQxcBufferSurface* p = dynamic_cast<const CQxcBufferSurface*>(&in_r))
        return p->GetCursorPixel();
    return 16 * in_r.GetCursorBlock();
}

inline unsigned LinePixelsOf(const CQxcSurface& in_r)
{
    const EQxcSurfaceType e = in_r.GetSurfaceType();
    return e == keQxcSurfaceTypeV210_10bits_Buffer ? NQxcKernels::V210LinePixels(in_r.GetWidth()) : in_r.GetWidth();
}

// The job of a buffer call from the surfaces' cursors (a null source for a
// fill), with the coefficient set and levels of in_pRgbSide when it is a
// buffer surface.
inline SQxcBlockJob MakePixelJob(const CQxcSurface& in_rDestination, const CQxcSurface* in_pSource,
                                 unsigned in_uiPixels, unsigned in_uiLines, const CQxcSurface* in_pRgbSide)
{
    SQxcBlockJob s = {};
    if (in_pSource != nullptr) {
        s.pucSource = in_pSource->GetBuffer() + static_cast<long>(in_pSource->GetCursorLine()) * in_pSource->GetPitch();
        s.lSourcePitch = in_pSource->GetPitch();
        s.uiSourceFirstPixel = CursorPixel(*in_pSource);
        s.uiSourceLinePixels = LinePixelsOf(*in_pSource);
        s.bSourceKeyPresent = in_pSource->IsKeyPresent();
    }
    s.pucDestination = in_rDestination.GetBuffer() +
                       static_cast<long>(in_rDestination.GetCursorLine()) * in_rDestination.GetPitch();
    s.lDestinationPitch = in_rDestination.GetPitch();
    s.uiDestinationFirstPixel = CursorPixel(in_rDestination);
    s.uiDestinationLinePixels = LinePixelsOf(in_rDestination);
    s.uiPixels = in_uiPixels;
    s.uiLines = in_uiLines;
    s.bCachedStores = in_rDestination.HasCachedStores();
    if (const CQxcBufferSurface* pRgbSide = dynamic_cast<const CQxcBufferSurface*>(in_pRgbSide)) {
        s.psCoeff = pRgbSide->GetRgbCoeff();
        s.iRgbRange = pRgbSide->GetColorRange();
    }
    s.psRangeCoeff = &CQxcRgbBufferSurface::ms_sRgbToRgbCoeff;
    return s;
}

}  // namespace NQxTest

#endif  // QXBASE_TESTS_SURFACES_BUFFERTESTHELPERS_H
