// Built-in test pictures: colour bars, a luma ramp and a zone plate. They
// are computed in Y'CbCr from exact values and quantised once, to 8 or 10
// bits, straight into the 4:2:2 layouts of the library (8-bit YUYV and
// 2VUY, 10-bit YUYV and v210); other formats get them through the engine.
#ifndef QXBASE_TOOLS_QXTOOLPATTERN_H
#define QXBASE_TOOLS_QXTOOLPATTERN_H

#include "tools/common/qxtoolformats.h"

#include <cstdint>
#include <string>
#include <vector>

namespace NQxTool {

enum EQxToolPattern : int32_t {
    // 75% bars (white, yellow, cyan, green, magenta, red, blue) over two
    // thirds of the height, a strip of reversed blue bars, then a 100% white
    // patch and a PLUGE (-4%, 0%, +4% of black) on black.
    keQxToolPatternBars = 0,
    // Luma from black to white across the width, then eleven 10% steps in
    // the bottom quarter; no colour.
    keQxToolPatternRamp = 1,
    // A circular zone plate whose frequency reaches the horizontal Nyquist
    // limit at the left and right edges; its phase moves by an eighth of a
    // turn each frame.
    keQxToolPatternZonePlate = 2
};

// "bars", "ramp", "zoneplate" (also "colorbars", "zone-plate" ...).
EQxToolPattern ParsePattern(const std::string& in_strText);
const char* PatternName(EQxToolPattern in_ePattern);

// One line of a 4:2:2 picture in quantised codes: a luma for every pixel and
// a Cb and Cr for every pair, taken at the pair's first pixel.
struct SQxToolYuvLine {
    std::vector<uint16_t> vecY;
    std::vector<uint16_t> vecCb;
    std::vector<uint16_t> vecCr;
};

class CQxToolPattern {
public:
    // Throws a usage error for a colorimetry without a matrix.
    CQxToolPattern(EQxToolPattern in_ePattern, uint32_t in_uiWidth, uint32_t in_uiHeight,
                   EQxColorimetry in_eColorimetry);

    // Codes of line in_uiLine of frame in_uiFrame at 8 or 10 bits, for
    // in_uiColumns pixels (an even number at least the width; the columns
    // past the picture repeat its last one). Codes stay inside the legal
    // range of the depth: 1..254 on 8 bits, 4..1019 on 10 bits.
    void GetLine(uint32_t in_uiFrame, uint32_t in_uiLine, uint32_t in_uiBits, uint32_t in_uiColumns,
                 SQxToolYuvLine* out_psLine) const;

    // Whether the pattern can be written straight into the format.
    static bool IsNative(const SQxToolFormat& in_rsFormat);

    // Writes frame in_uiFrame into a buffer of a native format whose lines
    // are in_iPitch bytes apart (each line at least the format's packed
    // line of the width).
    void Render(uint32_t in_uiFrame, const SQxToolFormat& in_rsFormat, uint8_t* out_pucBuffer, int32_t in_iPitch) const;

    EQxToolPattern GetPattern() const { return m_ePattern; }

private:
    // Normalised Y' (0..1 nominal) and Cb, Cr (-0.5..0.5) of one pixel.
    struct SColor {
        double dY;
        double dCb;
        double dCr;
    };
    SColor FromRgb(double in_dR, double in_dG, double in_dB) const;
    SColor BarsPixel(uint32_t in_uiX, uint32_t in_uiY) const;
    SColor RampPixel(uint32_t in_uiX, uint32_t in_uiY) const;
    SColor ZonePlatePixel(uint32_t in_uiFrame, uint32_t in_uiX, uint32_t in_uiY) const;
    SColor Pixel(uint32_t in_uiFrame, uint32_t in_uiX, uint32_t in_uiY) const;

    EQxToolPattern m_ePattern;
    uint32_t m_uiWidth;
    uint32_t m_uiHeight;
    double m_dKr;
    double m_dKb;
    // Left edge of each of the seven bars and the right edge of the last,
    // on even pixels so that no chroma pair straddles two bars.
    uint32_t m_auiBarEdges[8];
};

}  // namespace NQxTool

#endif  // QXBASE_TOOLS_QXTOOLPATTERN_H
