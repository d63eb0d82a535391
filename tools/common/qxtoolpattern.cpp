#include "tools/common/qxtoolpattern.h"

#include "tools/common/qxtoolerror.h"

#include <algorithm>
#include <cctype>
#include <cmath>

namespace NQxTool {

namespace {

constexpr double kdPi = 3.14159265358979323846;

struct SNamedPattern {
    const char* pszName;
    EQxToolPattern ePattern;
};
const SNamedPattern kasPatterns[] = {
    {"bars", keQxToolPatternBars},           {"colorbars", keQxToolPatternBars},
    {"colourbars", keQxToolPatternBars},     {"ramp", keQxToolPatternRamp},
    {"lumaramp", keQxToolPatternRamp},       {"zoneplate", keQxToolPatternZonePlate},
    {"zone", keQxToolPatternZonePlate},
};

// An even pixel position at in_dUnits sevenths of the width.
uint32_t EvenColumn(uint32_t in_uiWidth, double in_dSevenths)
{
    const uint32_t ui = uint32_t(std::lround(in_dSevenths * in_uiWidth / 7.0));
    return std::min(in_uiWidth, ui & ~1u);
}

// A code of the given depth from a value on the 8-bit scale, kept out of
// the codes that the serial interface reserves for timing.
uint16_t Quantise(double in_dEightBit, uint32_t in_uiBits)
{
    const double dScale = double(1u << (in_uiBits - 8));
    const long lCode = std::lround(in_dEightBit * dScale);
    const long lLow = long(dScale), lHigh = long((1u << in_uiBits) - dScale) - 1;
    return uint16_t(std::clamp(lCode, lLow, lHigh));
}

// Pixels that one step of a format's packing covers.
uint32_t PackingGroup(const SQxToolFormat& in_rsFormat)
{
    if (in_rsFormat.eFormat == keQxSurfaceFormatV210) return 6;
    if (in_rsFormat.eFormat == keQxSurfaceFormatYUYV422 && in_rsFormat.uiBitCount == 10) return 16;
    return 2;
}

// 8-bit 4:2:2 pairs; in_bChromaFirst gives 2VUY's order, else YUYV's.
void Pack8(const SQxToolYuvLine& in_rsLine, bool in_bChromaFirst, uint8_t* out_puc)
{
    const size_t uPairs = in_rsLine.vecCb.size();
    for (size_t p = 0; p < uPairs; ++p) {
        const uint8_t aucPair[4] = {uint8_t(in_rsLine.vecY[2 * p]), uint8_t(in_rsLine.vecCb[p]),
                                    uint8_t(in_rsLine.vecY[2 * p + 1]), uint8_t(in_rsLine.vecCr[p])};
        uint8_t* puc = out_puc + 4 * p;
        if (in_bChromaFirst) {
            puc[0] = aucPair[1];
            puc[1] = aucPair[0];
            puc[2] = aucPair[3];
            puc[3] = aucPair[2];
        } else {
            std::copy(aucPair, aucPair + 4, puc);
        }
    }
}

// 10-bit YUYV: per 16 pixels, the upper 8 bits of the 32 components in
// YUYV order, then their low bit pairs, four to a byte.
void PackYuyv10(const SQxToolYuvLine& in_rsLine, uint8_t* out_puc)
{
    const size_t uBlocks = in_rsLine.vecY.size() / 16;
    for (size_t b = 0; b < uBlocks; ++b) {
        uint8_t* puc = out_puc + 40 * b;
        std::fill(puc + 32, puc + 40, uint8_t(0));
        for (unsigned k = 0; k < 32; ++k) {
            const size_t uPair = 8 * b + k / 4;
            const unsigned uiInPair = k % 4;
            const uint16_t uiCode = uiInPair == 0   ? in_rsLine.vecY[2 * uPair]
                                    : uiInPair == 1 ? in_rsLine.vecCb[uPair]
                                    : uiInPair == 2 ? in_rsLine.vecY[2 * uPair + 1]
                                                    : in_rsLine.vecCr[uPair];
            puc[k] = uint8_t(uiCode >> 2);
            puc[32 + k / 4] |= uint8_t((uiCode & 3) << (2 * (k % 4)));
        }
    }
}

void PutWord(uint8_t* out_puc, uint32_t in_uiA, uint32_t in_uiB, uint32_t in_uiC)
{
    const uint32_t ui = in_uiA | in_uiB << 10 | in_uiC << 20;
    out_puc[0] = uint8_t(ui);
    out_puc[1] = uint8_t(ui >> 8);
    out_puc[2] = uint8_t(ui >> 16);
    out_puc[3] = uint8_t(ui >> 24);
}

// v210: six pixels in four little-endian words,
// (Cb0 Y0 Cr0) (Y1 Cb1 Y2) (Cr1 Y3 Cb2) (Y4 Cr2 Y5).
void PackV210(const SQxToolYuvLine& in_rsLine, uint8_t* out_puc)
{
    const size_t uGroups = in_rsLine.vecY.size() / 6;
    for (size_t g = 0; g < uGroups; ++g) {
        const uint16_t* y = &in_rsLine.vecY[6 * g];
        const uint16_t* cb = &in_rsLine.vecCb[3 * g];
        const uint16_t* cr = &in_rsLine.vecCr[3 * g];
        uint8_t* puc = out_puc + 16 * g;
        PutWord(puc, cb[0], y[0], cr[0]);
        PutWord(puc + 4, y[1], cb[1], y[2]);
        PutWord(puc + 8, cr[1], y[3], cb[2]);
        PutWord(puc + 12, y[4], cr[2], y[5]);
    }
}

}  // namespace

EQxToolPattern ParsePattern(const std::string& in_strText)
{
    std::string str;
    for (char c : in_strText)
        if (c != '-' && c != '_') str += char(std::tolower(static_cast<unsigned char>(c)));
    for (const SNamedPattern& r : kasPatterns)
        if (str == r.pszName) return r.ePattern;
    throw UsageError("unknown test pattern \"" + in_strText + "\"; use bars, ramp or zoneplate");
}

const char* PatternName(EQxToolPattern in_ePattern)
{
    switch (in_ePattern) {
    case keQxToolPatternBars: return "bars";
    case keQxToolPatternRamp: return "ramp";
    case keQxToolPatternZonePlate: return "zoneplate";
    }
    return "?";
}

CQxToolPattern::CQxToolPattern(EQxToolPattern in_ePattern, uint32_t in_uiWidth, uint32_t in_uiHeight,
                               EQxColorimetry in_eColorimetry)
    : m_ePattern(in_ePattern), m_uiWidth(in_uiWidth), m_uiHeight(in_uiHeight)
{
    switch (in_eColorimetry) {
    case keQxColorimetryITUR_BT_601:
        m_dKr = 0.299;
        m_dKb = 0.114;
        break;
    case keQxColorimetryITUR_BT_709:
        m_dKr = 0.2126;
        m_dKb = 0.0722;
        break;
    case keQxColorimetryITUR_BT_2020:
    case keQxColorimetryITUR_BT_2100_PQ:
    case keQxColorimetryITUR_BT_2100_HLG:
    case keQxColorimetryITUR_BT_2020_Linear:
        m_dKr = 0.2627;
        m_dKb = 0.0593;
        break;
    default:
        throw UsageError("a test pattern needs a colorimetry with a matrix (601, 709 or 2020), not \"" +
                         ColorimetryName(in_eColorimetry) + "\"");
    }
    for (int i = 0; i <= 7; ++i) m_auiBarEdges[i] = EvenColumn(in_uiWidth, i);
}

CQxToolPattern::SColor CQxToolPattern::FromRgb(double in_dR, double in_dG, double in_dB) const
{
    const double dY = m_dKr * in_dR + (1.0 - m_dKr - m_dKb) * in_dG + m_dKb * in_dB;
    return {dY, (in_dB - dY) / (2.0 * (1.0 - m_dKb)), (in_dR - dY) / (2.0 * (1.0 - m_dKr))};
}

CQxToolPattern::SColor CQxToolPattern::BarsPixel(uint32_t in_uiX, uint32_t in_uiY) const
{
    // The seven bars as R'G'B' switches, in the order white, yellow, cyan,
    // green, magenta, red, blue.
    static const uint8_t s_aucBars[7] = {7, 6, 3, 2, 5, 4, 1};  // bit 2 R, bit 1 G, bit 0 B
    static const int s_aiReversed[7] = {6, -1, 4, -1, 2, -1, 0};  // blue, black, magenta, ...
    const double dLevel = 0.75;
    const uint32_t uiTop = uint32_t(std::lround(m_uiHeight * 2.0 / 3.0));
    const uint32_t uiStrip = uint32_t(std::lround(m_uiHeight * 3.0 / 4.0));
    int iBar = 0;
    while (iBar < 6 && in_uiX >= m_auiBarEdges[iBar + 1]) ++iBar;
    auto Bar = [&](int in_iBar) {
        if (in_iBar < 0) return FromRgb(0, 0, 0);
        const uint8_t uc = s_aucBars[in_iBar];
        return FromRgb(dLevel * ((uc >> 2) & 1), dLevel * ((uc >> 1) & 1), dLevel * (uc & 1));
    };
    if (in_uiY < uiTop) return Bar(iBar);
    if (in_uiY < uiStrip) return Bar(s_aiReversed[iBar]);
    if (in_uiX >= EvenColumn(m_uiWidth, 1.25) && in_uiX < EvenColumn(m_uiWidth, 2.5)) return FromRgb(1, 1, 1);
    if (in_uiX >= EvenColumn(m_uiWidth, 5.0) && in_uiX < EvenColumn(m_uiWidth, 6.0)) {
        const double dPluge = in_uiX < EvenColumn(m_uiWidth, 5.0 + 1.0 / 3)   ? -0.04
                              : in_uiX < EvenColumn(m_uiWidth, 5.0 + 2.0 / 3) ? 0.0
                                                                              : 0.04;
        return {dPluge, 0.0, 0.0};
    }
    return FromRgb(0, 0, 0);
}

CQxToolPattern::SColor CQxToolPattern::RampPixel(uint32_t in_uiX, uint32_t in_uiY) const
{
    if (in_uiY < uint32_t(std::lround(m_uiHeight * 3.0 / 4.0)))
        return {m_uiWidth > 1 ? double(in_uiX) / (m_uiWidth - 1) : 0.0, 0.0, 0.0};
    const uint32_t uiStep = std::min<uint32_t>(10, uint32_t(uint64_t(in_uiX) * 11 / m_uiWidth));
    return {uiStep / 10.0, 0.0, 0.0};
}

CQxToolPattern::SColor CQxToolPattern::ZonePlatePixel(uint32_t in_uiFrame, uint32_t in_uiX, uint32_t in_uiY) const
{
    // The local frequency along x is dx / width cycles a pixel: half a cycle
    // (Nyquist) at the left and right edges.
    const double dX = in_uiX + 0.5 - m_uiWidth / 2.0;
    const double dY = in_uiY + 0.5 - m_uiHeight / 2.0;
    const double dPhase = kdPi * (dX * dX + dY * dY) / m_uiWidth - (in_uiFrame % 8) * kdPi / 4.0;
    return {0.5 + 0.5 * std::cos(dPhase), 0.0, 0.0};
}

CQxToolPattern::SColor CQxToolPattern::Pixel(uint32_t in_uiFrame, uint32_t in_uiX, uint32_t in_uiY) const
{
    in_uiX = std::min(in_uiX, m_uiWidth - 1);
    switch (m_ePattern) {
    case keQxToolPatternBars: return BarsPixel(in_uiX, in_uiY);
    case keQxToolPatternRamp: return RampPixel(in_uiX, in_uiY);
    case keQxToolPatternZonePlate: return ZonePlatePixel(in_uiFrame, in_uiX, in_uiY);
    }
    return {0.0, 0.0, 0.0};
}

void CQxToolPattern::GetLine(uint32_t in_uiFrame, uint32_t in_uiLine, uint32_t in_uiBits, uint32_t in_uiColumns,
                             SQxToolYuvLine* out_psLine) const
{
    const uint32_t uiColumns = std::max(in_uiColumns, m_uiWidth + (m_uiWidth & 1)) & ~1u;
    out_psLine->vecY.resize(uiColumns);
    out_psLine->vecCb.resize(uiColumns / 2);
    out_psLine->vecCr.resize(uiColumns / 2);
    for (uint32_t x = 0; x < uiColumns; ++x) {
        const SColor s = Pixel(in_uiFrame, x, in_uiLine);
        out_psLine->vecY[x] = Quantise(16.0 + 219.0 * s.dY, in_uiBits);
        if ((x & 1) == 0) {
            out_psLine->vecCb[x / 2] = Quantise(128.0 + 224.0 * s.dCb, in_uiBits);
            out_psLine->vecCr[x / 2] = Quantise(128.0 + 224.0 * s.dCr, in_uiBits);
        }
    }
}

bool CQxToolPattern::IsNative(const SQxToolFormat& in_rsFormat)
{
    switch (in_rsFormat.eFormat) {
    case keQxSurfaceFormatYUYV422: return in_rsFormat.uiBitCount == 8 || in_rsFormat.uiBitCount == 10;
    case keQxSurfaceFormat2VUY: return in_rsFormat.uiBitCount == 8;
    case keQxSurfaceFormatV210: return in_rsFormat.uiBitCount == 10;
    default: return false;
    }
}

void CQxToolPattern::Render(uint32_t in_uiFrame, const SQxToolFormat& in_rsFormat, uint8_t* out_pucBuffer,
                            int32_t in_iPitch) const
{
    if (!IsNative(in_rsFormat))
        throw CQxToolError(std::string("test patterns are not drawn directly in ") + in_rsFormat.pszName);
    const uint32_t uiGroup = PackingGroup(in_rsFormat);
    const uint32_t uiColumns = (m_uiWidth + uiGroup - 1) / uiGroup * uiGroup;
    SQxToolYuvLine sLine;
    for (uint32_t y = 0; y < m_uiHeight; ++y) {
        GetLine(in_uiFrame, y, in_rsFormat.uiBitCount, uiColumns, &sLine);
        uint8_t* puc = out_pucBuffer + size_t(y) * size_t(in_iPitch);
        if (in_rsFormat.eFormat == keQxSurfaceFormatV210)
            PackV210(sLine, puc);
        else if (in_rsFormat.uiBitCount == 10)
            PackYuyv10(sLine, puc);
        else
            Pack8(sLine, in_rsFormat.eFormat == keQxSurfaceFormat2VUY, puc);
    }
}

}  // namespace NQxTool
