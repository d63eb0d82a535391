#include "tools/common/qxtoolformats.h"

#include "tools/common/qxtoolerror.h"

#include <qxbase/qxchostsurface.h>

#include <algorithm>
#include <cctype>
#include <cerrno>
#include <cmath>
#include <cstdlib>
#include <cstring>

namespace NQxTool {

namespace {

std::string Lower(const std::string& in_str)
{
    std::string str = in_str;
    for (char& c : str) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    return str;
}

struct SAlias {
    const char* pszAlias;
    const char* pszName;
};
// Names people bring from other tools for the same layouts.
const SAlias kasAliases[] = {
    {"yuyv", "yuyv8"}, {"yuy2", "yuyv8"}, {"yuyv422", "yuyv8"}, {"uyvy", "2vuy"}, {"2vuy8", "2vuy"},
    {"bgra8", "argb"}, {"rgb8", "rgb"},   {"rgb36", "rgb12"},   {"ayuv8", "ayuv"}, {"a8", "alpha"},
};

struct SNamedSize {
    const char* pszName;
    uint32_t uiWidth;
    uint32_t uiHeight;
};
const SNamedSize kasSizes[] = {
    {"sd", 720, 576},       {"576", 720, 576},     {"576i", 720, 576},     {"486", 720, 486},
    {"486i", 720, 486},     {"720p", 1280, 720},   {"hd", 1920, 1080},     {"1080p", 1920, 1080},
    {"1080i", 1920, 1080},  {"uhd", 3840, 2160},   {"2160p", 3840, 2160},  {"4k", 3840, 2160},
    {"dci4k", 4096, 2160},  {"8k", 7680, 4320},
};

struct SNamedColorimetry {
    const char* pszName;
    EQxColorimetry eColorimetry;
};
const SNamedColorimetry kasColorimetries[] = {
    {"601", keQxColorimetryITUR_BT_601},          {"709", keQxColorimetryITUR_BT_709},
    {"2020", keQxColorimetryITUR_BT_2020},        {"2100pq", keQxColorimetryITUR_BT_2100_PQ},
    {"2100hlg", keQxColorimetryITUR_BT_2100_HLG}, {"2020linear", keQxColorimetryITUR_BT_2020_Linear},
    {"unknown", keQxColorimetryUnknown},
};

struct SNamedColor {
    const char* pszName;
    EQxColor eColor;
};
const SNamedColor kasColors[] = {
    {"black", keQxColorBlack}, {"zero-black", keQxColorZeroLevelBlack}, {"white", keQxColorWhite},
    {"red", keQxColorRed},     {"green", keQxColorGreen},               {"blue", keQxColorBlue},
};

template <class T>
std::string NamesOf(const T& in_rTable)
{
    std::string str;
    for (const auto& r : in_rTable) str += (str.empty() ? "" : ", ") + std::string(r.pszName);
    return str;
}

// A whole decimal number, nothing around it.
bool ParseUnsigned(const std::string& in_strText, uint64_t* out_puValue)
{
    if (in_strText.empty() || in_strText.size() > 12) return false;
    uint64_t u = 0;
    for (char c : in_strText) {
        if (c < '0' || c > '9') return false;
        u = u * 10 + uint64_t(c - '0');
    }
    *out_puValue = u;
    return true;
}

}  // namespace

const std::vector<SQxToolFormat>& ToolFormats()
{
    static const std::vector<SQxToolFormat> s_vecFormats = {
        {"yuyv8", keQxSurfaceFormatYUYV422, 8, false, false, "4:2:2 8-bit: Y0 Cb Y1 Cr"},
        {"yuyv10", keQxSurfaceFormatYUYV422, 10, false, false,
         "4:2:2 10-bit: 16 pixels in 40 bytes (high bytes, then low bit pairs)"},
        {"2vuy", keQxSurfaceFormat2VUY, 8, false, false, "4:2:2 8-bit: Cb Y0 Cr Y1"},
        {"v210", keQxSurfaceFormatV210, 10, false, false, "4:2:2 10-bit: 6 pixels in 4 little-endian words"},
        {"yuayva8", keQxSurfaceFormatYUAYVA4224, 8, false, true, "4:2:2:4 8-bit: 8 pixels of YUYV, then 8 keys"},
        {"yuayva8-shaped", keQxSurfaceFormatYUAYVA4224, 8, true, true, "yuayva8, colours premultiplied by the key"},
        {"yuayva10", keQxSurfaceFormatYUAYVA4224, 10, false, true, "4:2:2:4 10-bit: a 32-bit word a pixel (Y C A)"},
        {"yuayva10-shaped", keQxSurfaceFormatYUAYVA4224, 10, true, true,
         "yuayva10, colours premultiplied by the key"},
        {"ayuv", keQxSurfaceFormatAYUV4444, 8, true, true, "4:4:4:4 8-bit premultiplied: A Y Cb Cr (source only)"},
        {"argb", keQxSurfaceFormatARGBGraphic, 8, false, true, "RGB 8-bit full range with key: B G R A"},
        {"argb-shaped", keQxSurfaceFormatARGBGraphic, 8, true, true, "argb, colours premultiplied by the key"},
        {"argb-video", keQxSurfaceFormatARGBVideo, 8, false, true, "argb at video levels (16-235)"},
        {"argb-video-shaped", keQxSurfaceFormatARGBVideo, 8, true, true, "argb-video, premultiplied"},
        {"bgra", keQxSurfaceFormatBGRAGraphic, 8, false, true, "RGB 8-bit full range with key: A R G B"},
        {"bgra-shaped", keQxSurfaceFormatBGRAGraphic, 8, true, true, "bgra, colours premultiplied by the key"},
        {"rgb", keQxSurfaceFormatRGBGraphic, 8, false, false, "RGB 8-bit full range: B G R (source only)"},
        {"rgb12", keQxSurfaceFormatRGBGraphic, 12, false, false, "RGB 12-bit full range: 8 pixels in 36 bytes"},
        {"a2r10g10b10", keQxSurfaceFormatA2R10G10B10Video, 10, false, true,
         "RGB 10-bit video levels, 2-bit key: A R G B from bit 31 down"},
        {"a2b10g10r10", keQxSurfaceFormatA2B10G10R10Graphic, 10, false, true,
         "RGB 10-bit full range, 2-bit key: A B G R from bit 31 down"},
        {"abgr16", keQxSurfaceFormatABGR16, 16, false, true, "RGB 16-bit full range with key: A B G R words"},
        {"alpha", keQxSurfaceFormatAlpha, 8, false, true, "a key byte a pixel"},
        {"alpha-luma", keQxSurfaceFormatAlphaLuminance, 8, false, true, "a key byte, then a luma byte"},
    };
    return s_vecFormats;
}

const SQxToolFormat& ParseFormat(const std::string& in_strName)
{
    std::string strName = Lower(in_strName);
    for (const SAlias& r : kasAliases)
        if (strName == r.pszAlias) strName = r.pszName;
    for (const SQxToolFormat& r : ToolFormats())
        if (strName == r.pszName) return r;
    throw UsageError("unknown pixel format \"" + in_strName + "\"; the formats are " + NamesOf(ToolFormats()) +
                     " (qxconvert formats describes them)");
}

const SQxToolFormat* FindFormat(EQxSurfaceFormat in_eFormat, uint32_t in_uiBitCount, bool in_bShaped)
{
    for (const SQxToolFormat& r : ToolFormats())
        if (r.eFormat == in_eFormat && r.uiBitCount == in_uiBitCount && r.bShaped == in_bShaped) return &r;
    return nullptr;
}

uint32_t PackedLineBytes(const SQxToolFormat& in_rsFormat, uint32_t in_uiWidth)
{
    return CQxcHostSurface::GetLineBytes(in_rsFormat.eFormat, in_rsFormat.uiBitCount, in_uiWidth);
}

uint32_t WidthMultiple(const SQxToolFormat& in_rsFormat)
{
    // The engine converts 8-bit YUYV in 4-pixel units and the 10-bit 4:2:2
    // layouts in 16-pixel blocks.
    if (in_rsFormat.eFormat == keQxSurfaceFormatYUYV422) return in_rsFormat.uiBitCount == 8 ? 4 : 16;
    if (in_rsFormat.eFormat == keQxSurfaceFormatV210) return 16;
    return 1;
}

SQxToolSize ParseSize(const std::string& in_strText)
{
    const std::string strText = Lower(in_strText);
    for (const SNamedSize& r : kasSizes)
        if (strText == r.pszName) return {r.uiWidth, r.uiHeight};
    const size_t uX = strText.find('x');
    uint64_t uWidth = 0, uHeight = 0;
    if (uX == std::string::npos || !ParseUnsigned(strText.substr(0, uX), &uWidth) ||
        !ParseUnsigned(strText.substr(uX + 1), &uHeight))
        throw UsageError("bad picture size \"" + in_strText + "\"; give WIDTHxHEIGHT (1920x1080) or one of " +
                         NamesOf(kasSizes));
    if (uWidth == 0 || uHeight == 0)
        throw UsageError("bad picture size \"" + in_strText + "\": a picture needs at least one pixel and one line");
    if (uWidth > kuiMaxPictureSide || uHeight > kuiMaxPictureSide)
        throw UsageError("picture size \"" + in_strText + "\" is too large; each side may be at most " +
                         std::to_string(kuiMaxPictureSide));
    return {uint32_t(uWidth), uint32_t(uHeight)};
}

EQxColorimetry ParseColorimetry(const std::string& in_strText)
{
    std::string strText = Lower(in_strText);
    if (strText.compare(0, 3, "bt.") == 0)
        strText.erase(0, 3);
    else if (strText.compare(0, 2, "bt") == 0)
        strText.erase(0, 2);
    strText.erase(std::remove(strText.begin(), strText.end(), '-'), strText.end());
    for (const SNamedColorimetry& r : kasColorimetries)
        if (strText == r.pszName) return r.eColorimetry;
    throw UsageError("unknown colorimetry \"" + in_strText + "\"; use one of " + NamesOf(kasColorimetries));
}

std::string ColorimetryName(EQxColorimetry in_eColorimetry)
{
    for (const SNamedColorimetry& r : kasColorimetries)
        if (r.eColorimetry == in_eColorimetry) return r.pszName;
    return "none";
}

EQxColor ParseColor(const std::string& in_strText)
{
    const std::string strText = Lower(in_strText);
    for (const SNamedColor& r : kasColors)
        if (strText == r.pszName) return r.eColor;
    throw UsageError("unknown colour \"" + in_strText + "\"; use one of " + NamesOf(kasColors));
}

EQxRotationAngle ParseAngle(const std::string& in_strText)
{
    if (in_strText == "90") return keQxRotationAngle90;
    if (in_strText == "180") return keQxRotationAngle180;
    if (in_strText == "270" || in_strText == "-90") return keQxRotationAngle270;
    throw UsageError("bad rotation angle \"" + in_strText + "\"; use 90, 180 or 270 (degrees clockwise)");
}

EQxFilterMode ParseFilter(const std::string& in_strText)
{
    const std::string strText = Lower(in_strText);
    if (strText == "nearest") return keQxFilterModeNearest;
    if (strText == "filtered") return keQxFilterModeFiltered;
    throw UsageError("unknown chroma filter \"" + in_strText + "\"; use nearest or filtered");
}

uint32_t ParseCount(const std::string& in_strText, const char* in_pszWhat, uint32_t in_uiMin, uint32_t in_uiMax)
{
    uint64_t u = 0;
    if (!ParseUnsigned(in_strText, &u) || u < in_uiMin || u > in_uiMax)
        throw UsageError(std::string("bad ") + in_pszWhat + " \"" + in_strText + "\"; give a whole number from " +
                         std::to_string(in_uiMin) + " to " + std::to_string(in_uiMax));
    return uint32_t(u);
}

float ParseUnit(const std::string& in_strText, const char* in_pszWhat)
{
    char* pszEnd = nullptr;
    errno = 0;
    const double d = std::strtod(in_strText.c_str(), &pszEnd);
    if (in_strText.empty() || *pszEnd != '\0' || errno != 0 || !(d >= 0.0 && d <= 1.0))
        throw UsageError(std::string("bad ") + in_pszWhat + " \"" + in_strText + "\"; give a number from 0 to 1");
    return float(d);
}

std::vector<std::string> SplitList(const std::string& in_strText, const char* in_pszWhat)
{
    std::vector<std::string> vec;
    size_t uStart = 0;
    for (;;) {
        const size_t uComma = in_strText.find(',', uStart);
        const std::string strPart = in_strText.substr(uStart, uComma - uStart);
        if (strPart.empty())
            throw UsageError(std::string("empty entry in the ") + in_pszWhat + " list \"" + in_strText + "\"");
        vec.push_back(strPart);
        if (uComma == std::string::npos) return vec;
        uStart = uComma + 1;
    }
}

SQxSurfaceDescription SurfaceDescription(const SQxToolFormat& in_rsFormat, uint32_t in_uiWidth, uint32_t in_uiHeight,
                                         EQxColorimetry in_eColorimetry, int32_t in_iPitch)
{
    SQxSurfaceDescription s = CQxcHostSurface::MakeDescription(in_rsFormat.eFormat, in_rsFormat.uiBitCount, in_uiWidth,
                                                               in_uiHeight, keQxPolarityProgressive, in_eColorimetry);
    s.bIsAlphaShaped = in_rsFormat.bShaped;
    s.lPitch = in_iPitch;
    return s;
}

}  // namespace NQxTool
