// ReplaceBlockFrom of the 16-bit block formats: one source block is converted
// through the ordinary dispatch into a one-block scratch surface of the
// destination's format, and then the chosen pixels of the scratch block are
// merged into the destination's block.
#ifndef QXBASE_SURFACES_REPLACEBLOCK_H
#define QXBASE_SURFACES_REPLACEBLOCK_H

#include <qxbase/qxcblocksurfaces.h>

#include <cstring>

namespace NQxcReplaceBlock {

enum EMerge {
    keLumaKeyAndChromaPairs,  // 4:2:2:4: Y[16] Cb[8] Cr[8] K[16] words
    keWholePixels             // 4:4:4:4: four words a pixel
};

// The scratch block: 16 pixels of one line of the largest 16-bit format.
struct alignas(16) SScratch {
    unsigned char auc[128];
};

// Copies words [in_uiFirst, in_uiFirst + in_uiCount) of a run of 16-bit words.
inline void MergeWords(unsigned char* out_puc, const unsigned char* in_puc, unsigned in_uiFirst, unsigned in_uiCount)
{
    std::memcpy(out_puc + 2 * in_uiFirst, in_puc + 2 * in_uiFirst, 2 * in_uiCount);
}

// The tests on both surfaces, then the conversion into in_rScratch (bound
// by the caller to in_rsScratch as a 16-pixel, one-line surface of the
// destination's format), then the merge. The caller advances the cursor.
inline bool Replace(const CQxcSurface& in_rDestination, CQxcSurface& in_rScratch, SScratch& in_rsScratch,
                    EMerge in_eMerge, const CQxcSurface* in_pSource, unsigned in_uiPixels, bool in_bAtEnd)
{
    if (in_uiPixels > 16 || in_rDestination.GetCursorBlock() >= in_rDestination.GetWidthInBlocks() ||
        in_rDestination.GetCursorLine() >= in_rDestination.GetHeight() ||
        in_pSource->GetCursorBlock() >= in_pSource->GetWidthInBlocks())
        return false;
    if (!in_rScratch.CopyBlocksFrom(in_pSource, 1, 1))
        return false;
    unsigned char* pucBlock = in_rDestination.GetCurrentPosition();
    const unsigned char* pucNew = in_rsScratch.auc;
    const unsigned uiPixelStart = in_bAtEnd ? 16 - in_uiPixels : 0;
    if (in_eMerge == keWholePixels) {
        MergeWords(pucBlock, pucNew, 4 * uiPixelStart, 4 * in_uiPixels);
        return true;
    }
    const unsigned uiPairs = (in_uiPixels + 1) / 2;
    const unsigned uiPairStart = in_bAtEnd ? 8 - uiPairs : 0;
    MergeWords(pucBlock, pucNew, uiPixelStart, in_uiPixels);       // Y
    MergeWords(pucBlock, pucNew, 16 + uiPairStart, uiPairs);       // Cb
    MergeWords(pucBlock, pucNew, 24 + uiPairStart, uiPairs);       // Cr
    MergeWords(pucBlock, pucNew, 32 + uiPixelStart, in_uiPixels);  // K
    return true;
}

// Binds the scratch surface as the destination is bound (the hub overloads
// this to carry its RGB side along).
inline void BindScratch(CQxcSurface& in_rScratch, SScratch& in_rsScratch, const CQxcSurface& in_rDestination)
{
    in_rScratch.Initialize(in_rsScratch.auc, 16, 1, sizeof(in_rsScratch.auc), in_rDestination.IsKeyPresent(),
                           in_rDestination.GetColorimetry());
}
void BindScratch(CQxcYCbCrA4224_16bits_UnshapedSurface& in_rScratch, SScratch& in_rsScratch,
                 const CQxcYCbCrA4224_16bits_UnshapedSurface& in_rDestination);

// Binds a scratch leaf of the destination's format and replaces through it.
template <class TScratchLeaf, class TDestination>
inline bool ReplaceThrough(const TDestination& in_rDestination, EMerge in_eMerge, const CQxcSurface* in_pSource,
                           unsigned in_uiPixels, bool in_bAtEnd)
{
    SScratch sScratch;
    TScratchLeaf oScratch(true);
    BindScratch(oScratch, sScratch, in_rDestination);
    return Replace(in_rDestination, oScratch, sScratch, in_eMerge, in_pSource, in_uiPixels, in_bAtEnd);
}

}  // namespace NQxcReplaceBlock

// ReplaceBlockFrom of a middle class: nothing to do for 0 pixels; on
// success the cursor moves on by the block, as a one-block copy moves it.
#define QXC_DEFINE_REPLACE_BLOCK(Class, ScratchLeaf, Merge)                                       \
    QXC_REPLACE_BLOCK(Class::ReplaceBlockFrom)                                                    \
    {                                                                                             \
        if (in_uiPixels == 0)                                                                     \
            return true;                                                                          \
        if (!NQxcReplaceBlock::ReplaceThrough<ScratchLeaf>(*this, NQxcReplaceBlock::Merge,        \
                                                           in_pSource, in_uiPixels, in_bAtEnd))   \
            return false;                                                                         \
        AdvanceBlocks(1, 1);                                                                      \
        return true;                                                                              \
    }

#endif  // QXBASE_SURFACES_REPLACEBLOCK_H
