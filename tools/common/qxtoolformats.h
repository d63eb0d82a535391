// The vocabulary of the tools' command lines: pixel formats by short name,
// picture sizes, colorimetries, colours, angles and filters, each parsed
// with an error message that says what was expected.
#ifndef QXBASE_TOOLS_QXTOOLFORMATS_H
#define QXBASE_TOOLS_QXTOOLFORMATS_H

#include <qxbase/qxdescriptions.h>
#include <qxbase/qxenums.h>

#include <cstdint>
#include <string>
#include <vector>

namespace NQxTool {

// A pixel format as the tools name it: the SDK format, its component bit
// count and whether the colours are premultiplied by the key.
struct SQxToolFormat {
    const char* pszName;  // command-line name, lower case
    EQxSurfaceFormat eFormat;
    uint32_t uiBitCount;
    bool bShaped;
    bool bHasKey;         // the pixels carry a key (alpha)
    const char* pszLayout;  // memory layout, for the format list
};

// Every format the tools know, in the order of the format list.
const std::vector<SQxToolFormat>& ToolFormats();

// The format of a name (case-insensitive; "yuy2", "yuyv", "uyvy" ... are
// accepted as other names). Throws a usage error listing the names.
const SQxToolFormat& ParseFormat(const std::string& in_strName);
// The tool format of a description, or null.
const SQxToolFormat* FindFormat(EQxSurfaceFormat in_eFormat, uint32_t in_uiBitCount, bool in_bShaped);

// Bytes of one line of in_uiWidth pixels without padding; 0 where the format
// cannot lay out that width.
uint32_t PackedLineBytes(const SQxToolFormat& in_rsFormat, uint32_t in_uiWidth);

// The multiple the engine needs the width of a picture of this format to be
// (1 when any width will do).
uint32_t WidthMultiple(const SQxToolFormat& in_rsFormat);

struct SQxToolSize {
    uint32_t uiWidth;
    uint32_t uiHeight;
};

// The largest picture side the tools accept.
constexpr uint32_t kuiMaxPictureSide = 16384;

// "1920x1080", or a name: "sd"/"576" (720x576), "486" (720x486), "720p",
// "hd"/"1080p"/"1080i", "uhd"/"2160p"/"4k" (3840x2160), "dci4k" (4096x2160),
// "8k" (7680x4320). Throws a usage error for anything else, for a zero side
// and for sides above kuiMaxPictureSide.
SQxToolSize ParseSize(const std::string& in_strText);

// "601", "709", "2020", "2100pq", "2100hlg", "2020linear", "unknown", with
// or without a "bt" or "bt." in front.
EQxColorimetry ParseColorimetry(const std::string& in_strText);
// The short name of a colorimetry ("709").
std::string ColorimetryName(EQxColorimetry in_eColorimetry);

// "black", "zero-black", "white", "red", "green", "blue".
EQxColor ParseColor(const std::string& in_strText);

// "90", "180", "270".
EQxRotationAngle ParseAngle(const std::string& in_strText);

// "nearest", "filtered".
EQxFilterMode ParseFilter(const std::string& in_strText);

// A whole number in [in_uiMin, in_uiMax]; in_pszWhat names it in the error.
uint32_t ParseCount(const std::string& in_strText, const char* in_pszWhat, uint32_t in_uiMin, uint32_t in_uiMax);

// A number in [0, 1], for an alpha.
float ParseUnit(const std::string& in_strText, const char* in_pszWhat);

// Splits "a,b,c" into its parts (empty parts are a usage error).
std::vector<std::string> SplitList(const std::string& in_strText, const char* in_pszWhat);

// A description of a picture of the format and size, with host conversion
// allowed; the pitch (0: packed) and buffer size are left for the surface.
SQxSurfaceDescription SurfaceDescription(const SQxToolFormat& in_rsFormat, uint32_t in_uiWidth, uint32_t in_uiHeight,
                                         EQxColorimetry in_eColorimetry, int32_t in_iPitch = 0);

}  // namespace NQxTool

#endif  // QXBASE_TOOLS_QXTOOLFORMATS_H
