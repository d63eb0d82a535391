// Block kernels composed from a source layout, a transform and a destination
// layout. A composition is one template; instantiated over CScalar it is the
// reference, over CSse2 the kernel the surfaces run. The job describes one
// call: both sides' first unit, pitches, the size in blocks and lines.
#ifndef QXBASE_SURFACES_KERNELS_COMPOSE_H
#define QXBASE_SURFACES_KERNELS_COMPOSE_H

#include "surfaces/kernels/layouts.h"
#include "surfaces/kernels/transforms.h"
#include "surfaces/kernels/v210.h"

#include <qxbase/qxcsurface.h>

namespace NQxcKernels {

template <bool kb444, class TB>
struct TBlockOf {
    typedef typename TB::T422 Type;
};
template <class TB>
struct TBlockOf<true, TB> {
    typedef typename TB::T444 Type;
};

// ------------------------------------------------------- plain blocks
template <class TSrc, class TXf, class TDst>
struct TBlockKernel {
    template <class TB, EStore keStore>
    static void Run(const SQxcBlockJob& in_rsJob)
    {
        typedef typename TBlockOf<TSrc::kb444, TB>::Type TIn;
        typedef typename TBlockOf<TDst::kb444, TB>::Type TOut;
        const SKeyOverride sKey(in_rsJob.bSourceKeyPresent || !TSrc::kbHasKey);
        const TXf oXf(in_rsJob);
        for (unsigned uiLine = 0; uiLine < in_rsJob.uiLines; ++uiLine) {
            const uint8_t* pucIn = in_rsJob.pucSource + static_cast<long>(uiLine) * in_rsJob.lSourcePitch;
            uint8_t* pucOut = in_rsJob.pucDestination + static_cast<long>(uiLine) * in_rsJob.lDestinationPitch;
            for (unsigned uiBlock = 0; uiBlock < in_rsJob.uiBlocks; ++uiBlock) {
                TIn sIn;
                TSrc::Load(pucIn, sIn);
                if (TSrc::kbHasKey)
                    sKey.Apply(sIn);
                TOut sOut;
                oXf.Apply(sIn, sOut);
                TDst::template Store<keStore>(pucOut, sOut);
                pucIn += TSrc::kuiBytes;
                pucOut += TDst::kuiBytes;
            }
        }
        FinishStores<keStore>();
    }
};

// --------------------------------------------------------------- fills
inline void MakeColorBlock(const SQxcYuvaPixel& in_rs, SScalar422& out_rs)
{
    for (int i = 0; i < 16; ++i) {
        out_rs.aus16Y[i] = Min10(in_rs.Y);
        out_rs.aus16K[i] = Min10(in_rs.A);
    }
    for (int j = 0; j < 8; ++j) {
        out_rs.aus16Cb[j] = Min10(in_rs.Cb);
        out_rs.aus16Cr[j] = Min10(in_rs.Cr);
    }
}
inline void MakeColorBlock(const SQxcYuvaPixel& in_rs, SScalar444& out_rs)
{
    for (int i = 0; i < 16; ++i) {
        out_rs.aus16Y[i] = Min10(in_rs.Y);
        out_rs.aus16Cb[i] = Min10(in_rs.Cb);
        out_rs.aus16Cr[i] = Min10(in_rs.Cr);
        out_rs.aus16K[i] = Min10(in_rs.A);
    }
}
inline void MakeColorBlock(const SQxcYuvaPixel& in_rs, SVector422& out_rs)
{
    SScalar422 s;
    MakeColorBlock(in_rs, s);
    ToVector(s, out_rs);
}
inline void MakeColorBlock(const SQxcYuvaPixel& in_rs, SVector444& out_rs)
{
    out_rs.ai128Y[0] = out_rs.ai128Y[1] = Splat16(Min10(in_rs.Y));
    out_rs.ai128Cb[0] = out_rs.ai128Cb[1] = Splat16(Min10(in_rs.Cb));
    out_rs.ai128Cr[0] = out_rs.ai128Cr[1] = Splat16(Min10(in_rs.Cr));
    out_rs.ai128K[0] = out_rs.ai128K[1] = Splat16(Min10(in_rs.A));
}

template <class TDst>
struct TFillKernel {
    template <class TB, EStore keStore>
    static void Run(const SQxcBlockJob& in_rsJob)
    {
        typename TBlockOf<TDst::kb444, TB>::Type sColor;
        MakeColorBlock(in_rsJob.sColor, sColor);
        for (unsigned uiLine = 0; uiLine < in_rsJob.uiLines; ++uiLine) {
            uint8_t* pucOut = in_rsJob.pucDestination + static_cast<long>(uiLine) * in_rsJob.lDestinationPitch;
            for (unsigned uiBlock = 0; uiBlock < in_rsJob.uiBlocks; ++uiBlock, pucOut += TDst::kuiBytes)
                TDst::template Store<keStore>(pucOut, sColor);
        }
        FinishStores<keStore>();
    }
};

// ------------------------------------------------ exchanging YUYV and 2VUY
// A byte swap in every 16-bit word; exact in both directions.
struct TSwapKernel {
    template <class TB, EStore keStore>
    static void Run(const SQxcBlockJob& in_rsJob)
    {
        for (unsigned uiLine = 0; uiLine < in_rsJob.uiLines; ++uiLine) {
            const uint8_t* pucIn = in_rsJob.pucSource + static_cast<long>(uiLine) * in_rsJob.lSourcePitch;
            uint8_t* pucOut = in_rsJob.pucDestination + static_cast<long>(uiLine) * in_rsJob.lDestinationPitch;
            SwapLine(TB(), pucIn, pucOut, in_rsJob.uiBlocks * 2, keStore);
        }
        FinishStores<keStore>();
    }

private:
    static void SwapLine(CScalar, const uint8_t* in_pucIn, uint8_t* out_pucOut, unsigned in_uiUnits, EStore)
    {
        for (unsigned ui = 0; ui < 16 * in_uiUnits; ui += 2) {
            out_pucOut[ui] = in_pucIn[ui + 1];
            out_pucOut[ui + 1] = in_pucIn[ui];
        }
    }
    static void SwapLine(CSse2, const uint8_t* in_pucIn, uint8_t* out_pucOut, unsigned in_uiUnits, EStore in_eStore)
    {
        if (in_eStore == keStoreStream)
            SwapUnits<keStoreStream>(in_pucIn, out_pucOut, in_uiUnits);
        else
            SwapUnits<keStoreUnaligned>(in_pucIn, out_pucOut, in_uiUnits);
    }
    template <EStore keStore>
    static void SwapUnits(const uint8_t* in_pucIn, uint8_t* out_pucOut, unsigned in_uiUnits)
    {
        for (unsigned ui = 0; ui < in_uiUnits; ++ui) {
            const __m128i i128 = Load(in_pucIn + 16 * ui);
            Store<keStore>(out_pucOut + 16 * ui, _mm_or_si128(_mm_slli_epi16(i128, 8), _mm_srli_epi16(i128, 8)));
        }
    }
};

// ---------------------------------------------------------------- v210
// A v210 line is walked in 16-pixel blocks; the SSE2 form takes whole
// 48-pixel units (eight groups) where they lie inside both the call and the
// line, and blocks at the ends. K provides Block<TB, keStore>(line, pixel)
// and Unit<keStore>(line, pixel).
template <class TKernel, EStore keStore>
inline void WalkV210Line(CScalar, const typename TKernel::SLine& in_rsLine, unsigned in_uiFirst, unsigned in_uiEnd,
                         unsigned)
{
    for (unsigned uiPixel = in_uiFirst; uiPixel < in_uiEnd; uiPixel += 16)
        TKernel::template Block<CScalar, keStore>(in_rsLine, uiPixel);
}

template <class TKernel, EStore keStore>
inline void WalkV210Line(CSse2, const typename TKernel::SLine& in_rsLine, unsigned in_uiFirst, unsigned in_uiEnd,
                         unsigned in_uiAvail)
{
    unsigned uiPixel = in_uiFirst;
    for (; uiPixel < in_uiEnd && uiPixel % kuiV210UnitPixels != 0; uiPixel += 16)
        TKernel::template Block<CSse2, keStore>(in_rsLine, uiPixel);
    for (; uiPixel + kuiV210UnitPixels <= in_uiEnd && uiPixel + kuiV210UnitPixels <= in_uiAvail;
         uiPixel += kuiV210UnitPixels)
        TKernel::template Unit<keStore>(in_rsLine, uiPixel);
    for (; uiPixel < in_uiEnd; uiPixel += 16)
        TKernel::template Block<CSse2, keStore>(in_rsLine, uiPixel);
}

inline void LoadV210Block(const uint8_t* in_pucLine, unsigned in_uiPixel, unsigned in_uiAvail, SScalar422& out_rs)
{
    V210LoadBlock(in_pucLine, in_uiPixel, in_uiAvail, out_rs);
}
inline void LoadV210Block(const uint8_t* in_pucLine, unsigned in_uiPixel, unsigned in_uiAvail, SVector422& out_rs)
{
    SScalar422 s;
    V210LoadBlock(in_pucLine, in_uiPixel, in_uiAvail, s);
    ToVector(s, out_rs);
}
inline void StoreV210Block(uint8_t* in_pucLine, unsigned in_uiPixel, unsigned in_uiAvail, const SScalar422& in_rs)
{
    V210StoreBlock(in_pucLine, in_uiPixel, in_uiAvail, in_rs);
}
inline void StoreV210Block(uint8_t* in_pucLine, unsigned in_uiPixel, unsigned in_uiAvail, const SVector422& in_rs)
{
    SScalar422 s;
    ToScalar(in_rs, s);
    V210StoreBlock(in_pucLine, in_uiPixel, in_uiAvail, s);
}

// v210 source into a block layout.
template <class TXf, class TDst>
struct TV210SourceKernel {
    struct SLine {
        const uint8_t* pucV210;  // start of the v210 line
        unsigned uiAvail;
        uint8_t* pucOut;         // the destination block of the first pixel
        unsigned uiFirst;
        const TXf* pXf;
    };

    template <class TB, EStore keStore>
    static void Block(const SLine& in_rs, unsigned in_uiPixel)
    {
        typename TB::T422 sIn;
        LoadV210Block(in_rs.pucV210, in_uiPixel, in_rs.uiAvail, sIn);
        typename TBlockOf<TDst::kb444, TB>::Type sOut;
        in_rs.pXf->Apply(sIn, sOut);
        TDst::template Store<keStore>(in_rs.pucOut + (in_uiPixel - in_rs.uiFirst) / 16 * TDst::kuiBytes, sOut);
    }

    template <EStore keStore>
    static void Unit(const SLine& in_rs, unsigned in_uiPixel)
    {
        SVector422 asIn[3];
        V210LoadUnit(in_rs.pucV210 + V210GroupOffset(in_uiPixel), asIn);
        uint8_t* pucOut = in_rs.pucOut + (in_uiPixel - in_rs.uiFirst) / 16 * TDst::kuiBytes;
        for (int b = 0; b < 3; ++b) {
            typename TBlockOf<TDst::kb444, CSse2>::Type sOut;
            in_rs.pXf->Apply(asIn[b], sOut);
            TDst::template Store<keStore>(pucOut + b * TDst::kuiBytes, sOut);
        }
    }

    template <class TB, EStore keStore>
    static void Run(const SQxcBlockJob& in_rsJob)
    {
        const unsigned uiFirst = in_rsJob.uiSourceFirstPixel;
        const TXf oXf(in_rsJob);
        for (unsigned uiLine = 0; uiLine < in_rsJob.uiLines; ++uiLine) {
            const SLine sLine = {
                in_rsJob.pucSource + static_cast<long>(uiLine) * in_rsJob.lSourcePitch - V210GroupOffset(uiFirst),
                in_rsJob.uiSourceLinePixels,
                in_rsJob.pucDestination + static_cast<long>(uiLine) * in_rsJob.lDestinationPitch, uiFirst, &oXf};
            WalkV210Line<TV210SourceKernel, keStore>(TB(), sLine, uiFirst, uiFirst + 16 * in_rsJob.uiBlocks,
                                                     in_rsJob.uiSourceLinePixels);
        }
        FinishStores<keStore>();
    }
};

// A block layout (or, with TSrc = void, the fill colour) into v210.
template <class TSrc, class TXf>
struct TV210DestinationKernel {
    struct SLine {
        const uint8_t* pucIn;    // the source block of the first pixel
        uint8_t* pucV210;        // start of the v210 line
        unsigned uiAvail;
        unsigned uiFirst;
        const SQxcYuvaPixel* psColor;
        const TXf* pXf;
    };

    template <class TB>
    static void Produce(const SLine& in_rs, unsigned in_uiPixel, typename TB::T422& out_rs)
    {
        typename TBlockOf<TSrc::kb444, TB>::Type sIn;
        TSrc::Load(in_rs.pucIn + (in_uiPixel - in_rs.uiFirst) / 16 * TSrc::kuiBytes, sIn);
        in_rs.pXf->Apply(sIn, out_rs);
    }

    template <class TB, EStore keStore>
    static void Block(const SLine& in_rs, unsigned in_uiPixel)
    {
        typename TB::T422 sOut;
        Produce<TB>(in_rs, in_uiPixel, sOut);
        StoreV210Block(in_rs.pucV210, in_uiPixel, in_rs.uiAvail, sOut);
    }

    template <EStore keStore>
    static void Unit(const SLine& in_rs, unsigned in_uiPixel)
    {
        SVector422 asOut[3];
        for (unsigned b = 0; b < 3; ++b)
            Produce<CSse2>(in_rs, in_uiPixel + 16 * b, asOut[b]);
        V210StoreUnit<keStore>(in_rs.pucV210 + V210GroupOffset(in_uiPixel), asOut);
    }

    template <class TB, EStore keStore>
    static void Run(const SQxcBlockJob& in_rsJob)
    {
        const unsigned uiFirst = in_rsJob.uiDestinationFirstPixel;
        const TXf oXf(in_rsJob);
        for (unsigned uiLine = 0; uiLine < in_rsJob.uiLines; ++uiLine) {
            const SLine sLine = {
                in_rsJob.pucSource + static_cast<long>(uiLine) * in_rsJob.lSourcePitch,
                in_rsJob.pucDestination + static_cast<long>(uiLine) * in_rsJob.lDestinationPitch -
                    V210GroupOffset(uiFirst),
                in_rsJob.uiDestinationLinePixels, uiFirst, &in_rsJob.sColor, &oXf};
            WalkV210Line<TV210DestinationKernel, keStore>(TB(), sLine, uiFirst, uiFirst + 16 * in_rsJob.uiBlocks,
                                                          in_rsJob.uiDestinationLinePixels);
        }
        FinishStores<keStore>();
    }
};

// The fill colour as a source: every block is the colour.
struct LColor {
    static const unsigned kuiBytes = 0;
    static const bool kb444 = false;
};

template <>
template <class TB>
inline void TV210DestinationKernel<LColor, XPass>::Produce(const SLine& in_rs, unsigned, typename TB::T422& out_rs)
{
    MakeColorBlock(*in_rs.psColor, out_rs);
}

// ------------------------------------------------------ entry points
// The SSE2 kernel of a composition as the surfaces call it: the store policy
// follows the destination's cached-stores flag.
template <class TKernel>
struct TSse2Entry {
    static void Run(const SQxcBlockJob& in_rsJob)
    {
        if (in_rsJob.bCachedStores)
            TKernel::template Run<CSse2, keStoreCached>(in_rsJob);
        else
            TKernel::template Run<CSse2, keStoreStream>(in_rsJob);
    }
};

// The scalar reference of a composition.
template <class TKernel>
struct TScalarEntry {
    static void Run(const SQxcBlockJob& in_rsJob) { TKernel::template Run<CScalar, keStoreCached>(in_rsJob); }
};

}  // namespace NQxcKernels

#endif  // QXBASE_SURFACES_KERNELS_COMPOSE_H
