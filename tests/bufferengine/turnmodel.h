// A plain model of turned YUYV pictures: which source pixels and which
// row's chroma every turned pixel pair must hold.
#ifndef QXBASE_TESTS_BUFFERENGINE_TURNMODEL_H
#define QXBASE_TESTS_BUFFERENGINE_TURNMODEL_H

#include <gtest/gtest.h>

#include <cstddef>

// A YUYV picture read pixel by pixel.
struct SYuyvView {
    const unsigned char* pucData;
    unsigned int uiPitch;
    unsigned char Luma(unsigned int x, unsigned int y) const { return pucData[size_t(y) * uiPitch + 2 * x]; }
    unsigned char Cb(unsigned int x, unsigned int y) const { return pucData[size_t(y) * uiPitch + (x / 2) * 4 + 1]; }
    unsigned char Cr(unsigned int x, unsigned int y) const { return pucData[size_t(y) * uiPitch + (x / 2) * 4 + 3]; }
};

// The turned pair at (pair k, row r) of the destination, from the model: the
// two lumas of the pixels that land there, and the chroma of the source row
// the kernel is meant to take it from.
inline void ExpectTurned(const SYuyvView& in_oSource, const SYuyvView& in_oTurned, unsigned int in_uiWidth,
                  unsigned int in_uiHeight, unsigned int in_uiDegrees)
{
    const unsigned int uiRows = in_uiDegrees == 180 ? in_uiHeight : in_uiWidth;
    const unsigned int uiColumns = in_uiDegrees == 180 ? in_uiWidth : in_uiHeight;
    for (unsigned int r = 0; r < uiRows; ++r) {
        for (unsigned int k = 0; k < uiColumns / 2; ++k) {
            unsigned int x0, y0, x1, y1, xc, yc;
            if (in_uiDegrees == 90) {  // clockwise: (j, r) comes from (r, H - 1 - j)
                x0 = x1 = xc = r;
                y0 = in_uiHeight - 1 - 2 * k;
                y1 = y0 - 1;
                yc = r % 2 == 0 ? y0 : y1;
            } else if (in_uiDegrees == 270) {  // (j, r) comes from (W - 1 - r, j)
                x0 = x1 = xc = in_uiWidth - 1 - r;
                y0 = 2 * k;
                y1 = y0 + 1;
                yc = r % 2 == 1 ? y0 : y1;
            } else {  // (j, r) comes from (W - 1 - j, H - 1 - r)
                y0 = y1 = yc = in_uiHeight - 1 - r;
                x0 = in_uiWidth - 1 - 2 * k;
                x1 = x0 - 1;
                xc = x1;
            }
            ASSERT_EQ(in_oTurned.Luma(2 * k, r), in_oSource.Luma(x0, y0)) << "row " << r << " pair " << k;
            ASSERT_EQ(in_oTurned.Luma(2 * k + 1, r), in_oSource.Luma(x1, y1)) << "row " << r << " pair " << k;
            ASSERT_EQ(in_oTurned.Cb(2 * k, r), in_oSource.Cb(xc, yc)) << "row " << r << " pair " << k;
            ASSERT_EQ(in_oTurned.Cr(2 * k, r), in_oSource.Cr(xc, yc)) << "row " << r << " pair " << k;
        }
    }
}

#endif  // QXBASE_TESTS_BUFFERENGINE_TURNMODEL_H
