// Pictures as PNG files, so that a person can look at what the engine made.
#ifndef QXBASE_TOOLS_QXTOOLPNG_H
#define QXBASE_TOOLS_QXTOOLPNG_H

#include "tools/common/qxtoolformats.h"

#include <cstdint>
#include <string>
#include <vector>

namespace NQxTool {

// Rows of samples as PNG stores them: 1 (grey), 2 (grey, alpha), 3 (R, G,
// B) or 4 (R, G, B, A) channels of 8 or 16 bits, 16-bit samples big-endian.
struct SQxToolImage {
    uint32_t uiWidth = 0;
    uint32_t uiHeight = 0;
    uint32_t uiChannels = 0;
    uint32_t uiBits = 0;
    std::vector<uint8_t> vecPixels;

    size_t RowBytes() const { return size_t(uiWidth) * uiChannels * (uiBits / 8); }
    void Allocate(uint32_t in_uiWidth, uint32_t in_uiHeight, uint32_t in_uiChannels, uint32_t in_uiBits);
    uint8_t* Row(uint32_t in_uiY) { return vecPixels.data() + in_uiY * RowBytes(); }
};

// Writes the image ("-": to standard output). Throws a tool error naming
// the file and the reason.
void WritePng(const std::string& in_strPath, const SQxToolImage& in_rsImage);

// Throws a tool error now when a file of this name cannot be created, rather
// than after the work; leaves nothing behind ("-" is always fine).
void CheckWritable(const std::string& in_strPath);

// Whether a picture of the format can become an image without conversion:
// 8-bit ARGB Graphic, 16-bit ABGR, Alpha and Alpha Luminance.
bool IsImageFormat(const SQxToolFormat& in_rsFormat);

// The image of a picture of an image format. A key that is opaque
// everywhere is left out (RGB instead of RGBA); a key-only picture becomes
// grey, Alpha Luminance grey with alpha.
SQxToolImage ImageFromPicture(const SQxToolFormat& in_rsFormat, const uint8_t* in_pucBuffer, int32_t in_iPitch,
                              uint32_t in_uiWidth, uint32_t in_uiHeight);

// Turns "frame-%04d.png" and a number into "frame-0007.png". A name
// without a number field is returned as it is. Throws a usage error for a
// name with more than one field or with a field other than %d, %Nd, %0Nd.
std::string NumberedName(const std::string& in_strPattern, uint32_t in_uiNumber);
bool HasNumberField(const std::string& in_strPattern);

}  // namespace NQxTool

#endif  // QXBASE_TOOLS_QXTOOLPNG_H
