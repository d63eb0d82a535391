// A horizontal bar chart drawn into an image, for qxbench's --plot: one
// group of bars per row, one bar per series, a reference line (memcpy = 1)
// and the value at the end of every bar. Text is drawn with a built-in
// 5x7 pixel font, so the chart needs nothing but libpng to be written.
#ifndef QXBASE_TOOLS_QXTOOLCHART_H
#define QXBASE_TOOLS_QXTOOLCHART_H

#include "tools/common/qxtoolpng.h"

#include <string>
#include <vector>

namespace NQxTool {

struct SQxToolChartRow {
    std::string strLabel;
    // One value a series; a NaN leaves the series' bar out.
    std::vector<double> vecValues;
};

struct SQxToolChart {
    std::string strTitle;
    std::string strAxis;  // what the values are, under the axis
    std::vector<std::string> vecSeries;
    std::vector<SQxToolChartRow> vecRows;
    double dReference = 1.0;  // drawn as a vertical line; 0: none
};

// Geometry of the drawing, so that tests can find the bars.
struct SQxToolChartLayout {
    uint32_t uiPlotLeft;    // x of the value 0
    uint32_t uiPlotWidth;   // pixels from 0 to the largest axis value
    double dAxisMax;        // the value at the right end of the axis
    uint32_t uiFirstBar;    // y of the first bar's top
    uint32_t uiBarHeight;
    uint32_t uiBarStep;     // y from one bar to the next within a row
    uint32_t uiRowStep;     // y from one row's first bar to the next row's
};

// The RGB colour of a series (the series after the palette repeat it).
void SeriesColor(size_t in_uSeries, uint8_t out_aucRgb[3]);

// Draws the chart; out_psLayout (may be null) receives the geometry.
SQxToolImage DrawChart(const SQxToolChart& in_rsChart, SQxToolChartLayout* out_psLayout);

// Pixels a text takes at the given scale (each glyph 6 x 8 cells, less the
// last column's gap).
uint32_t TextWidth(const std::string& in_strText, uint32_t in_uiScale);

// Draws a text in black-on-whatever with its top-left corner at (x, y);
// letters are drawn as capitals, characters without a glyph as a box.
void DrawText(SQxToolImage& io_rImage, uint32_t in_uiX, uint32_t in_uiY, const std::string& in_strText,
              uint32_t in_uiScale, const uint8_t in_aucRgb[3]);

}  // namespace NQxTool

#endif  // QXBASE_TOOLS_QXTOOLCHART_H
