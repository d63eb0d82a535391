// Reads a PNG file back with libpng, for the tests of the tools' output.
#ifndef QXBASE_TESTS_TOOLS_PNGREAD_H
#define QXBASE_TESTS_TOOLS_PNGREAD_H

#include "tools/common/qxtoolpng.h"

#include <png.h>

#include <cstdio>
#include <string>

namespace NQxTest {

// False when the file is missing or not a PNG; 16-bit samples stay
// big-endian, as in SQxToolImage.
inline bool ReadPng(const std::string& in_strPath, NQxTool::SQxToolImage* out_psImage)
{
    FILE* pFile = std::fopen(in_strPath.c_str(), "rb");
    if (!pFile) return false;
    png_structp pPng = png_create_read_struct(PNG_LIBPNG_VER_STRING, nullptr, nullptr, nullptr);
    png_infop pInfo = pPng ? png_create_info_struct(pPng) : nullptr;
    bool bOk = false;
    if (pInfo && !setjmp(png_jmpbuf(pPng))) {
        png_init_io(pPng, pFile);
        png_read_info(pPng, pInfo);
        const uint32_t uiChannels = png_get_channels(pPng, pInfo);
        const uint32_t uiBits = png_get_bit_depth(pPng, pInfo);
        out_psImage->Allocate(png_get_image_width(pPng, pInfo), png_get_image_height(pPng, pInfo), uiChannels,
                              uiBits);
        for (uint32_t y = 0; y < out_psImage->uiHeight; ++y) png_read_row(pPng, out_psImage->Row(y), nullptr);
        png_read_end(pPng, nullptr);
        bOk = true;
    }
    png_destroy_read_struct(&pPng, pInfo ? &pInfo : nullptr, nullptr);
    std::fclose(pFile);
    return bOk;
}

}  // namespace NQxTest

#endif  // QXBASE_TESTS_TOOLS_PNGREAD_H
