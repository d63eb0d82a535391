// Buffer kernels composed from a reader (a source layout, v210, or a fill
// colour), a step (colormatrix.h, transforms.h) and a writer (a destination
// layout or v210). Instantiated over CScalar a composition is the reference,
// over CSse2 the kernel the surfaces run.
//
// A buffer call converts in_uiPixels pixels of in_uiLines lines, from any
// pixel of either picture that starts a unit of its layout (the smallest run
// of whole pixels that starts on a byte: one pixel for RGB, a pair for YUYV,
// a group for the others; any even pixel for v210). The job's pucSource and
// pucDestination are the starts of the cursors' lines. Lines are walked in
// blocks of 16 pixels; the last block of a line may be partial: it is read
// from a copy of the bytes that exist, and written back merged with what the
// destination held, so that pixels outside the call keep their values (a
// pair's chroma belongs to its first pixel). Nothing is read or written past
// the units that hold the call's pixels.
#ifndef QXBASE_SURFACES_KERNELS_PIXELCOMPOSE_H
#define QXBASE_SURFACES_KERNELS_PIXELCOMPOSE_H

#include "surfaces/kernels/colormatrix.h"
#include "surfaces/kernels/compose.h"

namespace NQxcKernels {

// The canonical block of a layout: 4:2:2 or 4:4:4 YUV, RGB, or the one a
// layout names itself (TCanon: its bytes, or RGB planes).
template <class TLayout, class TB, class = void>
struct TCanonOfKind {
    typedef typename TBlockOf<TLayout::kb444, TB>::Type Type;
};
template <class TLayout, class TB>
struct TCanonOfKind<TLayout, TB, std::void_t<decltype(TLayout::kiDepth)>> {
    typedef typename TRgbOf<TB>::Type Type;
};
template <class TLayout, class TB, class = void>
struct TCanonOf : TCanonOfKind<TLayout, TB> {
};
template <class TLayout, class TB>
struct TCanonOf<TLayout, TB, std::void_t<typename TLayout::template TCanon<TB>>> {
    typedef typename TLayout::template TCanon<TB> Type;
};

// ------------------------------------------------ merging a partial block
// Lanes of the first in_uiPixels pixels from in_rsNew, the others from
// io_rs; in 4:2:2 a chroma pair goes with its first pixel.
inline void MergeLanes(SScalar422& io_rs, const SScalar422& in_rsNew, unsigned in_uiPixels)
{
    for (unsigned p = 0; p < in_uiPixels; ++p) {
        io_rs.aus16Y[p] = in_rsNew.aus16Y[p];
        io_rs.aus16K[p] = in_rsNew.aus16K[p];
    }
    for (unsigned j = 0; 2 * j < in_uiPixels; ++j) {
        io_rs.aus16Cb[j] = in_rsNew.aus16Cb[j];
        io_rs.aus16Cr[j] = in_rsNew.aus16Cr[j];
    }
}
inline void MergeLanes(SScalar444& io_rs, const SScalar444& in_rsNew, unsigned in_uiPixels)
{
    for (unsigned p = 0; p < in_uiPixels; ++p) {
        io_rs.aus16Y[p] = in_rsNew.aus16Y[p];
        io_rs.aus16Cb[p] = in_rsNew.aus16Cb[p];
        io_rs.aus16Cr[p] = in_rsNew.aus16Cr[p];
        io_rs.aus16K[p] = in_rsNew.aus16K[p];
    }
}
inline void MergeLanes(SScalarRgb& io_rs, const SScalarRgb& in_rsNew, unsigned in_uiPixels)
{
    for (unsigned p = 0; p < in_uiPixels; ++p) {
        io_rs.aus16R[p] = in_rsNew.aus16R[p];
        io_rs.aus16G[p] = in_rsNew.aus16G[p];
        io_rs.aus16B[p] = in_rsNew.aus16B[p];
        io_rs.aus16A[p] = in_rsNew.aus16A[p];
    }
}

// A layout's bytes merge through its canonical block.
template <class TLayout>
inline void MergeLanes(SScalarRaw<TLayout>& io_rs, const SScalarRaw<TLayout>& in_rsNew, unsigned in_uiPixels)
{
    typename TBlockOf<TLayout::kb444, CScalar>::Type s, sNew;
    TLayout::Load(io_rs.auc, s);
    TLayout::Load(in_rsNew.auc, sNew);
    MergeLanes(s, sNew, in_uiPixels);
    TLayout::template Store<keStoreUnaligned>(io_rs.auc, s);
}
template <class TLayout>
inline void MergeLanes(SVectorRaw<TLayout>& io_rs, const SVectorRaw<TLayout>& in_rsNew, unsigned in_uiPixels)
{
    SScalarRaw<TLayout> s, sNew;
    TRaw<TLayout>::template Store<keStoreUnaligned>(s.auc, io_rs);
    TRaw<TLayout>::template Store<keStoreUnaligned>(sNew.auc, in_rsNew);
    MergeLanes(s, sNew, in_uiPixels);
    TRaw<TLayout>::Load(s.auc, io_rs);
}

// The SSE2 forms select with lane masks (pixel index below the count).
inline __m128i VSelect(__m128i in_i128Mask, __m128i in_i128New, __m128i in_i128Old)
{
    return _mm_or_si128(_mm_and_si128(in_i128Mask, in_i128New), _mm_andnot_si128(in_i128Mask, in_i128Old));
}
inline __m128i VBelow(__m128i in_i128Index, unsigned in_uiPixels)
{
    return _mm_cmplt_epi16(in_i128Index, Splat16(static_cast<int>(in_uiPixels)));
}
inline void MergeLanes(SVector422& io_rs, const SVector422& in_rsNew, unsigned in_uiPixels)
{
    const __m128i i128Index = _mm_setr_epi16(0, 1, 2, 3, 4, 5, 6, 7);
    for (int h = 0; h < 2; ++h) {
        const __m128i i128Mask = VBelow(_mm_add_epi16(i128Index, Splat16(8 * h)), in_uiPixels);
        io_rs.ai128Y[h] = VSelect(i128Mask, in_rsNew.ai128Y[h], io_rs.ai128Y[h]);
        io_rs.ai128K[h] = VSelect(i128Mask, in_rsNew.ai128K[h], io_rs.ai128K[h]);
    }
    const __m128i i128Pairs = VBelow(_mm_slli_epi16(i128Index, 1), in_uiPixels);
    io_rs.i128Cb = VSelect(i128Pairs, in_rsNew.i128Cb, io_rs.i128Cb);
    io_rs.i128Cr = VSelect(i128Pairs, in_rsNew.i128Cr, io_rs.i128Cr);
}
inline void MergeLanes(SVector444& io_rs, const SVector444& in_rsNew, unsigned in_uiPixels)
{
    const __m128i i128Index = _mm_setr_epi16(0, 1, 2, 3, 4, 5, 6, 7);
    for (int h = 0; h < 2; ++h) {
        const __m128i i128Mask = VBelow(_mm_add_epi16(i128Index, Splat16(8 * h)), in_uiPixels);
        io_rs.ai128Y[h] = VSelect(i128Mask, in_rsNew.ai128Y[h], io_rs.ai128Y[h]);
        io_rs.ai128Cb[h] = VSelect(i128Mask, in_rsNew.ai128Cb[h], io_rs.ai128Cb[h]);
        io_rs.ai128Cr[h] = VSelect(i128Mask, in_rsNew.ai128Cr[h], io_rs.ai128Cr[h]);
        io_rs.ai128K[h] = VSelect(i128Mask, in_rsNew.ai128K[h], io_rs.ai128K[h]);
    }
}
inline void MergeLanes(SVectorRgb& io_rs, const SVectorRgb& in_rsNew, unsigned in_uiPixels)
{
    // Lane l of vector q belongs to pixel 4q + l / 2.
    const __m128i i128Index = _mm_setr_epi16(0, 0, 1, 1, 2, 2, 3, 3);
    for (int q = 0; q < 4; ++q) {
        const __m128i i128Mask = VBelow(_mm_add_epi16(i128Index, Splat16(4 * q)), in_uiPixels);
        io_rs.ai128BR[q] = VSelect(i128Mask, in_rsNew.ai128BR[q], io_rs.ai128BR[q]);
        io_rs.ai128GA[q] = VSelect(i128Mask, in_rsNew.ai128GA[q], io_rs.ai128GA[q]);
    }
}

// ------------------------------------------------------ keyless sources
// A source whose key-present flag is false reads as full key (1023 on the
// 10-bit scale, all ones at an RGB layout's depth).
struct SPixelKeyOverride {
    SPixelKeyOverride(bool in_bKeyPresent, int in_iRgbDepth)
        : sYuv(in_bKeyPresent),
          usKeep(in_bKeyPresent ? 0xffff : 0),
          usFill(static_cast<uint16_t>(in_bKeyPresent ? 0 : (1 << in_iRgbDepth) - 1)),
          i128Keep(SplatPair16(0xffff, usKeep)),
          i128Fill(SplatPair16(0, usFill))
    {
    }
    template <class TYuv>
    void Apply(TYuv& io_rs) const
    {
        sYuv.Apply(io_rs);
    }
    void Apply(SScalarRgb& io_rs) const
    {
        for (uint16_t& us : io_rs.aus16A)
            us = static_cast<uint16_t>((us & usKeep) | usFill);
    }
    void Apply(SVectorRgb& io_rs) const
    {
        for (__m128i& i128 : io_rs.ai128GA)
            i128 = _mm_or_si128(_mm_and_si128(i128, i128Keep), i128Fill);
    }

    SKeyOverride sYuv;
    uint16_t usKeep;
    uint16_t usFill;
    __m128i i128Keep;
    __m128i i128Fill;
};

template <class TLayout, class = void>
struct TRgbDepthOf {
    static const int kiValue = 10;
};
template <class TLayout>
struct TRgbDepthOf<TLayout, std::void_t<decltype(TLayout::kiDepth)>> {
    static const int kiValue = TLayout::kiDepth;
};

// ============================================================ readers
// A layout read in blocks from the cursor's unit.
template <class TSrc>
struct TLayoutReader {
    template <class TB>
    using TBlock = typename TCanonOf<TSrc, TB>::Type;
    static const bool kbHasKey = TSrc::kbHasKey;
    static const int kiKeyDepth = TRgbDepthOf<TSrc>::kiValue;

    static bool Accepts(const SQxcBlockJob& in_rsJob)
    {
        return in_rsJob.uiSourceFirstPixel % TUnit<TSrc>::kuiPixels == 0;
    }

    explicit TLayoutReader(const SQxcBlockJob& in_rsJob)
        : m_rsJob(in_rsJob),
          m_uiOffset(in_rsJob.uiSourceFirstPixel / TUnit<TSrc>::kuiPixels * TUnit<TSrc>::kuiBytes),
          m_puc(nullptr)
    {
    }
    void BeginLine(unsigned in_uiLine)
    {
        m_puc = m_rsJob.pucSource + static_cast<long>(in_uiLine) * m_rsJob.lSourcePitch + m_uiOffset;
    }
    template <class TB, class TBlockType>
    void GetFull(unsigned in_uiBlock, TBlockType& out_rs)
    {
        TSrc::Load(m_puc + in_uiBlock * TSrc::kuiBytes, out_rs);
    }
    template <class TB, class TBlockType>
    void GetTail(unsigned in_uiBlock, unsigned in_uiPixels, TBlockType& out_rs)
    {
        uint8_t auc[TSrc::kuiBytes] = {};
        std::memcpy(auc, m_puc + in_uiBlock * TSrc::kuiBytes, UnitBytesFor<TSrc>(in_uiPixels));
        TSrc::Load(auc, out_rs);
    }

private:
    const SQxcBlockJob& m_rsJob;
    unsigned m_uiOffset;
    const uint8_t* m_puc;
};

// v210 read from any even pixel: eight whole groups (three blocks) at a time
// where a 48-pixel unit lies inside the call and the line, single blocks
// elsewhere; pixels past the line's last group read as 0.
struct CV210Reader {
    template <class TB>
    using TBlock = typename TB::T422;
    static const bool kbHasKey = false;
    static const int kiKeyDepth = 10;

    static bool Accepts(const SQxcBlockJob& in_rsJob) { return in_rsJob.uiSourceFirstPixel % 2 == 0; }

    explicit CV210Reader(const SQxcBlockJob& in_rsJob)
        : m_rsJob(in_rsJob), m_puc(nullptr), m_uiCachedBlock(kuiNone)
    {
    }
    void BeginLine(unsigned in_uiLine)
    {
        m_puc = m_rsJob.pucSource + static_cast<long>(in_uiLine) * m_rsJob.lSourcePitch;
        m_uiCachedBlock = kuiNone;
    }
    // A partial block reads as a whole one: pixels past the call are still
    // inside the line's groups, or read as 0.
    template <class TB, class TBlockType>
    void GetTail(unsigned in_uiBlock, unsigned, TBlockType& out_rs)
    {
        GetFull<TB>(in_uiBlock, out_rs);
    }
    template <class TB>
    void GetFull(unsigned in_uiBlock, SScalar422& out_rs)
    {
        V210LoadBlock(m_puc, m_rsJob.uiSourceFirstPixel + 16 * in_uiBlock, m_rsJob.uiSourceLinePixels, out_rs);
    }
    template <class TB>
    void GetFull(unsigned in_uiBlock, SVector422& out_rs)
    {
        const unsigned uiPixel = m_rsJob.uiSourceFirstPixel + 16 * in_uiBlock;
        const unsigned uiEnd = m_rsJob.uiSourceFirstPixel + m_rsJob.uiPixels;
        if (m_uiCachedBlock != kuiNone && in_uiBlock >= m_uiCachedBlock && in_uiBlock < m_uiCachedBlock + 3) {
            out_rs = m_asUnit[in_uiBlock - m_uiCachedBlock];
        } else if (uiPixel % kuiV210UnitPixels == 0 && uiPixel + kuiV210UnitPixels <= uiEnd &&
                   uiPixel + kuiV210UnitPixels <= m_rsJob.uiSourceLinePixels) {
            V210LoadUnit(m_puc + V210GroupOffset(uiPixel), m_asUnit);
            m_uiCachedBlock = in_uiBlock;
            out_rs = m_asUnit[0];
        } else {
            LoadV210Block(m_puc, uiPixel, m_rsJob.uiSourceLinePixels, out_rs);
        }
    }

private:
    static const unsigned kuiNone = ~0u;
    const SQxcBlockJob& m_rsJob;
    const uint8_t* m_puc;
    unsigned m_uiCachedBlock;  // the first of the three blocks of the unit read last
    SVector422 m_asUnit[3];
};

// One colour in every block: the fill colour of the job in the form of the
// destination (TForm: a 4:2:2, 4:4:4 or RGB layout). The YUV colour is
// clamped to 10 bits; the RGB colour is given at the destination's depth.
template <class TForm>
struct TColorReader {
    template <class TB>
    using TBlock = typename TCanonOf<TForm, TB>::Type;
    static const bool kbHasKey = false;
    static const int kiKeyDepth = 10;

    static bool Accepts(const SQxcBlockJob&) { return true; }

    explicit TColorReader(const SQxcBlockJob& in_rsJob)
    {
        Make(in_rsJob, m_sScalar);
        ToVector(m_sScalar, m_sVector);
    }
    void BeginLine(unsigned) {}
    template <class TB>
    void GetFull(unsigned, typename TCanonOf<TForm, CScalar>::Type& out_rs) const
    {
        out_rs = m_sScalar;
    }
    template <class TB>
    void GetFull(unsigned, typename TCanonOf<TForm, CSse2>::Type& out_rs) const
    {
        out_rs = m_sVector;
    }
    template <class TB, class TBlockType>
    void GetTail(unsigned in_uiBlock, unsigned, TBlockType& out_rs) const
    {
        GetFull<TB>(in_uiBlock, out_rs);
    }

private:
    template <class TYuv>
    static void Make(const SQxcBlockJob& in_rsJob, TYuv& out_rs)
    {
        MakeColorBlock(in_rsJob.sColor, out_rs);
    }
    static void Make(const SQxcBlockJob& in_rsJob, SScalarRgb& out_rs)
    {
        for (int p = 0; p < 16; ++p) {
            out_rs.aus16R[p] = in_rsJob.sRgbColor.R;
            out_rs.aus16G[p] = in_rsJob.sRgbColor.G;
            out_rs.aus16B[p] = in_rsJob.sRgbColor.B;
            out_rs.aus16A[p] = in_rsJob.sRgbColor.A;
        }
    }

    typename TCanonOf<TForm, CScalar>::Type m_sScalar;
    typename TCanonOf<TForm, CSse2>::Type m_sVector;
};

// ============================================================ writers
// How the stores of a layout must be aligned to use the aligned (and
// streaming) policies: 16 bytes; the 40-byte packed 10-bit blocks store their
// 16-byte units aligned from a block start 8 bytes past a boundary too.
template <class TLayout>
struct TStoreAlign {
    static const unsigned kuiBytes = 16;
};
template <>
struct TStoreAlign<LPacked10> {
    static const unsigned kuiBytes = 8;
};

template <class TDst>
struct TLayoutWriter {
    template <class TB>
    using TBlock = typename TCanonOf<TDst, TB>::Type;

    static bool Accepts(const SQxcBlockJob& in_rsJob)
    {
        return in_rsJob.uiDestinationFirstPixel % TUnit<TDst>::kuiPixels == 0;
    }
    // Every whole block of every line starts on a boundary.
    static bool Aligned(const SQxcBlockJob& in_rsJob)
    {
        const uintptr_t ui = reinterpret_cast<uintptr_t>(in_rsJob.pucDestination) + Offset(in_rsJob);
        return ((ui | static_cast<uintptr_t>(in_rsJob.lDestinationPitch)) % TStoreAlign<TDst>::kuiBytes) == 0 &&
               TDst::kuiBytes % TStoreAlign<TDst>::kuiBytes == 0;
    }

    explicit TLayoutWriter(const SQxcBlockJob& in_rsJob) : m_rsJob(in_rsJob), m_uiOffset(Offset(in_rsJob)), m_puc(nullptr)
    {
    }
    void BeginLine(unsigned in_uiLine)
    {
        m_puc = m_rsJob.pucDestination + static_cast<long>(in_uiLine) * m_rsJob.lDestinationPitch + m_uiOffset;
    }
    template <class TB, EStore keStore, class TBlockType>
    void PutFull(unsigned in_uiBlock, const TBlockType& in_rs)
    {
        TDst::template Store<keStore>(m_puc + in_uiBlock * TDst::kuiBytes, in_rs);
    }
    template <class TB, EStore keStore, class TBlockType>
    void PutTail(unsigned in_uiBlock, unsigned in_uiPixels, const TBlockType& in_rs)
    {
        uint8_t* puc = m_puc + in_uiBlock * TDst::kuiBytes;
        const unsigned uiBytes = UnitBytesFor<TDst>(in_uiPixels);
        uint8_t auc[TDst::kuiBytes] = {};
        if constexpr (TUnit<TDst>::kuiPixels > 1) {
            // The last unit holds pixels outside the call: keep them.
            std::memcpy(auc, puc, uiBytes);
            TBlockType sMerged;
            TDst::Load(auc, sMerged);
            MergeLanes(sMerged, in_rs, in_uiPixels);
            TDst::template Store<keStoreUnaligned>(auc, sMerged);
        } else {
            TDst::template Store<keStoreUnaligned>(auc, in_rs);
        }
        std::memcpy(puc, auc, uiBytes);
    }

private:
    static unsigned Offset(const SQxcBlockJob& in_rsJob)
    {
        return in_rsJob.uiDestinationFirstPixel / TUnit<TDst>::kuiPixels * TUnit<TDst>::kuiBytes;
    }

    const SQxcBlockJob& m_rsJob;
    unsigned m_uiOffset;
    uint8_t* m_puc;
};

// v210 written from any even pixel: 48-pixel units (eight whole groups) in
// SSE2 where they lie inside the call and the line, single blocks field by
// field elsewhere; a partial last block merges its pixels into the groups it
// touches; nothing is written past the line's last group.
struct CV210Writer {
    template <class TB>
    using TBlock = typename TB::T422;

    static bool Accepts(const SQxcBlockJob& in_rsJob) { return in_rsJob.uiDestinationFirstPixel % 2 == 0; }
    static bool Aligned(const SQxcBlockJob& in_rsJob)
    {
        return ((reinterpret_cast<uintptr_t>(in_rsJob.pucDestination) |
                 static_cast<uintptr_t>(in_rsJob.lDestinationPitch)) % 16) == 0;
    }

    explicit CV210Writer(const SQxcBlockJob& in_rsJob) : m_rsJob(in_rsJob), m_puc(nullptr), m_uiPending(0) {}
    void BeginLine(unsigned in_uiLine)
    {
        m_puc = m_rsJob.pucDestination + static_cast<long>(in_uiLine) * m_rsJob.lDestinationPitch;
        m_uiPending = 0;
    }

    template <class TB, EStore keStore, class TBlockType>
    void PutFull(unsigned in_uiBlock, const TBlockType& in_rs)
    {
        const unsigned uiPixel = m_rsJob.uiDestinationFirstPixel + 16 * in_uiBlock;
        if constexpr (std::is_same<TBlockType, SVector422>::value) {
            if (m_uiPending > 0 || StartsUnit(uiPixel)) {
                m_asUnit[m_uiPending++] = in_rs;
                if (m_uiPending == 3) {
                    V210StoreUnit<keStore>(m_puc + V210GroupOffset(uiPixel - 32), m_asUnit);
                    m_uiPending = 0;
                }
                return;
            }
        }
        StoreV210Block(m_puc, uiPixel, m_rsJob.uiDestinationLinePixels, in_rs);
    }
    template <class TB, EStore keStore, class TBlockType>
    void PutTail(unsigned in_uiBlock, unsigned in_uiPixels, const TBlockType& in_rs)
    {
        const unsigned uiPixel = m_rsJob.uiDestinationFirstPixel + 16 * in_uiBlock;
        const unsigned uiAvail = m_rsJob.uiDestinationLinePixels;
        TBlockType sMerged;
        LoadV210Block(m_puc, uiPixel, uiAvail, sMerged);
        MergeLanes(sMerged, in_rs, in_uiPixels);
        const unsigned uiEnd = uiPixel + (in_uiPixels + 1) / 2 * 2;
        StoreV210Block(m_puc, uiPixel, uiEnd < uiAvail ? uiEnd : uiAvail, sMerged);
    }

private:
    bool StartsUnit(unsigned in_uiPixel) const
    {
        const unsigned uiEnd = m_rsJob.uiDestinationFirstPixel + m_rsJob.uiPixels;
        return in_uiPixel % kuiV210UnitPixels == 0 && in_uiPixel + kuiV210UnitPixels <= uiEnd &&
               in_uiPixel + kuiV210UnitPixels <= m_rsJob.uiDestinationLinePixels;
    }

    const SQxcBlockJob& m_rsJob;
    uint8_t* m_puc;
    unsigned m_uiPending;
    SVector422 m_asUnit[3];
};

// ============================================================ drivers
inline unsigned BlockPixels(const SQxcBlockJob& in_rsJob, unsigned in_uiBlock)
{
    const unsigned uiLeft = in_rsJob.uiPixels - 16 * in_uiBlock;
    return uiLeft < 16 ? uiLeft : 16;
}

// The two ends of a composition: the reader (with the key of a keyless
// source) and the writer. A block of 16 pixels goes straight through memory,
// a partial one through a copy (so a call with whole blocks only meets no
// function call in its loop).
template <class TReader, class TWriter>
struct TPixelEnds {
    static bool Accepts(const SQxcBlockJob& in_rsJob) { return TReader::Accepts(in_rsJob) && TWriter::Accepts(in_rsJob); }
    static bool Aligned(const SQxcBlockJob& in_rsJob) { return TWriter::Aligned(in_rsJob); }

    explicit TPixelEnds(const SQxcBlockJob& in_rsJob)
        : oReader(in_rsJob),
          oWriter(in_rsJob),
          sKey(in_rsJob.bSourceKeyPresent || !TReader::kbHasKey, TReader::kiKeyDepth)
    {
    }
    void BeginLine(unsigned in_uiLine)
    {
        oReader.BeginLine(in_uiLine);
        oWriter.BeginLine(in_uiLine);
    }
    template <class TB, class TIn>
    void Read(unsigned in_uiBlock, unsigned in_uiPixels, TIn& out_rs)
    {
        if (in_uiPixels == 16)
            oReader.template GetFull<TB>(in_uiBlock, out_rs);
        else
            oReader.template GetTail<TB>(in_uiBlock, in_uiPixels, out_rs);
        if constexpr (TReader::kbHasKey)
            sKey.Apply(out_rs);
    }
    template <class TB, EStore keStore, class TOut>
    void Write(unsigned in_uiBlock, unsigned in_uiPixels, const TOut& in_rs)
    {
        if (in_uiPixels == 16)
            oWriter.template PutFull<TB, keStore>(in_uiBlock, in_rs);
        else
            oWriter.template PutTail<TB, keStore>(in_uiBlock, in_uiPixels, in_rs);
    }

    TReader oReader;
    TWriter oWriter;
    const SPixelKeyOverride sKey;
};

// Reader, step, writer: one block at a time.
template <class TReader, class TXf, class TWriter>
struct TPixelKernel {
    typedef TPixelEnds<TReader, TWriter> TEnds;
    static bool Accepts(const SQxcBlockJob& in_rsJob) { return TEnds::Accepts(in_rsJob) && TAccepts<TXf>::Run(in_rsJob); }
    static bool Aligned(const SQxcBlockJob& in_rsJob) { return TEnds::Aligned(in_rsJob); }

    template <class TB, EStore keStore>
    static void Step(TEnds& io_rEnds, const TXf& in_rXf, unsigned in_uiBlock, unsigned in_uiPixels)
    {
        typename TReader::template TBlock<TB> sIn;
        io_rEnds.template Read<TB>(in_uiBlock, in_uiPixels, sIn);
        typename TWriter::template TBlock<TB> sOut;
        in_rXf.Apply(sIn, sOut);
        io_rEnds.template Write<TB, keStore>(in_uiBlock, in_uiPixels, sOut);
    }

    template <class TB, EStore keStore>
    static void Run(const SQxcBlockJob& in_rsJob)
    {
        TEnds oEnds(in_rsJob);
        const TXf oXf(in_rsJob);
        const unsigned uiFull = in_rsJob.uiPixels / 16;
        const unsigned uiRest = in_rsJob.uiPixels % 16;
        for (unsigned uiLine = 0; uiLine < in_rsJob.uiLines; ++uiLine) {
            oEnds.BeginLine(uiLine);
            for (unsigned b = 0; b < uiFull; ++b)
                Step<TB, keStore>(oEnds, oXf, b, 16);
            if (uiRest != 0)
                Step<TB, keStore>(oEnds, oXf, uiFull, uiRest);
        }
        FinishStores<keStore>();
    }
};

// Reader, windowed stage, writer: each block is made from its neighbours
// too (the chroma filter and interpolation). Three middle forms rotate:
// the block before, the block, the block after.
template <class TReader, class TStage, class TWriter>
struct TWindowKernel {
    typedef TPixelEnds<TReader, TWriter> TEnds;
    static bool Accepts(const SQxcBlockJob& in_rsJob)
    {
        return TEnds::Accepts(in_rsJob) && TAccepts<TStage>::Run(in_rsJob);
    }
    static bool Aligned(const SQxcBlockJob& in_rsJob) { return TEnds::Aligned(in_rsJob); }

    template <class TB, EStore keStore>
    static void Run(const SQxcBlockJob& in_rsJob)
    {
        typedef typename TStage::template TMid<TB> TMid;
        TEnds oEnds(in_rsJob);
        const TStage oStage(in_rsJob);
        const unsigned uiBlocks = (in_rsJob.uiPixels + 15) / 16;
        TMid asMid[3];
        auto Make = [&](unsigned in_uiBlock, TMid& out_rs) {
            const unsigned uiPixels = BlockPixels(in_rsJob, in_uiBlock);
            typename TReader::template TBlock<TB> sIn;
            oEnds.template Read<TB>(in_uiBlock, uiPixels, sIn);
            oStage.First(sIn, out_rs);
            if (uiPixels < 16)
                TStage::FixTail(out_rs, uiPixels);
        };
        for (unsigned uiLine = 0; uiLine < in_rsJob.uiLines; ++uiLine) {
            oEnds.BeginLine(uiLine);
            unsigned uiPrevious = 0, uiCurrent = 1, uiNext = 2;
            Make(0, asMid[uiCurrent]);
            TStage::Before(asMid[uiCurrent], asMid[uiPrevious]);
            for (unsigned b = 0; b < uiBlocks; ++b) {
                if (b + 1 < uiBlocks)
                    Make(b + 1, asMid[uiNext]);
                else
                    TStage::After(asMid[uiCurrent], asMid[uiNext]);
                typename TWriter::template TBlock<TB> sOut;
                oStage.Second(asMid[uiPrevious], asMid[uiCurrent], asMid[uiNext], sOut);
                oEnds.template Write<TB, keStore>(b, BlockPixels(in_rsJob, b), sOut);
                const unsigned uiFree = uiPrevious;
                uiPrevious = uiCurrent;
                uiCurrent = uiNext;
                uiNext = uiFree;
            }
        }
        FinishStores<keStore>();
    }
};

// ------------------------------------------------------ entry points
// The SSE2 kernel as the surfaces run it: refused (false, nothing written)
// when a side's cursor is not on a unit of its layout or the step lacks what
// it needs; stores aligned (streaming unless the destination asked for cached
// stores) where every whole block starts on a boundary, unaligned otherwise.
template <class TKernel>
struct TPixelSse2Entry {
    static bool Run(const SQxcBlockJob& in_rsJob)
    {
        if (!TKernel::Accepts(in_rsJob))
            return false;
        if (!TKernel::Aligned(in_rsJob))
            TKernel::template Run<CSse2, keStoreUnaligned>(in_rsJob);
        else if (in_rsJob.bCachedStores)
            TKernel::template Run<CSse2, keStoreCached>(in_rsJob);
        else
            TKernel::template Run<CSse2, keStoreStream>(in_rsJob);
        return true;
    }
};

// The scalar reference, and the kernels of the portable classes.
template <class TKernel>
struct TPixelScalarEntry {
    static bool Run(const SQxcBlockJob& in_rsJob)
    {
        if (!TKernel::Accepts(in_rsJob))
            return false;
        TKernel::template Run<CScalar, keStoreCached>(in_rsJob);
        return true;
    }
};

}  // namespace NQxcKernels

#endif  // QXBASE_SURFACES_KERNELS_PIXELCOMPOSE_H
