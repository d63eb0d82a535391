// The colour arithmetic of the buffer kernels, held to outside references:
// every YCbCr -> RGB and RGB -> YCbCr kernel at both RGB levels and every
// standard within 1 of the matrices computed in double precision (the filter
// and the interpolation included), the telling values exact, round trips
// through 16-bit 4:4:4:4 within 1, and 8-bit YUYV and UYVY to RGBA within 2 of
// libyuv (which gives full-range RGB).
#include <gtest/gtest.h>

#include "tests/surfaces/buffertesthelpers.h"
#include "tests/surfaces/colorreference.h"

#ifdef QXT_HAVE_LIBYUV
#include <libyuv.h>
#endif

using namespace NQxTest;
using namespace NQxcKernels;

namespace {

const EQxColorimetry kaeStandards[] = {keQxColorimetryITUR_BT_601, keQxColorimetryITUR_BT_709,
                                       keQxColorimetryITUR_BT_2020};
const EQxcColorRange kaeRanges[] = {keQxcColorRangeGraphic, keQxcColorRangeVideo};

bool Is8BitYuv(int in_iKind) { return in_iKind == 15 || in_iKind == 33 || in_iKind == 16 || in_iKind == 17; }

// A line of YCbCr on the 10-bit scale: Y and K a pixel, Cb and Cr a pixel
// too (a 4:2:2 layout keeps those of the even pixels).
struct SYccLine {
    std::vector<uint16_t> vusY, vusCb, vusCr, vusK;
    explicit SYccLine(unsigned in_uiPixels) : vusY(in_uiPixels), vusCb(in_uiPixels), vusCr(in_uiPixels), vusK(in_uiPixels) {}
};

// Random values a kind can hold (8-bit kinds: multiples of 4), the key kept
// away from 0 for the shaped kinds.
SYccLine RandomYcc(int in_iKind, unsigned in_uiPixels, std::mt19937& io_rRandom)
{
    SYccLine s(in_uiPixels);
    const bool b8 = Is8BitYuv(in_iKind);
    auto Draw = [&]() { return static_cast<uint16_t>(b8 ? (io_rRandom() % 256) << 2 : io_rRandom() % 1024); };
    for (unsigned p = 0; p < in_uiPixels; ++p) {
        s.vusY[p] = Draw();
        s.vusCb[p] = Draw();
        s.vusCr[p] = Draw();
        s.vusK[p] = b8 ? KeyFrom8(static_cast<uint8_t>(io_rRandom())) : static_cast<uint16_t>(io_rRandom() % 1024);
    }
    return s;
}

template <class TBlock>
void ToBlock(const SYccLine& in_r, unsigned in_uiFirst, TBlock& out_rs);
template <>
void ToBlock(const SYccLine& in_r, unsigned in_uiFirst, SScalar422& out_rs)
{
    for (unsigned i = 0; i < 16; ++i) {
        const unsigned p = std::min<unsigned>(in_uiFirst + i, in_r.vusY.size() - 1);
        out_rs.aus16Y[i] = in_r.vusY[p];
        out_rs.aus16K[i] = in_r.vusK[p];
        if (i % 2 == 0) {
            out_rs.aus16Cb[i / 2] = in_r.vusCb[p];
            out_rs.aus16Cr[i / 2] = in_r.vusCr[p];
        }
    }
}

void WriteYcc(int in_iKind, const SYccLine& in_r, uint8_t* out_puc)
{
    const unsigned uiPixels = static_cast<unsigned>(in_r.vusY.size());
    for (unsigned b = 0; 16 * b < uiPixels; ++b) {
        SScalar422 s;
        ToBlock(in_r, 16 * b, s);
        switch (in_iKind) {
        case 7: L4224_16::Store<keStoreUnaligned>(out_puc + 96 * b, s); break;
        case 15: LYuyv8::Store<keStoreUnaligned>(out_puc + 32 * b, s); break;
        case 33: L2vuy8::Store<keStoreUnaligned>(out_puc + 32 * b, s); break;
        case 16: case 17: L4224_8::Store<keStoreUnaligned>(out_puc + 48 * b, s); break;
        case 18: LPacked10::Store<keStoreUnaligned>(out_puc + 40 * b, s); break;
        case 19: case 20: L4224_10::Store<keStoreUnaligned>(out_puc + 64 * b, s); break;
        case 31: V210StoreBlock(out_puc, 16 * b, V210LinePixels(uiPixels), s); break;
        default: FAIL() << "no writer for kind " << in_iKind;
        }
    }
}

// Reads the Y, Cb, Cr, K of a YCbCr line (chroma of a 4:2:2 layout on both
// pixels of its pair).
SYccLine ReadYcc(int in_iKind, const uint8_t* in_puc, unsigned in_uiPixels)
{
    SYccLine s(in_uiPixels);
    for (unsigned b = 0; 16 * b < in_uiPixels; ++b) {
        SScalar422 s422 = {};
        SScalar444 s444 = {};
        bool b444 = false;
        switch (in_iKind) {
        case 15: LYuyv8::Load(in_puc + 32 * b, s422); break;
        case 33: L2vuy8::Load(in_puc + 32 * b, s422); break;
        case 16: case 17: L4224_8::Load(in_puc + 48 * b, s422); break;
        case 18: LPacked10::Load(in_puc + 40 * b, s422); break;
        case 19: case 20: L4224_10::Load(in_puc + 64 * b, s422); break;
        case 31: V210LoadBlock(in_puc, 16 * b, V210LinePixels(in_uiPixels), s422); break;
        case 21: L4444_16::Load(in_puc + 128 * b, s444); b444 = true; break;
        default: ADD_FAILURE() << "no reader for kind " << in_iKind; return s;
        }
        if (!b444)
            X422To444::Apply(s422, s444);
        for (unsigned i = 0; i < 16 && 16 * b + i < in_uiPixels; ++i) {
            s.vusY[16 * b + i] = s444.aus16Y[i];
            s.vusCb[16 * b + i] = s444.aus16Cb[i];
            s.vusCr[16 * b + i] = s444.aus16Cr[i];
            s.vusK[16 * b + i] = s444.aus16K[i];
        }
    }
    return s;
}

// One line between two buffer surfaces (or the hub) of the given kinds.
struct SLinePair {
    CPicture oSource, oDestination;
    std::unique_ptr<CQxcSurface> pSource, pDestination;
    SLinePair(int in_iSource, int in_iDestination, unsigned in_uiPixels, EQxColorimetry in_e, EQxcColorRange in_eRange)
        : oSource(BufferLineBytes(in_iSource, in_uiPixels) + 16, 1),
          oDestination(BufferLineBytes(in_iDestination, in_uiPixels) + 16, 1),
          pSource(CreateSurface(in_iSource, false)),
          pDestination(CreateSurface(in_iDestination, false))
    {
        Bind(*pSource, oSource.Data(), in_uiPixels, 1, oSource.Pitch(), true, in_e,
             IsRgbKind(in_iSource) ? in_eRange : keQxcColorRangeYuv);
        Bind(*pDestination, oDestination.Data(), in_uiPixels, 1, oDestination.Pitch(), true, in_e,
             IsRgbKind(in_iDestination) ? in_eRange : keQxcColorRangeYuv);
    }
    bool Run(unsigned in_uiPixels, bool in_bMode)
    {
        CQxcBufferSurface* p = static_cast<CQxcBufferSurface*>(pDestination.get());
        p->SetFilter(in_bMode);
        p->SetInterpolate(in_bMode);
        return p->CopyFrom(pSource.get(), in_uiPixels, 1);
    }
};

// Largest distance seen, for the messages.
struct SWorst {
    double d = 0.0;
    void Note(double in_dKernel, double in_dExact) { d = std::max(d, std::fabs(in_dKernel - in_dExact)); }
};

// ------------------------------------------------------- YCbCr -> RGB
// The chroma a pixel of a 4:2:2 source is converted with: its pair's, or for
// an odd pixel with interpolation the mean of its pair's and the next one's.
double ChromaAt(const std::vector<uint16_t>& in_rv, unsigned in_uiPixel, bool in_bInterp)
{
    const unsigned uiPair = in_uiPixel & ~1u;
    if (!in_bInterp || in_uiPixel % 2 == 0)
        return in_rv[uiPair];
    const unsigned uiNext = std::min<unsigned>(uiPair + 2, static_cast<unsigned>(in_rv.size() - 1) & ~1u);
    return (in_rv[uiPair] + in_rv[uiNext]) / 2.0;
}

TEST(BufferArithmetic, YccToRgbKernelsAgreeWithTheMatrixWithinOne)
{
    std::mt19937 oRandom(17);
    const unsigned uiPixels = 160;
    struct SPair {
        int iSource, iDestination;
        bool bShaped;
    };
    const SPair kas[] = {{15, 13, false}, {33, 13, false}, {16, 13, false}, {18, 13, false}, {19, 13, false},
                         {31, 13, false}, {16, 26, false}, {17, 14, true},  {20, 14, true}};
    for (const SPair& rs : kas) {
        for (EQxColorimetry e : kaeStandards) {
            for (EQxcColorRange eRange : kaeRanges) {
                for (bool bInterp : {false, true}) {
                    if (bInterp && (rs.bShaped || rs.iDestination != 13 || rs.iSource == 31))
                        continue;
                    SLinePair o(rs.iSource, rs.iDestination, uiPixels, e, eRange);
                    const SYccLine sIn = RandomYcc(rs.iSource, uiPixels, oRandom);
                    WriteYcc(rs.iSource, sIn, o.oSource.Data());
                    const std::string s = "kind " + std::to_string(rs.iSource) + " -> " +
                                          std::to_string(rs.iDestination) + " standard " + std::to_string(e) +
                                          " range " + std::to_string(eRange) + (bInterp ? " interpolated" : "");
                    ASSERT_TRUE(o.Run(uiPixels, bInterp)) << s;
                    const bool bVideo = eRange == keQxcColorRangeVideo;
                    const STriple sBlack = Ycc10ToRgb(0.0, 512.0, 512.0, e, bVideo, 8);
                    SWorst sWorst;
                    for (unsigned p = 0; p < uiPixels; ++p) {
                        const uint8_t* puc = o.oDestination.Data() + 4 * p;
                        const bool bBgra = rs.iDestination == 26;
                        const double adGot[3] = {double(puc[bBgra ? 1 : 2]), double(puc[bBgra ? 2 : 1]),
                                                 double(puc[bBgra ? 3 : 0])};
                        const STriple sExact = Ycc10ToRgb(sIn.vusY[p],
                                                          ChromaAt(sIn.vusCb, p, bInterp),
                                                          ChromaAt(sIn.vusCr, p, bInterp), e, bVideo, 8);
                        double adExact[3] = {sExact.d0, sExact.d1, sExact.d2};
                        const unsigned uiKey8 = rs.iSource == 15 || rs.iSource == 33 || rs.iSource == 18 ||
                                                        rs.iSource == 31
                                                    ? 255
                                                    : sIn.vusK[p] >> 2;
                        if (rs.bShaped) {
                            // Premultiplied: the black level scales with the key.
                            const double dAlpha = uiKey8 / 255.0;
                            const double adBlack[3] = {sBlack.d0, sBlack.d1, sBlack.d2};
                            for (int c = 0; c < 3; ++c)
                                adExact[c] = adExact[c] - adBlack[c] + dAlpha * adBlack[c];
                        }
                        for (int c = 0; c < 3; ++c) {
                            const double dExact = ClampTo(adExact[c], 255.0);
                            sWorst.Note(adGot[c], dExact);
                            ASSERT_LE(std::fabs(adGot[c] - dExact), 1.0)
                                << s << " pixel " << p << " component " << c << " Y " << sIn.vusY[p];
                        }
                        ASSERT_EQ(uiKey8, puc[bBgra ? 0 : 3]) << s << " key of pixel " << p;
                    }
                    EXPECT_LT(sWorst.d, 1.0) << s;
                }
            }
        }
    }
}

// The hub into the deep RGB formats (and RGB24): 8, 10, 12 and 16 bits.
struct SDeep {
    int iKind;
    int iBits;
};

STriple ReadDeep(int in_iKind, const uint8_t* in_puc, unsigned in_uiPixel, unsigned& out_ruiKey)
{
    out_ruiKey = 0;
    switch (in_iKind) {
    case 22: return {double(in_puc[3 * in_uiPixel + 2]), double(in_puc[3 * in_uiPixel + 1]), double(in_puc[3 * in_uiPixel])};
    case 28: case 34: {
        const uint32_t ui = Read32(in_puc + 4 * in_uiPixel);
        out_ruiKey = ui >> 30;
        const double dHigh = (ui >> 20) & 0x3ff, dLow = ui & 0x3ff, dG = (ui >> 10) & 0x3ff;
        return in_iKind == 28 ? STriple{dHigh, dG, dLow} : STriple{dLow, dG, dHigh};
    }
    case 36: {
        const double dB = LRgb36::Get(in_puc, 3 * in_uiPixel), dG = LRgb36::Get(in_puc, 3 * in_uiPixel + 1),
                     dR = LRgb36::Get(in_puc, 3 * in_uiPixel + 2);
        return {dR, dG, dB};
    }
    case 32: {
        const uint8_t* puc = in_puc + 8 * in_uiPixel;
        out_ruiKey = Read16(puc);
        return {double(Read16(puc + 6)), double(Read16(puc + 4)), double(Read16(puc + 2))};
    }
    case 29: {
        const uint8_t* puc = in_puc + 8 * in_uiPixel;
        auto Big = [&](int i) { return double((puc[2 * i] << 8) | puc[2 * i + 1]); };
        out_ruiKey = static_cast<unsigned>(Big(0));
        return {Big(1), Big(2), Big(3)};
    }
    default: ADD_FAILURE() << "no reader for kind " << in_iKind; return {0, 0, 0};
    }
}

TEST(BufferArithmetic, HubToDeepRgbAgreesWithTheMatrixWithinOne)
{
    std::mt19937 oRandom(23);
    const unsigned uiPixels = 96;
    const SDeep kas[] = {{22, 8}, {28, 10}, {34, 10}, {36, 12}, {32, 16}, {29, 16}};
    for (const SDeep& rs : kas) {
        for (EQxColorimetry e : kaeStandards) {
            for (EQxcColorRange eRange : kaeRanges) {
                SLinePair o(7, rs.iKind, uiPixels, e, eRange);
                const SYccLine sIn = RandomYcc(7, uiPixels, oRandom);
                WriteYcc(7, sIn, o.oSource.Data());
                const std::string s = "hub -> kind " + std::to_string(rs.iKind) + " standard " + std::to_string(e) +
                                      " range " + std::to_string(eRange);
                ASSERT_TRUE(o.Run(uiPixels, false)) << s;
                const double dMax = std::ldexp(1.0, rs.iBits) - 1.0;
                // One step of the output, or of the hub's 10 bits for deeper
                // outputs: the sets' Q14 weights carry no more.
                const double dTolerance = std::ldexp(1.0, std::max(0, rs.iBits - 10));
                for (unsigned p = 0; p < uiPixels; ++p) {
                    unsigned uiKey = 0;
                    const STriple sGot = ReadDeep(rs.iKind, o.oDestination.Data(), p, uiKey);
                    const STriple sExact = Ycc10ToRgb(sIn.vusY[p], sIn.vusCb[p & ~1u], sIn.vusCr[p & ~1u], e,
                                                      eRange == keQxcColorRangeVideo, rs.iBits);
                    ASSERT_LE(std::fabs(sGot.d0 - ClampTo(sExact.d0, dMax)), dTolerance) << s << " R of pixel " << p;
                    ASSERT_LE(std::fabs(sGot.d1 - ClampTo(sExact.d1, dMax)), dTolerance) << s << " G of pixel " << p;
                    ASSERT_LE(std::fabs(sGot.d2 - ClampTo(sExact.d2, dMax)), dTolerance) << s << " B of pixel " << p;
                    if (rs.iKind == 28 || rs.iKind == 34)
                        ASSERT_EQ(std::lround(sIn.vusK[p] * 3.0 / 1023.0), long(uiKey)) << s << " 2-bit key";
                    else if (rs.iBits == 16)
                        ASSERT_EQ(std::lround(sIn.vusK[p] * 65535.0 / 1023.0), long(uiKey)) << s << " key";
                }
            }
        }
    }
}

// ------------------------------------------------------- RGB -> YCbCr
// An RGBA line at the levels of the range (video: 16..235 and beyond).
std::vector<uint8_t> RandomRgba(unsigned in_uiPixels, std::mt19937& io_rRandom)
{
    std::vector<uint8_t> v(4 * in_uiPixels);
    for (uint8_t& uc : v)
        uc = static_cast<uint8_t>(io_rRandom());
    return v;
}

// Y (component 0), Cb (1) or Cr (2) of pixel p, 10-bit, of an RGBA line; a
// shaped pixel's premultiplied values take the key's share of black.
double ExactComponent(const std::vector<uint8_t>& in_rv, unsigned in_uiPixel, int in_iComponent, EQxColorimetry in_e,
                      bool in_bVideo, bool in_bShaped)
{
    const uint8_t* puc = in_rv.data() + 4 * in_uiPixel;
    const STriple s = RgbToYcc10(puc[2], puc[1], puc[0], in_e, in_bVideo, 8);
    const double ad[3] = {s.d0, s.d1, s.d2};
    if (in_bShaped && in_iComponent == 0) {
        const double dBlack = RgbToYcc10(0, 0, 0, in_e, in_bVideo, 8).d0;
        return ad[0] - dBlack + puc[3] / 255.0 * dBlack;
    }
    return ad[in_iComponent];
}

TEST(BufferArithmetic, RgbToYccKernelsAgreeWithTheMatrixWithinOne)
{
    std::mt19937 oRandom(29);
    const unsigned uiPixels = 96;
    struct SPair {
        int iSource, iDestination;
    };
    const SPair kas[] = {{13, 15}, {13, 33}, {13, 18}, {13, 31}, {13, 19}, {13, 16},
                         {13, 21}, {22, 15}, {26, 16}, {14, 17}, {14, 20}};
    for (const SPair& rs : kas) {
        const bool bShaped = rs.iSource == 14;
        for (EQxColorimetry e : kaeStandards) {
            for (EQxcColorRange eRange : kaeRanges) {
                for (bool bFilter : {false, true}) {
                    if (bFilter && (bShaped || rs.iDestination == 21 || rs.iSource == 26))
                        continue;
                    SLinePair o(rs.iSource, rs.iDestination, uiPixels, e, eRange);
                    std::vector<uint8_t> vRgba = RandomRgba(uiPixels, oRandom);
                    // The source in its own byte order, and the RGBA bytes it holds.
                    for (unsigned p = 0; p < uiPixels; ++p) {
                        uint8_t* puc = o.oSource.Data();
                        const uint8_t* pucRgba = vRgba.data() + 4 * p;
                        if (rs.iSource == 22) {
                            std::memcpy(puc + 3 * p, pucRgba, 3);
                            vRgba[4 * p + 3] = 255;
                        } else if (rs.iSource == 26) {
                            const uint8_t auc[4] = {pucRgba[3], pucRgba[2], pucRgba[1], pucRgba[0]};
                            std::memcpy(puc + 4 * p, auc, 4);
                        } else {
                            std::memcpy(puc + 4 * p, pucRgba, 4);
                        }
                    }
                    const std::string s = "kind " + std::to_string(rs.iSource) + " -> " +
                                          std::to_string(rs.iDestination) + " standard " + std::to_string(e) +
                                          " range " + std::to_string(eRange) + (bFilter ? " filtered" : "");
                    ASSERT_TRUE(o.Run(uiPixels, bFilter)) << s;
                    const SYccLine sOut = ReadYcc(rs.iDestination, o.oDestination.Data(), uiPixels);
                    const bool b8 = Is8BitYuv(rs.iDestination);
                    const double dScale = b8 ? 0.25 : 1.0;
                    const double dMax = b8 ? 255.0 : 1023.0;
                    const bool bVideo = eRange == keQxcColorRangeVideo;
                    for (unsigned p = 0; p < uiPixels; ++p) {
                        const double dY = ClampTo(dScale * ExactComponent(vRgba, p, 0, e, bVideo, bShaped), dMax);
                        ASSERT_LE(std::fabs(dScale * sOut.vusY[p] - dY), 1.0) << s << " Y of pixel " << p;
                        // The chroma of the pair's first pixel, or filtered
                        // around it with the run's ends repeated.
                        const unsigned uiAt = rs.iDestination == 21 ? p : p & ~1u;
                        for (int c = 1; c <= 2; ++c) {
                            double dC = 0.0;
                            if (bFilter) {
                                static const double kadTap[5] = {1 / 16.0, 3 / 16.0, 8 / 16.0, 3 / 16.0, 1 / 16.0};
                                for (int d = -2; d <= 2; ++d) {
                                    const int i = std::min<int>(std::max<int>(int(uiAt) + d, 0), int(uiPixels) - 1);
                                    dC += kadTap[d + 2] * ExactComponent(vRgba, unsigned(i), c, e, bVideo, false);
                                }
                            } else {
                                dC = ExactComponent(vRgba, uiAt, c, e, bVideo, bShaped);
                            }
                            dC = ClampTo(dScale * dC, dMax);
                            const double dGot = dScale * (c == 1 ? sOut.vusCb[p] : sOut.vusCr[p]);
                            ASSERT_LE(std::fabs(dGot - dC), 1.0) << s << " chroma " << c << " of pixel " << p;
                        }
                        if (rs.iDestination == 16 || rs.iDestination == 17 || rs.iDestination == 19 ||
                            rs.iDestination == 20 || rs.iDestination == 21)
                            ASSERT_EQ(KeyFrom8(vRgba[4 * p + 3]), sOut.vusK[p]) << s << " key of pixel " << p;
                    }
                }
            }
        }
    }
}

// ------------------------------------------------------ telling values
TEST(BufferArithmetic, VideoWhiteIsY235AndNeutralChromaInEveryStandard)
{
    for (EQxColorimetry e : {keQxColorimetryITUR_BT_601, keQxColorimetryITUR_BT_709, keQxColorimetryITUR_BT_2020,
                             keQxColorimetryITUR_BT_2100_PQ}) {
        for (int iDestination : {15, 19}) {
            SLinePair o(13, iDestination, 16, e, keQxcColorRangeVideo);
            for (unsigned p = 0; p < 16; ++p) {
                const uint8_t auc[4] = {235, 235, 235, 255};
                std::memcpy(o.oSource.Data() + 4 * p, auc, 4);
            }
            for (bool bFilter : {false, true}) {
                ASSERT_TRUE(o.pDestination->SetPosition(0, 0));
                ASSERT_TRUE(o.Run(16, bFilter));
                const SYccLine s = ReadYcc(iDestination, o.oDestination.Data(), 16);
                for (unsigned p = 0; p < 16; ++p) {
                    EXPECT_EQ(940, s.vusY[p]) << "standard " << e;
                    EXPECT_EQ(512, s.vusCb[p]) << "standard " << e;
                    EXPECT_EQ(512, s.vusCr[p]) << "standard " << e;
                }
                if (iDestination == 15)
                    EXPECT_EQ(235, o.oDestination.Data()[0]);
            }
        }
    }
}

// The host colour table: black and white (and zero-level black) convert
// exactly both ways at both levels; the primaries convert from RGB to the
// matrix's values rounded, and from the table's YCbCr within 1 of the matrix.
TEST(BufferArithmetic, HostColoursConvertExactly)
{
    for (EQxColorimetry e : kaeStandards) {
        for (EQxcColorRange eRange : kaeRanges) {
            const bool bVideo = eRange == keQxcColorRangeVideo;
            for (int iColor = keQxColorBlack; iColor <= keQxColorBlue; ++iColor) {
                SQxcYuvaPixel sYuva = {};
                SQxcRGBAPixel sRgba = {};
                CQxcBufferEngineCommon::GetHostColor(static_cast<EQxColor>(iColor), 1.0f, &sYuva, &sRgba, eRange);
                const std::string s = "colour " + std::to_string(iColor) + " standard " + std::to_string(e) +
                                      " range " + std::to_string(eRange);
                // RGB -> 10-bit and 8-bit YCbCr.
                for (int iDestination : {19, 15}) {
                    SLinePair o(13, iDestination, 16, e, eRange);
                    for (unsigned p = 0; p < 16; ++p) {
                        const uint8_t auc[4] = {sRgba.B, sRgba.G, sRgba.R, sRgba.A};
                        std::memcpy(o.oSource.Data() + 4 * p, auc, 4);
                    }
                    ASSERT_TRUE(o.Run(16, false)) << s;
                    const SYccLine sOut = ReadYcc(iDestination, o.oDestination.Data(), 16);
                    const STriple sExact = RgbToYcc10(sRgba.R, sRgba.G, sRgba.B, e, bVideo, 8);
                    const double dScale = iDestination == 15 ? 4.0 : 1.0;
                    EXPECT_EQ(dScale * std::lround(sExact.d0 / dScale), sOut.vusY[0]) << s;
                    EXPECT_EQ(dScale * std::lround(sExact.d1 / dScale), sOut.vusCb[0]) << s;
                    EXPECT_EQ(dScale * std::lround(sExact.d2 / dScale), sOut.vusCr[0]) << s;
                    // Zero-level black is the image of RGB 0 at video levels only.
                    if (iColor <= keQxColorWhite && (iColor != keQxColorZeroLevelBlack || bVideo)) {
                        EXPECT_EQ(sYuva.Y, sOut.vusY[0]) << s;
                        EXPECT_EQ(512, sOut.vusCb[0]) << s;
                        EXPECT_EQ(512, sOut.vusCr[0]) << s;
                    }
                }
                // 10-bit YCbCr -> RGBA.
                SLinePair o(19, 13, 16, e, eRange);
                SYccLine sIn(16);
                for (unsigned p = 0; p < 16; ++p) {
                    sIn.vusY[p] = sYuva.Y;
                    sIn.vusCb[p] = sYuva.Cb;
                    sIn.vusCr[p] = sYuva.Cr;
                    sIn.vusK[p] = 1023;
                }
                WriteYcc(19, sIn, o.oSource.Data());
                ASSERT_TRUE(o.Run(16, false)) << s;
                const uint8_t* puc = o.oDestination.Data();
                const STriple sExact = Ycc10ToRgb(sYuva.Y, sYuva.Cb, sYuva.Cr, e, bVideo, 8);
                EXPECT_LE(std::fabs(puc[2] - ClampTo(sExact.d0, 255)), 1.0) << s;
                EXPECT_LE(std::fabs(puc[1] - ClampTo(sExact.d1, 255)), 1.0) << s;
                EXPECT_LE(std::fabs(puc[0] - ClampTo(sExact.d2, 255)), 1.0) << s;
                if (iColor <= keQxColorWhite) {
                    EXPECT_EQ(sRgba.R, puc[2]) << s;
                    EXPECT_EQ(sRgba.G, puc[1]) << s;
                    EXPECT_EQ(sRgba.B, puc[0]) << s;
                }
                EXPECT_EQ(255, puc[3]) << s;
            }
        }
    }
}

// ---------------------------------------------------------- round trips
// RGBA -> 16-bit 4:4:4:4 and back through the matrix of the RGB kernels, on
// every pixel; and through the surfaces only (4:4:4:4 buffer, read as the
// block format, into the hub, into K64ARGB, into RGBA) where pairs of pixels
// share their colour, which the hub's 4:2:2 keeps.
TEST(BufferArithmetic, RgbaThroughYcc4444AndBackStaysWithinOne)
{
    std::mt19937 oRandom(37);
    const unsigned uiPixels = 64;
    for (EQxColorimetry e : kaeStandards) {
        for (EQxcColorRange eRange : kaeRanges) {
            const bool bVideo = eRange == keQxcColorRangeVideo;
            std::vector<uint8_t> vRgba = RandomRgba(uiPixels, oRandom);
            for (unsigned p = 0; p < uiPixels; ++p) {
                for (int c = 0; c < 3; ++c)
                    if (bVideo)  // studio levels: RGB outside them has no YCbCr image
                        vRgba[4 * p + c] = static_cast<uint8_t>(16 + vRgba[4 * p + c] % 220);
                if (p % 2 == 1)
                    std::memcpy(&vRgba[4 * p], &vRgba[4 * (p - 1)], 4);
            }
            const std::string s = "standard " + std::to_string(e) + " range " + std::to_string(eRange);
            SLinePair oTo(13, 21, uiPixels, e, eRange);
            std::memcpy(oTo.oSource.Data(), vRgba.data(), vRgba.size());
            ASSERT_TRUE(oTo.Run(uiPixels, false)) << s;

            // Per pixel, with the inverse step of the RGB kernels.
            SQxcBlockJob sJob = {};
            sJob.psCoeff = static_cast<CQxcBufferSurface*>(oTo.pSource.get())->GetRgbCoeff();
            const XYccToRgb8 oBack(sJob);
            for (unsigned b = 0; b < uiPixels / 16; ++b) {
                SScalar444 s444;
                L4444_16::Load(oTo.oDestination.Data() + 128 * b, s444);
                SScalarRgb sRgb;
                oBack.Apply(s444, sRgb);
                for (unsigned i = 0; i < 16; ++i) {
                    const uint8_t* puc = &vRgba[4 * (16 * b + i)];
                    EXPECT_LE(std::abs(sRgb.aus16R[i] - puc[2]), 1) << s << " pixel " << 16 * b + i;
                    EXPECT_LE(std::abs(sRgb.aus16G[i] - puc[1]), 1) << s << " pixel " << 16 * b + i;
                    EXPECT_LE(std::abs(sRgb.aus16B[i] - puc[0]), 1) << s << " pixel " << 16 * b + i;
                    EXPECT_EQ(puc[3], sRgb.aus16A[i]) << s;
                }
            }

            // Through the surfaces.
            auto pBlock = CreateSurface(keQxcSurfaceTypeYCbCrA4444_16bits_Unshaped, true);
            pBlock->Initialize(oTo.oDestination.Data(), uiPixels, 1, oTo.oDestination.Pitch(), true, e);
            CPicture oHub(96 * uiPixels / 16, 1);
            auto pHub = CreateSurface(7, true);
            static_cast<CQxcYCbCrA4224_16bits_UnshapedSurface*>(pHub.get())
                ->InitializeRGB10(oHub.Data(), uiPixels, 1, oHub.Pitch(), true, e, eRange, e);
            ASSERT_TRUE(pHub->CopyBlocksFrom(pBlock.get(), uiPixels / 16, 1)) << s;
            pHub->SetPosition(0, 0);
            SLinePair oK64(29, 13, uiPixels, e, eRange);
            Bind(*oK64.pSource, oK64.oSource.Data(), uiPixels, 1, oK64.oSource.Pitch(), true, e, eRange);
            ASSERT_TRUE(static_cast<CQxcBufferSurface*>(oK64.pSource.get())->CopyFrom(pHub.get(), uiPixels, 1)) << s;
            ASSERT_TRUE(oK64.pSource->SetPosition(0, 0));
            ASSERT_TRUE(oK64.Run(uiPixels, false)) << s;
            for (unsigned p = 0; p < uiPixels; ++p)
                for (int c = 0; c < 4; ++c)
                    EXPECT_LE(std::abs(oK64.oDestination.Data()[4 * p + c] - vRgba[4 * p + c]), c == 3 ? 0 : 1)
                        << s << " pixel " << p << " byte " << c;
        }
    }
}

#ifdef QXT_HAVE_LIBYUV
// 8-bit YUYV and UYVY (studio range) to RGBA at graphics levels against
// libyuv: BT.601 through its packed conversions, BT.709 through its planar
// conversion with the BT.709 constants.
TEST(BufferArithmetic, YuyvAndUyvyToRgbaAgreeWithLibyuvWithinTwo)
{
    std::mt19937 oRandom(41);
    const unsigned uiWidth = 640, uiLines = 4;
    for (bool bUyvy : {false, true}) {
        for (EQxColorimetry e : {keQxColorimetryITUR_BT_601, keQxColorimetryITUR_BT_709}) {
            CPicture oSource(2 * uiWidth, uiLines), oOurs(4 * uiWidth, uiLines), oTheirs(4 * uiWidth, uiLines);
            FillRandom(oSource.Data(), oSource.Bytes(), oRandom);
            auto pSource = CreateSurface(bUyvy ? kiKind2vuyBuffer : 15, false);
            auto pDestination = CreateSurface(13, false);
            Bind(*pSource, oSource.Data(), uiWidth, uiLines, oSource.Pitch(), false, e, keQxcColorRangeYuv);
            Bind(*pDestination, oOurs.Data(), uiWidth, uiLines, oOurs.Pitch(), true, e, keQxcColorRangeGraphic);
            ASSERT_TRUE(static_cast<CQxcBufferSurface*>(pDestination.get())->CopyFrom(pSource.get(), uiWidth, uiLines));
            if (e == keQxColorimetryITUR_BT_601) {
                if (bUyvy)
                    libyuv::UYVYToARGB(oSource.Data(), int(oSource.Pitch()), oTheirs.Data(), int(oTheirs.Pitch()),
                                       int(uiWidth), int(uiLines));
                else
                    libyuv::YUY2ToARGB(oSource.Data(), int(oSource.Pitch()), oTheirs.Data(), int(oTheirs.Pitch()),
                                       int(uiWidth), int(uiLines));
            } else {
                std::vector<uint8_t> vY(uiWidth * uiLines), vU(uiWidth / 2 * uiLines), vV(uiWidth / 2 * uiLines);
                for (unsigned y = 0; y < uiLines; ++y) {
                    const uint8_t* puc = oSource.Line(y);
                    for (unsigned x = 0; x < uiWidth / 2; ++x) {
                        const int iY = bUyvy ? 1 : 0;
                        vY[y * uiWidth + 2 * x] = puc[4 * x + iY];
                        vY[y * uiWidth + 2 * x + 1] = puc[4 * x + 2 + iY];
                        vU[y * uiWidth / 2 + x] = puc[4 * x + 1 - iY];
                        vV[y * uiWidth / 2 + x] = puc[4 * x + 3 - iY];
                    }
                }
                libyuv::I422ToARGBMatrix(vY.data(), int(uiWidth), vU.data(), int(uiWidth / 2), vV.data(),
                                         int(uiWidth / 2), oTheirs.Data(), int(oTheirs.Pitch()),
                                         &libyuv::kYuvH709Constants, int(uiWidth), int(uiLines));
            }
            // Pixels whose colour lies inside the RGB cube: outside it libyuv
            // saturates its 16-bit intermediates before the final clamp. Its
            // BT.709 constants also clamp the Cb -> B weight to 2.0 (the
            // standard's is 2.1124 on these scales), so its B leaves the
            // matrix by 0.11 |Cb - 128|: B is compared where that stays
            // within 1 (our B follows the matrix, within 1, everywhere; see
            // YccToRgbKernelsAgreeWithTheMatrixWithinOne).
            int iWorst = 0;
            unsigned uiCompared = 0;
            for (unsigned y = 0; y < uiLines; ++y) {
                for (unsigned x = 0; x < uiWidth; ++x) {
                    const uint8_t* puc = oSource.Line(y) + 4 * (x / 2);
                    const int iY = bUyvy ? 1 : 0;
                    const STriple sExact = Ycc10ToRgb(4.0 * puc[iY + 2 * (x % 2)], 4.0 * puc[1 - iY],
                                                      4.0 * puc[3 - iY], e, false, 8);
                    if (std::min({sExact.d0, sExact.d1, sExact.d2}) < -0.5 ||
                        std::max({sExact.d0, sExact.d1, sExact.d2}) > 255.5)
                        continue;
                    ++uiCompared;
                    const bool bCompareB = e == keQxColorimetryITUR_BT_601 || std::abs(puc[1 - iY] - 128) <= 8;
                    for (unsigned c = bCompareB ? 0 : 1; c < 4; ++c)
                        iWorst = std::max(iWorst, std::abs(oOurs.Line(y)[4 * x + c] - oTheirs.Line(y)[4 * x + c]));
                }
            }
            EXPECT_GT(uiCompared, uiWidth * uiLines / 8) << "too few colours inside the cube to compare";
            EXPECT_LE(iWorst, 2) << (bUyvy ? "UYVY" : "YUYV") << " standard " << e;
        }
    }
}
#else
TEST(BufferArithmetic, YuyvAndUyvyToRgbaAgreeWithLibyuvWithinTwo)
{
    GTEST_SKIP() << "libyuv is not installed: the comparison with it is not built";
}
#endif

}  // namespace
