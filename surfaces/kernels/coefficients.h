// The RGB<->YCbCr coefficient sets, computed from each standard's luma
// weights (Kr, Kb) rather than tabulated, so that every set follows from two
// numbers. Computed at compile time: the sets are constants of the library
// from the moment it is loaded.
#ifndef QXBASE_SURFACES_KERNELS_COEFFICIENTS_H
#define QXBASE_SURFACES_KERNELS_COEFFICIENTS_H

#include <qxbase/qxcsurface.h>

namespace NQxcCoefficients {

struct SLumaWeights {
    double dKr;
    double dKb;
};

constexpr SLumaWeights ksBT601 = {0.299, 0.114};
constexpr SLumaWeights ksBT709 = {0.2126, 0.0722};
constexpr SLumaWeights ksBT2020 = {0.2627, 0.0593};

// Nearest integer of a non-negative value.
constexpr int Round(double in_d) { return static_cast<int>(in_d + 0.5); }

// Eight lanes of one 16-bit pattern (values above 32767 keep their bits).
constexpr SQxcLanes16 Lanes(int in_i)
{
    const int16_t i16 = static_cast<int16_t>(in_i > 32767 ? in_i - 65536 : in_i);
    return SQxcLanes16{{i16, i16, i16, i16, i16, i16, i16, i16}};
}

// bGraphics: RGB at full levels (0..255) rather than studio levels (16..235).
constexpr SQxcRgbCoeff MakeRgbCoeff(SLumaWeights in_s, bool in_bGraphics)
{
    const double dKr = in_s.dKr;
    const double dKb = in_s.dKb;
    const double dKg = 1.0 - dKr - dKb;
    // Forward: luma keeps its range (video) or shrinks 255 -> 219 (graphics);
    // chroma spans 224 steps either way.
    const double dLuma = in_bGraphics ? 219.0 / 255.0 : 1.0;
    const double dChroma = in_bGraphics ? 224.0 / 255.0 : 224.0 / 219.0;
    // Inverse: the reciprocal scalings.
    const double dGain = in_bGraphics ? 255.0 / 219.0 : 1.0;
    const double dInvChroma = in_bGraphics ? 255.0 / 224.0 : 219.0 / 224.0;
    const double dQ15 = 32768.0;
    const double dQ14 = 16384.0;
    return SQxcRgbCoeff{
        Lanes(Round(dKr * dLuma * dQ15)),
        Lanes(Round(dKg * dLuma * dQ15)),
        Lanes(Round(dKb * dLuma * dQ15)),
        Lanes(Round(0.5 * dKr / (1.0 - dKb) * dChroma * dQ15)),
        Lanes(Round(0.5 * dKg / (1.0 - dKb) * dChroma * dQ15)),
        Lanes(Round(0.5 * dChroma * dQ15)),
        Lanes(Round(0.5 * dChroma * dQ15)),
        Lanes(Round(0.5 * dKg / (1.0 - dKr) * dChroma * dQ15)),
        Lanes(Round(0.5 * dKb / (1.0 - dKr) * dChroma * dQ15)),
        Lanes(in_bGraphics ? 1024 : 0),
        Lanes(in_bGraphics ? 2056 : 0),
        Lanes(in_bGraphics ? 64 : 0),
        Lanes(0x8080),
        Lanes(8),
        Lanes(32),
        Lanes(8192),
        Lanes(Round(dGain * dQ14)),
        Lanes(Round(2.0 * (1.0 - dKr) * dInvChroma * dQ14)),
        Lanes(Round(2.0 * (1.0 - dKr) * dKr / dKg * dInvChroma * dQ14)),
        // Applied twice, so it fits the signed 16-bit range.
        Lanes(Round(2.0 * (1.0 - dKb) * dInvChroma * dQ14 / 2.0)),
        Lanes(Round(2.0 * (1.0 - dKb) * dKb / dKg * dInvChroma * dQ14)),
        Lanes(in_bGraphics ? 4112 : 0),
        Lanes(128),
        Lanes(512),
        Lanes(16),
        Lanes(0),
        Lanes(1023),
        Lanes(1023),
        Lanes(0xffff)};
}

// The literal range constants are binding as given (recomputing 219/255 in
// Q16 or 255/219 in Q15 would round elsewhere).
constexpr SQxcRgbToRgbCoeff kRgbToRgbCoeff = {Lanes(56283), Lanes(38154), Lanes(16), Lanes(4112), Lanes(128),
                                              Lanes(64)};

constexpr SQxcRgbFilteringCoeff kRgbFilteringCoeff = {Lanes(16384), Lanes(6144), Lanes(2048), Lanes(16),
                                                      Lanes(4)};

// Four 16-bit lanes of one value, as a 64-bit constant.
constexpr int64_t FourLanes(int in_i)
{
    return static_cast<int64_t>(static_cast<uint64_t>(in_i) * 0x0001000100010001ull);
}

// Entry a = floor(32736 / a + 0.5), entry 0 = 0, in exact integer form.
constexpr uint16_t Reciprocal(unsigned in_uiKey)
{
    return in_uiKey == 0 ? 0 : static_cast<uint16_t>((2u * 32736u + in_uiKey) / (2u * in_uiKey));
}

constexpr SQxcUnshapeReciprocals MakeReciprocals()
{
    SQxcUnshapeReciprocals s{};
    for (unsigned ui = 0; ui < 1024; ++ui)
        s.aus16Entry[ui] = Reciprocal(ui);
    return s;
}

}  // namespace NQxcCoefficients

// Defines one class's family of coefficient sets and its selection table.
#define QXC_DEFINE_RGB_COEFF_FAMILY(Class)                                                                   \
    const SQxcRgbCoeff Class::ms_sVideoRgbCoeff = NQxcCoefficients::MakeRgbCoeff(NQxcCoefficients::ksBT601, false); \
    const SQxcRgbCoeff Class::ms_sGraphicRgbCoeff = NQxcCoefficients::MakeRgbCoeff(NQxcCoefficients::ksBT601, true); \
    const SQxcRgbCoeff Class::ms_sVideoRgbCoeff_ITUR_BT_709 =                                                \
        NQxcCoefficients::MakeRgbCoeff(NQxcCoefficients::ksBT709, false);                                    \
    const SQxcRgbCoeff Class::ms_sGraphicRgbCoeff_ITUR_BT_709 =                                              \
        NQxcCoefficients::MakeRgbCoeff(NQxcCoefficients::ksBT709, true);                                     \
    const SQxcRgbCoeff Class::ms_sVideoRgbCoeff_ITUR_BT_2020 =                                               \
        NQxcCoefficients::MakeRgbCoeff(NQxcCoefficients::ksBT2020, false);                                   \
    const SQxcRgbCoeff Class::ms_sGraphicRgbCoeff_ITUR_BT_2020 =                                             \
        NQxcCoefficients::MakeRgbCoeff(NQxcCoefficients::ksBT2020, true);                                    \
    const SQxcRgbCoeff* const Class::ms_apsRgbCoeffTable[24] = {                                             \
        nullptr, nullptr, nullptr,                                                                           \
        &ms_sGraphicRgbCoeff, &ms_sVideoRgbCoeff, nullptr,                                                   \
        &ms_sGraphicRgbCoeff_ITUR_BT_709, &ms_sVideoRgbCoeff_ITUR_BT_709, nullptr,                           \
        &ms_sGraphicRgbCoeff_ITUR_BT_2020, &ms_sVideoRgbCoeff_ITUR_BT_2020, nullptr,                         \
        &ms_sGraphicRgbCoeff_ITUR_BT_2020, &ms_sVideoRgbCoeff_ITUR_BT_2020, nullptr,                         \
        &ms_sGraphicRgbCoeff_ITUR_BT_2020, &ms_sVideoRgbCoeff_ITUR_BT_2020, nullptr,                         \
        &ms_sGraphicRgbCoeff_ITUR_BT_2020, &ms_sVideoRgbCoeff_ITUR_BT_2020, nullptr,                         \
        nullptr, nullptr, nullptr};

// The set of a range and colorimetry, none outside the table.
inline const SQxcRgbCoeff* QxcSelectRgbCoeff(const SQxcRgbCoeff* const* in_ppsTable, EQxcColorRange in_eRange,
                                             EQxColorimetry in_eColorimetry)
{
    const int iIndex = static_cast<int>(in_eRange) + 3 * static_cast<int>(in_eColorimetry);
    if (in_eRange < keQxcColorRangeGraphic || in_eRange > keQxcColorRangeYuv || iIndex < 0 || iIndex >= 24)
        return nullptr;
    return in_ppsTable[iIndex];
}

#endif  // QXBASE_SURFACES_KERNELS_COEFFICIENTS_H
