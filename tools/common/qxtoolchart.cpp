#include "tools/common/qxtoolchart.h"

#include <algorithm>
#include <cctype>
#include <cmath>
#include <cstdio>

namespace NQxTool {

namespace {

struct SGlyph {
    char c;
    const char* apszRows[7];
};

// A 5x7 font: '#' is ink. Letters are capitals (and one small x for sizes).
const SGlyph kasGlyphs[] = {
    {' ', {".....", ".....", ".....", ".....", ".....", ".....", "....."}},
    {'0', {".###.", "#...#", "#..##", "#.#.#", "##..#", "#...#", ".###."}},
    {'1', {"..#..", ".##..", "..#..", "..#..", "..#..", "..#..", ".###."}},
    {'2', {".###.", "#...#", "....#", "...#.", "..#..", ".#...", "#####"}},
    {'3', {"#####", "...#.", "..#..", "...#.", "....#", "#...#", ".###."}},
    {'4', {"...#.", "..##.", ".#.#.", "#..#.", "#####", "...#.", "...#."}},
    {'5', {"#####", "#....", "####.", "....#", "....#", "#...#", ".###."}},
    {'6', {"..##.", ".#...", "#....", "####.", "#...#", "#...#", ".###."}},
    {'7', {"#####", "....#", "...#.", "..#..", ".#...", ".#...", ".#..."}},
    {'8', {".###.", "#...#", "#...#", ".###.", "#...#", "#...#", ".###."}},
    {'9', {".###.", "#...#", "#...#", ".####", "....#", "...#.", ".##.."}},
    {'A', {".###.", "#...#", "#...#", "#####", "#...#", "#...#", "#...#"}},
    {'B', {"####.", "#...#", "#...#", "####.", "#...#", "#...#", "####."}},
    {'C', {".###.", "#...#", "#....", "#....", "#....", "#...#", ".###."}},
    {'D', {"###..", "#..#.", "#...#", "#...#", "#...#", "#..#.", "###.."}},
    {'E', {"#####", "#....", "#....", "####.", "#....", "#....", "#####"}},
    {'F', {"#####", "#....", "#....", "####.", "#....", "#....", "#...."}},
    {'G', {".###.", "#...#", "#....", "#.###", "#...#", "#...#", ".####"}},
    {'H', {"#...#", "#...#", "#...#", "#####", "#...#", "#...#", "#...#"}},
    {'I', {".###.", "..#..", "..#..", "..#..", "..#..", "..#..", ".###."}},
    {'J', {"..###", "...#.", "...#.", "...#.", "...#.", "#..#.", ".##.."}},
    {'K', {"#...#", "#..#.", "#.#..", "##...", "#.#..", "#..#.", "#...#"}},
    {'L', {"#....", "#....", "#....", "#....", "#....", "#....", "#####"}},
    {'M', {"#...#", "##.##", "#.#.#", "#.#.#", "#...#", "#...#", "#...#"}},
    {'N', {"#...#", "#...#", "##..#", "#.#.#", "#..##", "#...#", "#...#"}},
    {'O', {".###.", "#...#", "#...#", "#...#", "#...#", "#...#", ".###."}},
    {'P', {"####.", "#...#", "#...#", "####.", "#....", "#....", "#...."}},
    {'Q', {".###.", "#...#", "#...#", "#...#", "#.#.#", "#..#.", ".##.#"}},
    {'R', {"####.", "#...#", "#...#", "####.", "#.#..", "#..#.", "#...#"}},
    {'S', {".####", "#....", "#....", ".###.", "....#", "....#", "####."}},
    {'T', {"#####", "..#..", "..#..", "..#..", "..#..", "..#..", "..#.."}},
    {'U', {"#...#", "#...#", "#...#", "#...#", "#...#", "#...#", ".###."}},
    {'V', {"#...#", "#...#", "#...#", "#...#", "#...#", ".#.#.", "..#.."}},
    {'W', {"#...#", "#...#", "#...#", "#.#.#", "#.#.#", "#.#.#", ".#.#."}},
    {'X', {"#...#", "#...#", ".#.#.", "..#..", ".#.#.", "#...#", "#...#"}},
    {'Y', {"#...#", "#...#", ".#.#.", "..#..", "..#..", "..#..", "..#.."}},
    {'Z', {"#####", "....#", "...#.", "..#..", ".#...", "#....", "#####"}},
    {'x', {".....", ".....", "#...#", ".#.#.", "..#..", ".#.#.", "#...#"}},
    {'.', {".....", ".....", ".....", ".....", ".....", ".##..", ".##.."}},
    {',', {".....", ".....", ".....", ".....", ".##..", "..#..", ".#..."}},
    {'-', {".....", ".....", ".....", "#####", ".....", ".....", "....."}},
    {'/', {".....", "....#", "...#.", "..#..", ".#...", "#....", "....."}},
    {'(', {"...#.", "..#..", ".#...", ".#...", ".#...", "..#..", "...#."}},
    {')', {".#...", "..#..", "...#.", "...#.", "...#.", "..#..", ".#..."}},
    {':', {".....", ".##..", ".##..", ".....", ".##..", ".##..", "....."}},
    {'%', {"##...", "##..#", "...#.", "..#..", ".#...", "#..##", "...##"}},
    {'+', {".....", "..#..", "..#..", "#####", "..#..", "..#..", "....."}},
    {'=', {".....", ".....", "#####", ".....", "#####", ".....", "....."}},
    {'>', {".#...", "..#..", "...#.", "....#", "...#.", "..#..", ".#..."}},
    {'<', {"...#.", "..#..", ".#...", "#....", ".#...", "..#..", "...#."}},
};

const SGlyph* FindGlyph(char in_c)
{
    const char c = in_c == 'x' ? 'x' : char(std::toupper(static_cast<unsigned char>(in_c)));
    for (const SGlyph& r : kasGlyphs)
        if (r.c == c) return &r;
    return nullptr;
}

// Cells of a glyph, gaps included.
constexpr uint32_t kuiCellWidth = 6;
constexpr uint32_t kuiCellHeight = 8;

const uint8_t kaucBlack[3] = {0, 0, 0};
const uint8_t kaucGrid[3] = {222, 222, 222};
const uint8_t kaucAxis[3] = {90, 90, 90};
const uint8_t kaucReference[3] = {200, 30, 30};

void PutPixel(SQxToolImage& io_r, uint32_t in_uiX, uint32_t in_uiY, const uint8_t in_aucRgb[3])
{
    if (in_uiX >= io_r.uiWidth || in_uiY >= io_r.uiHeight) return;
    uint8_t* puc = io_r.Row(in_uiY) + 3 * in_uiX;
    puc[0] = in_aucRgb[0];
    puc[1] = in_aucRgb[1];
    puc[2] = in_aucRgb[2];
}

void FillRect(SQxToolImage& io_r, uint32_t in_uiX, uint32_t in_uiY, uint32_t in_uiWidth, uint32_t in_uiHeight,
              const uint8_t in_aucRgb[3])
{
    for (uint32_t y = in_uiY; y < in_uiY + in_uiHeight; ++y)
        for (uint32_t x = in_uiX; x < in_uiX + in_uiWidth; ++x) PutPixel(io_r, x, y, in_aucRgb);
}

// A step of 1, 2 or 5 times a power of ten that cuts 0..max into 4 to 10.
double NiceStep(double in_dMax)
{
    const double dPower = std::pow(10.0, std::floor(std::log10(in_dMax / 4.0)));
    for (double d : {1.0, 2.0, 5.0, 10.0})
        if (in_dMax / (d * dPower) <= 10.0) return d * dPower;
    return 10.0 * dPower;
}

std::string Number(double in_d)
{
    char sz[32];
    std::snprintf(sz, sizeof(sz), in_d >= 10.0 ? "%.1f" : "%.2f", in_d);
    return sz;
}

}  // namespace

void SeriesColor(size_t in_uSeries, uint8_t out_aucRgb[3])
{
    static const uint8_t s_aaucPalette[6][3] = {{31, 119, 180}, {255, 127, 14}, {44, 160, 44},
                                                {148, 103, 189}, {140, 86, 75},  {227, 119, 194}};
    const uint8_t* puc = s_aaucPalette[in_uSeries % 6];
    out_aucRgb[0] = puc[0];
    out_aucRgb[1] = puc[1];
    out_aucRgb[2] = puc[2];
}

uint32_t TextWidth(const std::string& in_strText, uint32_t in_uiScale)
{
    return in_strText.empty() ? 0 : uint32_t(in_strText.size() * kuiCellWidth - 1) * in_uiScale;
}

void DrawText(SQxToolImage& io_rImage, uint32_t in_uiX, uint32_t in_uiY, const std::string& in_strText,
              uint32_t in_uiScale, const uint8_t in_aucRgb[3])
{
    static const SGlyph s_sBox = {'?', {"#####", "#...#", "#...#", "#...#", "#...#", "#...#", "#####"}};
    for (size_t i = 0; i < in_strText.size(); ++i) {
        const SGlyph* ps = FindGlyph(in_strText[i]);
        if (!ps) ps = &s_sBox;
        const uint32_t uiLeft = in_uiX + uint32_t(i) * kuiCellWidth * in_uiScale;
        for (uint32_t r = 0; r < 7; ++r)
            for (uint32_t c = 0; c < 5; ++c)
                if (ps->apszRows[r][c] == '#')
                    FillRect(io_rImage, uiLeft + c * in_uiScale, in_uiY + r * in_uiScale, in_uiScale, in_uiScale,
                             in_aucRgb);
    }
}

SQxToolImage DrawChart(const SQxToolChart& in_rsChart, SQxToolChartLayout* out_psLayout)
{
    const uint32_t uiMargin = 16, uiScale = 2, uiTextHeight = kuiCellHeight * uiScale;
    const uint32_t uiSeries = uint32_t(std::max<size_t>(1, in_rsChart.vecSeries.size()));

    double dMax = in_rsChart.dReference;
    for (const SQxToolChartRow& r : in_rsChart.vecRows)
        for (double d : r.vecValues)
            if (std::isfinite(d)) dMax = std::max(dMax, d);
    if (!(dMax > 0.0)) dMax = 1.0;
    const double dStep = NiceStep(dMax);
    const double dAxisMax = std::ceil(dMax / dStep) * dStep;

    uint32_t uiLabelWidth = 0;
    for (const SQxToolChartRow& r : in_rsChart.vecRows) uiLabelWidth = std::max(uiLabelWidth, TextWidth(r.strLabel, uiScale));

    SQxToolChartLayout s{};
    s.uiPlotLeft = uiMargin + uiLabelWidth + uiMargin;
    s.uiPlotWidth = 640;
    s.dAxisMax = dAxisMax;
    s.uiBarHeight = 14;
    s.uiBarStep = 16;
    s.uiRowStep = uiSeries * s.uiBarStep + 14;
    const uint32_t uiLegendY = uiMargin + uiTextHeight + 10;
    s.uiFirstBar = uiLegendY + uiTextHeight + 18;
    const uint32_t uiPlotBottom = s.uiFirstBar + uint32_t(in_rsChart.vecRows.size()) * s.uiRowStep;
    const uint32_t uiValueRoom = TextWidth("000.00", 1) + 8;

    SQxToolImage sImage;
    const uint32_t uiWidth = std::max(s.uiPlotLeft + s.uiPlotWidth + uiValueRoom + uiMargin,
                                      2 * uiMargin + TextWidth(in_rsChart.strTitle, uiScale));
    sImage.Allocate(uiWidth, uiPlotBottom + 2 * uiTextHeight + 2 * uiMargin, 3, 8);
    std::fill(sImage.vecPixels.begin(), sImage.vecPixels.end(), uint8_t(255));

    auto X = [&](double in_d) { return s.uiPlotLeft + uint32_t(std::lround(in_d / dAxisMax * s.uiPlotWidth)); };

    DrawText(sImage, uiMargin, uiMargin, in_rsChart.strTitle, uiScale, kaucBlack);
    uint32_t uiLegendX = s.uiPlotLeft;
    for (size_t i = 0; i < in_rsChart.vecSeries.size(); ++i) {
        uint8_t aucColor[3];
        SeriesColor(i, aucColor);
        FillRect(sImage, uiLegendX, uiLegendY, uiTextHeight, uiTextHeight - 2, aucColor);
        DrawText(sImage, uiLegendX + uiTextHeight + 6, uiLegendY, in_rsChart.vecSeries[i], uiScale, kaucBlack);
        uiLegendX += uiTextHeight + 6 + TextWidth(in_rsChart.vecSeries[i], uiScale) + 24;
    }

    // Grid, ticks and the reference line, then the bars over them.
    const uint32_t uiPlotTop = s.uiFirstBar - 8;
    for (double d = 0.0; d <= dAxisMax + dStep / 2; d += dStep) {
        const uint32_t x = X(d);
        FillRect(sImage, x, uiPlotTop, 1, uiPlotBottom - uiPlotTop, kaucGrid);
        const std::string strTick = Number(d);
        const uint32_t uiTickWidth = TextWidth(strTick, uiScale);
        DrawText(sImage, x > uiTickWidth / 2 ? x - uiTickWidth / 2 : 0, uiPlotBottom + 6, strTick, uiScale, kaucAxis);
    }
    FillRect(sImage, s.uiPlotLeft, uiPlotTop, 1, uiPlotBottom - uiPlotTop, kaucAxis);
    FillRect(sImage, s.uiPlotLeft, uiPlotBottom, s.uiPlotWidth + 1, 1, kaucAxis);
    DrawText(sImage, s.uiPlotLeft, uiPlotBottom + 6 + uiTextHeight + 4, in_rsChart.strAxis, uiScale, kaucAxis);
    // Under the bars, so that a bar's end and its value stay readable.
    if (in_rsChart.dReference > 0.0)
        FillRect(sImage, X(in_rsChart.dReference), uiPlotTop, 2, uiPlotBottom - uiPlotTop, kaucReference);

    for (size_t r = 0; r < in_rsChart.vecRows.size(); ++r) {
        const SQxToolChartRow& rRow = in_rsChart.vecRows[r];
        const uint32_t uiRowTop = s.uiFirstBar + uint32_t(r) * s.uiRowStep;
        const uint32_t uiRowHeight = uiSeries * s.uiBarStep;
        DrawText(sImage, s.uiPlotLeft - uiMargin - TextWidth(rRow.strLabel, uiScale),
                 uiRowTop + (uiRowHeight - uiTextHeight) / 2, rRow.strLabel, uiScale, kaucBlack);
        for (size_t i = 0; i < rRow.vecValues.size() && i < uiSeries; ++i) {
            const double d = rRow.vecValues[i];
            if (!std::isfinite(d) || d < 0.0) continue;
            uint8_t aucColor[3];
            SeriesColor(i, aucColor);
            const uint32_t uiTop = uiRowTop + uint32_t(i) * s.uiBarStep;
            const uint32_t uiEnd = X(d);
            FillRect(sImage, s.uiPlotLeft + 1, uiTop, uiEnd - s.uiPlotLeft, s.uiBarHeight, aucColor);
            DrawText(sImage, uiEnd + 4, uiTop + (s.uiBarHeight - 7) / 2, Number(d), 1, kaucBlack);
        }
    }
    if (out_psLayout) *out_psLayout = s;
    return sImage;
}

}  // namespace NQxTool
