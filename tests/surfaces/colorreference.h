// The RGB <-> YCbCr matrices computed in double precision from each
// standard's luma weights, on the library's scales: YCbCr on 10 bits (black
// 64, white 940, chroma 512 +- 448), RGB at graphics levels (0 .. 2^n - 1) or
// video levels (16 .. 235 on 8 bits, times 2^(n - 8) on n bits). The tests
// hold every kernel to these.
#ifndef QXBASE_TESTS_SURFACES_COLORREFERENCE_H
#define QXBASE_TESTS_SURFACES_COLORREFERENCE_H

#include <qxbase/qxenums.h>
#include <qxbase/qxcbufferenginecommon.h>

#include <algorithm>
#include <cmath>

namespace NQxTest {

struct SWeights {
    double dKr;
    double dKb;
};

inline SWeights WeightsOf(EQxColorimetry in_e)
{
    if (in_e == keQxColorimetryITUR_BT_601)
        return {0.299, 0.114};
    if (in_e == keQxColorimetryITUR_BT_709)
        return {0.2126, 0.0722};
    return {0.2627, 0.0593};
}

struct STriple {
    double d0, d1, d2;
};

// RGB of n bits at the given levels as 0..1 and back.
inline double RgbToUnit(double in_d, bool in_bVideo, int in_iBits)
{
    return in_bVideo ? (in_d / std::ldexp(1.0, in_iBits - 8) - 16.0) / 219.0 : in_d / (std::ldexp(1.0, in_iBits) - 1.0);
}
inline double UnitToRgb(double in_d, bool in_bVideo, int in_iBits)
{
    return in_bVideo ? (16.0 + 219.0 * in_d) * std::ldexp(1.0, in_iBits - 8) : in_d * (std::ldexp(1.0, in_iBits) - 1.0);
}

// 10-bit Y, Cb, Cr of an RGB colour (any depth, any levels).
inline STriple RgbToYcc10(double in_dR, double in_dG, double in_dB, EQxColorimetry in_e, bool in_bVideo, int in_iBits)
{
    const SWeights s = WeightsOf(in_e);
    const double dKg = 1.0 - s.dKr - s.dKb;
    const double dR = RgbToUnit(in_dR, in_bVideo, in_iBits), dG = RgbToUnit(in_dG, in_bVideo, in_iBits),
                 dB = RgbToUnit(in_dB, in_bVideo, in_iBits);
    const double dY = s.dKr * dR + dKg * dG + s.dKb * dB;
    const double dCb = (dB - dY) / (2.0 * (1.0 - s.dKb));
    const double dCr = (dR - dY) / (2.0 * (1.0 - s.dKr));
    return {64.0 + 876.0 * dY, 512.0 + 896.0 * dCb, 512.0 + 896.0 * dCr};
}

// R, G, B of n bits of a 10-bit YCbCr colour.
inline STriple Ycc10ToRgb(double in_dY, double in_dCb, double in_dCr, EQxColorimetry in_e, bool in_bVideo, int in_iBits)
{
    const SWeights s = WeightsOf(in_e);
    const double dKg = 1.0 - s.dKr - s.dKb;
    const double dY = (in_dY - 64.0) / 876.0, dCb = (in_dCb - 512.0) / 896.0, dCr = (in_dCr - 512.0) / 896.0;
    const double dR = dY + 2.0 * (1.0 - s.dKr) * dCr;
    const double dB = dY + 2.0 * (1.0 - s.dKb) * dCb;
    const double dG = (dY - s.dKr * dR - s.dKb * dB) / dKg;
    return {UnitToRgb(dR, in_bVideo, in_iBits), UnitToRgb(dG, in_bVideo, in_iBits), UnitToRgb(dB, in_bVideo, in_iBits)};
}

inline double ClampTo(double in_d, double in_dMax) { return std::min(std::max(in_d, 0.0), in_dMax); }

}  // namespace NQxTest

#endif  // QXBASE_TESTS_SURFACES_COLORREFERENCE_H
