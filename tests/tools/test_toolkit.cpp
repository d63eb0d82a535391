// The pieces of the picture tools that can go wrong on their own: the
// command-line vocabulary, the test patterns (against published bar codes
// and FFmpeg's v210 decoder), PNG output and raw frame files.
#include "tools/common/qxtoolchart.h"
#include "tools/common/qxtoolerror.h"
#include "tools/common/qxtoolformats.h"
#include "tools/common/qxtoolpattern.h"
#include "tools/common/qxtoolpng.h"
#include "tools/common/qxtoolrawio.h"

#include "surfaces/ffmpegv210.h"
#include "support/qxtest_support.h"
#include "tools/pngread.h"

#include <gtest/gtest.h>

#include <fcntl.h>
#include <sys/resource.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <csignal>

#include <cstdio>
#include <fstream>
#include <functional>
#include <string>
#include <vector>

using namespace NQxTool;
using NQxTest::CTempDir;
using NQxTest::WriteFile;

namespace {

// Runs in_fn, which must throw a tool error, and returns the error.
CQxToolError Thrown(const std::function<void()>& in_fn)
{
    try {
        in_fn();
    } catch (const CQxToolError& e) {
        return e;
    }
    ADD_FAILURE() << "no error was thrown";
    return CQxToolError("");
}

// Checks that in_fn throws a tool error with the status, whose message holds
// every piece.
void ExpectError(const std::function<void()>& in_fn, int in_iStatus, const std::vector<std::string>& in_vecPieces)
{
    const CQxToolError e = Thrown(in_fn);
    EXPECT_EQ(e.GetStatus(), in_iStatus) << e.what();
    for (const std::string& str : in_vecPieces) EXPECT_NE(std::string(e.what()).find(str), std::string::npos) << e.what();
}

// Writes beyond in_uiBytes fail for as long as this lives ("File too
// large"), as they would on a full disk.
class CFileSizeLimit {
public:
    explicit CFileSizeLimit(rlim_t in_uiBytes)
    {
        getrlimit(RLIMIT_FSIZE, &m_sSaved);
        m_pfnSaved = std::signal(SIGXFSZ, SIG_IGN);
        struct rlimit s = m_sSaved;
        s.rlim_cur = in_uiBytes;
        setrlimit(RLIMIT_FSIZE, &s);
    }
    ~CFileSizeLimit()
    {
        setrlimit(RLIMIT_FSIZE, &m_sSaved);
        std::signal(SIGXFSZ, m_pfnSaved);
    }

private:
    struct rlimit m_sSaved;
    void (*m_pfnSaved)(int);
};

// --- Command-line vocabulary ------------------------------------------------

TEST(ToolVocabulary, FormatsByNameAndAlias)
{
    struct SCase {
        const char* pszName;
        EQxSurfaceFormat eFormat;
        uint32_t uiBits;
        bool bShaped;
    } const asCases[] = {
        {"yuyv8", keQxSurfaceFormatYUYV422, 8, false},   {"YUY2", keQxSurfaceFormatYUYV422, 8, false},
        {"yuyv10", keQxSurfaceFormatYUYV422, 10, false}, {"uyvy", keQxSurfaceFormat2VUY, 8, false},
        {"V210", keQxSurfaceFormatV210, 10, false},      {"yuayva10-shaped", keQxSurfaceFormatYUAYVA4224, 10, true},
        {"argb", keQxSurfaceFormatARGBGraphic, 8, false}, {"bgra", keQxSurfaceFormatBGRAGraphic, 8, false},
        {"rgb12", keQxSurfaceFormatRGBGraphic, 12, false}, {"abgr16", keQxSurfaceFormatABGR16, 16, false},
    };
    for (const SCase& r : asCases) {
        const SQxToolFormat& rs = ParseFormat(r.pszName);
        EXPECT_EQ(rs.eFormat, r.eFormat) << r.pszName;
        EXPECT_EQ(rs.uiBitCount, r.uiBits) << r.pszName;
        EXPECT_EQ(rs.bShaped, r.bShaped) << r.pszName;
        EXPECT_EQ(FindFormat(r.eFormat, r.uiBits, r.bShaped), &rs) << r.pszName;
    }
    // Every listed format has a layout the surfaces know, and its own name.
    for (const SQxToolFormat& r : ToolFormats()) {
        EXPECT_GT(PackedLineBytes(r, 48), 0u) << r.pszName;
        EXPECT_EQ(&ParseFormat(r.pszName), &r);
    }
    // The error lists the formats.
    ExpectError([] { ParseFormat("nv12"); }, keExitUsage, {"\"nv12\"", "v210"});
}

TEST(ToolVocabulary, SizesNamedValuesNumbersAndTheirErrors)
{
    EXPECT_EQ(ParseSize("1920x1080").uiWidth, 1920u);
    EXPECT_EQ(ParseSize("1920x1080").uiHeight, 1080u);
    EXPECT_EQ(ParseSize("UHD").uiWidth, 3840u);
    EXPECT_EQ(ParseSize("2160p").uiHeight, 2160u);
    EXPECT_EQ(ParseSize("720x486").uiHeight, 486u);
    EXPECT_EQ(ParseSize("16384x1").uiWidth, 16384u);
    EXPECT_EQ(ParseColorimetry("709"), keQxColorimetryITUR_BT_709);
    EXPECT_EQ(ParseColorimetry("BT.601"), keQxColorimetryITUR_BT_601);
    EXPECT_EQ(ParseColorimetry("bt2100-pq"), keQxColorimetryITUR_BT_2100_PQ);
    EXPECT_EQ(ColorimetryName(keQxColorimetryITUR_BT_2020), "2020");
    EXPECT_EQ(ParseColor("Zero-Black"), keQxColorZeroLevelBlack);
    EXPECT_EQ(ParseAngle("270"), keQxRotationAngle270);
    EXPECT_EQ(ParseFilter("filtered"), keQxFilterModeFiltered);
    EXPECT_EQ(ParseCount("25", "frame count", 1, 100), 25u);
    EXPECT_FLOAT_EQ(ParseUnit("0.25", "alpha"), 0.25f);
    EXPECT_EQ(SplitList("v210,argb", "format"), (std::vector<std::string>{"v210", "argb"}));

    // Usage errors that say what was wrong.
    const std::pair<std::function<void()>, const char*> asBad[] = {
        {[] { ParseSize("1920"); }, "WIDTHxHEIGHT"},
        {[] { ParseSize("1920x"); }, "WIDTHxHEIGHT"},
        {[] { ParseSize("x1080"); }, "WIDTHxHEIGHT"},
        {[] { ParseSize("-4x4"); }, "WIDTHxHEIGHT"},
        {[] { ParseSize("19 20x1080"); }, "WIDTHxHEIGHT"},
        {[] { ParseSize("99999999999999x1"); }, "WIDTHxHEIGHT"},
        {[] { ParseSize("0x1080"); }, "at least one pixel"},
        {[] { ParseSize("1920x0"); }, "at least one pixel"},
        {[] { ParseSize("16385x16"); }, "too large"},
        {[] { ParseColorimetry("2021"); }, "unknown colorimetry \"2021\""},
        {[] { ParseColor("purple"); }, "unknown colour \"purple\""},
        {[] { ParseAngle("45"); }, "bad rotation angle \"45\""},
        {[] { ParseFilter("bicubic"); }, "unknown chroma filter \"bicubic\""},
        {[] { ParseCount("0", "count", 1, 9); }, "bad count \"0\""},
        {[] { ParseCount("10", "count", 1, 9); }, "bad count \"10\""},
        {[] { ParseCount("3a", "count", 1, 9); }, "bad count \"3a\""},
        {[] { ParseUnit("1.5", "alpha"); }, "bad alpha \"1.5\""},
        {[] { ParseUnit("0.5x", "alpha"); }, "bad alpha \"0.5x\""},
        {[] { SplitList("v210,,argb", "format"); }, "empty entry in the format list"},
        {[] { SplitList("", "format"); }, "empty entry in the format list"},
        {[] { ParsePattern("checkerboard"); }, "unknown test pattern \"checkerboard\""},
    };
    for (const auto& [fn, pszSaid] : asBad) ExpectError(fn, keExitUsage, {pszSaid});
}

// --- Test patterns ----------------------------------------------------------

// Y, Cb and Cr in the middle of each of the seven bars, line 10.
std::vector<std::array<uint16_t, 3>> BarCodes(EQxColorimetry in_eColorimetry, uint32_t in_uiBits, uint32_t in_uiWidth)
{
    const CQxToolPattern oBars(keQxToolPatternBars, in_uiWidth, 100, in_eColorimetry);
    SQxToolYuvLine sLine;
    oBars.GetLine(0, 10, in_uiBits, in_uiWidth, &sLine);
    std::vector<std::array<uint16_t, 3>> vec;
    for (int i = 0; i < 7; ++i) {
        const uint32_t x = (uint32_t(in_uiWidth * (2 * i + 1) / 14)) & ~1u;
        vec.push_back({sLine.vecY[x], sLine.vecCb[x / 2], sLine.vecCr[x / 2]});
    }
    return vec;
}

TEST(ToolPattern, SeventyFivePercentBarsHaveThePublishedCodes)
{
    // 10-bit BT.709 75% bars and 8-bit BT.601 75% bars as the broadcast
    // references tabulate them: white, yellow, cyan, green, magenta, red,
    // blue.
    EXPECT_EQ(BarCodes(keQxColorimetryITUR_BT_709, 10, 1920),
              (std::vector<std::array<uint16_t, 3>>{{721, 512, 512}, {674, 176, 543}, {581, 589, 176}, {534, 253, 207},
                                                    {251, 771, 817}, {204, 435, 848}, {111, 848, 481}}));
    EXPECT_EQ(BarCodes(keQxColorimetryITUR_BT_601, 8, 720),
              (std::vector<std::array<uint16_t, 3>>{{180, 128, 128}, {162, 44, 142}, {131, 156, 44}, {112, 72, 58},
                                                    {84, 184, 198}, {65, 100, 212}, {35, 212, 114}}));
}

TEST(ToolPattern, BarsBottomRowHasWhiteAndPlugeInsideTheLegalCodes)
{
    const uint32_t uiWidth = 1920;
    const CQxToolPattern oBars(keQxToolPatternBars, uiWidth, 1080, keQxColorimetryITUR_BT_709);
    SQxToolYuvLine sLine;
    oBars.GetLine(0, 1070, 10, uiWidth, &sLine);
    const uint32_t uiBar = uiWidth / 7;
    EXPECT_EQ(sLine.vecY[uiBar * 2], 940) << "100% white patch";
    EXPECT_EQ(sLine.vecY[uiBar * 5 + uiBar / 6], 29) << "-4% PLUGE bar";
    EXPECT_EQ(sLine.vecY[uiBar * 5 + uiBar / 2], 64) << "black PLUGE bar";
    EXPECT_EQ(sLine.vecY[uiBar * 5 + uiBar * 5 / 6], 99) << "+4% PLUGE bar";
    EXPECT_EQ(sLine.vecY[uiBar * 6 + uiBar / 2], 64);
    // The reversed strip under the white bar is blue.
    oBars.GetLine(0, 760, 10, uiWidth, &sLine);
    EXPECT_EQ(sLine.vecY[uiBar / 2], 111);
    EXPECT_EQ(sLine.vecCb[uiBar / 4], 848);
}

TEST(ToolPattern, RampAndZonePlate)
{
    SQxToolYuvLine sLine;
    const CQxToolPattern oRamp(keQxToolPatternRamp, 1000, 100, keQxColorimetryITUR_BT_709);
    oRamp.GetLine(0, 0, 10, 1000, &sLine);
    EXPECT_EQ(sLine.vecY.front(), 64);
    EXPECT_EQ(sLine.vecY.back(), 940);
    for (size_t x = 1; x < sLine.vecY.size(); ++x) ASSERT_GE(sLine.vecY[x], sLine.vecY[x - 1]) << x;
    for (uint16_t ui : sLine.vecCb) ASSERT_EQ(ui, 512);
    oRamp.GetLine(0, 99, 8, 1000, &sLine);
    EXPECT_EQ(sLine.vecY[0], 16);
    EXPECT_EQ(sLine.vecY[500], 16 + 219 / 2 + 1) << "the 50% step";
    EXPECT_EQ(sLine.vecY[999], 235);

    // Bright at the centre on frame 0, dark there half a turn later; fine
    // detail, almost alternating pixels, at the edges.
    const CQxToolPattern oZone(keQxToolPatternZonePlate, 1920, 1080, keQxColorimetryITUR_BT_709);
    oZone.GetLine(0, 540, 10, 1920, &sLine);
    EXPECT_GE(sLine.vecY[960], 930);
    EXPECT_LT(std::abs(sLine.vecY[961] - sLine.vecY[960]), 4);
    // From the centre to the edge the phase turns by pi * 960^2 / 1920:
    // 480 half cycles, each one crossing of mid grey.
    int iCrossings = 0;
    for (size_t x = 961; x < 1920; ++x) iCrossings += (sLine.vecY[x] > 502) != (sLine.vecY[x - 1] > 502);
    EXPECT_NEAR(iCrossings, 480, 10);
    oZone.GetLine(4, 540, 10, 1920, &sLine);
    EXPECT_LE(sLine.vecY[960], 74);

    ExpectError([] { CQxToolPattern(keQxToolPatternBars, 64, 64, keQxColorimetryUnknown); }, keExitUsage,
                {"needs a colorimetry with a matrix"});
}

#ifdef QXT_HAVE_LIBAVCODEC
TEST(ToolPattern, V210MatchesFfmpegsDecoder)
{
    // Widths that end inside a six-pixel group and inside a 48-pixel run.
    for (const uint32_t uiWidth : {1920u, 1286u, 64u}) {
        const uint32_t uiHeight = 40;
        NQxTest::CFfmpegV210Decoder oDecoder{int(uiWidth), int(uiHeight)};
        ASSERT_TRUE(oDecoder.IsOpen());
        const int32_t iPitch = int32_t(NQxTest::CFfmpegV210Decoder::Pitch(int(uiWidth)));
        std::vector<uint8_t> vec(size_t(iPitch) * uiHeight, 0);
        const CQxToolPattern oZone(keQxToolPatternZonePlate, uiWidth, uiHeight, keQxColorimetryITUR_BT_709);
        const CQxToolPattern oBars(keQxToolPatternBars, uiWidth, uiHeight, keQxColorimetryITUR_BT_709);
        for (const CQxToolPattern* p : {&oZone, &oBars}) {
            p->Render(1, ParseFormat("v210"), vec.data(), iPitch);
            const AVFrame* pFrame = oDecoder.Decode(vec.data());
            ASSERT_NE(pFrame, nullptr);
            SQxToolYuvLine sLine;
            for (uint32_t y = 0; y < uiHeight; y += 13) {
                p->GetLine(1, y, 10, uiWidth, &sLine);
                const uint16_t* puiY = reinterpret_cast<const uint16_t*>(pFrame->data[0] + y * pFrame->linesize[0]);
                const uint16_t* puiCb = reinterpret_cast<const uint16_t*>(pFrame->data[1] + y * pFrame->linesize[1]);
                const uint16_t* puiCr = reinterpret_cast<const uint16_t*>(pFrame->data[2] + y * pFrame->linesize[2]);
                for (uint32_t x = 0; x < uiWidth; ++x) ASSERT_EQ(puiY[x], sLine.vecY[x]) << uiWidth << " " << x;
                for (uint32_t x = 0; x < uiWidth / 2; ++x) {
                    ASSERT_EQ(puiCb[x], sLine.vecCb[x]) << uiWidth << " " << x;
                    ASSERT_EQ(puiCr[x], sLine.vecCr[x]) << uiWidth << " " << x;
                }
            }
        }
    }
}
#endif

// Reads component k (YUYV order) of a 10-bit YUYV line, as its layout is
// documented: the high eight bits, then the low bit pairs four to a byte.
uint16_t Yuyv10Component(const uint8_t* in_puc, uint32_t in_uiK)
{
    const uint8_t* pucBlock = in_puc + 40 * (in_uiK / 32);
    const uint32_t k = in_uiK % 32;
    return uint16_t(pucBlock[k] << 2 | ((pucBlock[32 + k / 4] >> (2 * (k % 4))) & 3));
}

TEST(ToolPattern, PackedLayoutsCarryTheCodesAndStayInsideTheirLines)
{
    // Odd widths: the packing pads the last group but never writes past
    // the line; guard bytes fill the rest of each pitch.
    for (const uint32_t uiWidth : {6u, 38u, 21u}) {
        const uint32_t uiHeight = 5;
        const CQxToolPattern oZone(keQxToolPatternZonePlate, uiWidth, uiHeight, keQxColorimetryITUR_BT_601);
        for (const char* pszFormat : {"yuyv8", "2vuy", "yuyv10", "v210"}) {
            const SQxToolFormat& rs = ParseFormat(pszFormat);
            const uint32_t uiLine = PackedLineBytes(rs, uiWidth);
            const int32_t iPitch = int32_t(uiLine + 24);
            std::vector<uint8_t> vec(size_t(iPitch) * uiHeight, 0xA5);
            oZone.Render(2, rs, vec.data(), iPitch);
            SQxToolYuvLine sLine;
            for (uint32_t y = 0; y < uiHeight; ++y) {
                const uint8_t* puc = vec.data() + y * size_t(iPitch);
                for (uint32_t b = uiLine; b < uint32_t(iPitch); ++b)
                    ASSERT_EQ(puc[b], 0xA5) << pszFormat << " width " << uiWidth << " wrote past its line";
                oZone.GetLine(2, y, rs.uiBitCount, uiWidth, &sLine);
                for (uint32_t x = 0; x < uiWidth; ++x) {
                    uint16_t uiY = 0, uiC = 0;
                    const uint16_t uiCExpected = (x & 1) ? sLine.vecCr[x / 2] : sLine.vecCb[x / 2];
                    if (rs.eFormat == keQxSurfaceFormatYUYV422 && rs.uiBitCount == 10) {
                        uiY = Yuyv10Component(puc, 2 * x);
                        uiC = Yuyv10Component(puc, 2 * x + 1);
                    } else if (rs.eFormat == keQxSurfaceFormatYUYV422) {
                        uiY = puc[2 * x];
                        uiC = puc[2 * x + 1];
                    } else if (rs.eFormat == keQxSurfaceFormat2VUY) {
                        uiY = puc[2 * x + 1];
                        uiC = puc[2 * x];
                    } else {
                        continue;  // v210 is checked against FFmpeg
                    }
                    ASSERT_EQ(uiY, sLine.vecY[x]) << pszFormat << " x " << x;
                    ASSERT_EQ(uiC, uiCExpected) << pszFormat << " x " << x;
                }
            }
        }
    }
    EXPECT_THROW(CQxToolPattern(keQxToolPatternBars, 8, 8, keQxColorimetryITUR_BT_709)
                     .Render(0, ParseFormat("argb"), nullptr, 32),
                 CQxToolError);
}

// --- PNG ------------------------------------------------------------------

TEST(ToolPng, PicturesBecomeImagesThatReadBack)
{
    CTempDir oDir;
    // 8-bit ARGB Graphic (B, G, R, A bytes): opaque drops the key.
    const uint32_t uiWidth = 3, uiHeight = 2;
    std::vector<uint8_t> vecArgb = {0,  100, 200, 255, 10, 100, 201, 255, 20, 100, 202, 255, 0xEE, 0xEE, 0xEE, 0xEE,
                                    0,  101, 201, 255, 10, 101, 202, 255, 20, 101, 203, 255, 0xEE, 0xEE, 0xEE, 0xEE};
    SQxToolImage sImage = ImageFromPicture(ParseFormat("argb"), vecArgb.data(), 16, uiWidth, uiHeight);
    EXPECT_EQ(sImage.uiChannels, 3u);
    WritePng(oDir.File("rgb.png"), sImage);
    SQxToolImage sRead;
    ASSERT_TRUE(NQxTest::ReadPng(oDir.File("rgb.png"), &sRead));
    EXPECT_EQ(sRead.uiWidth, uiWidth);
    EXPECT_EQ(sRead.uiChannels, 3u);
    EXPECT_EQ(sRead.uiBits, 8u);
    const std::vector<uint8_t> vecExpected = {200, 100, 0, 201, 100, 10, 202, 100, 20,
                                              201, 101, 0, 202, 101, 10, 203, 101, 20};
    EXPECT_EQ(sRead.vecPixels, vecExpected);

    // A key that is not opaque everywhere stays.
    vecArgb[16 + 4 + 3] = 7;
    sImage = ImageFromPicture(ParseFormat("argb"), vecArgb.data(), 16, uiWidth, uiHeight);
    ASSERT_EQ(sImage.uiChannels, 4u);
    EXPECT_EQ(sImage.Row(1)[7], 7);

    // 16-bit ABGR words become big-endian R, G, B, A samples.
    const std::vector<uint8_t> vec16 = {0x34, 0x12, 0x02, 0x01, 0xB0, 0xA0, 0xEE, 0xFF};  // A, B, G, R words
    sImage = ImageFromPicture(ParseFormat("abgr16"), vec16.data(), 8, 1, 1);
    WritePng(oDir.File("rgba16.png"), sImage);
    ASSERT_TRUE(NQxTest::ReadPng(oDir.File("rgba16.png"), &sRead));
    EXPECT_EQ(sRead.uiBits, 16u);
    EXPECT_EQ(sRead.uiChannels, 4u);
    EXPECT_EQ(sRead.vecPixels, (std::vector<uint8_t>{0xFF, 0xEE, 0xA0, 0xB0, 0x01, 0x02, 0x12, 0x34}));

    // Key, then luma, becomes grey with alpha.
    const std::vector<uint8_t> vecKeyLuma = {9, 200, 255, 16};
    sImage = ImageFromPicture(ParseFormat("alpha-luma"), vecKeyLuma.data(), 4, 2, 1);
    EXPECT_EQ(sImage.vecPixels, (std::vector<uint8_t>{200, 9, 16, 255}));
    EXPECT_THROW(ImageFromPicture(ParseFormat("v210"), vecArgb.data(), 16, 1, 1), CQxToolError);
}

TEST(ToolPng, WriteErrorsNameTheFileAndLeaveNothingBehind)
{
    CTempDir oDir;
    SQxToolImage sImage;
    sImage.Allocate(4, 4, 3, 8);
    sImage.Allocate(600, 400, 3, 8);
    for (size_t i = 0; i < sImage.vecPixels.size(); ++i) sImage.vecPixels[i] = uint8_t(i * 7919 >> 3);
    struct SCase {
        std::string strPath;
        const char* pszSaid;
    } const asCases[] = {
        {oDir.File("missing/out.png"), "No such file or directory"},
        {oDir.Path(), "Is a directory"},
        {oDir.File("full.png"), "File too large"},
    };
    for (const SCase& r : asCases) {
        const CFileSizeLimit oLimit(4096);
        ExpectError([&] { WritePng(r.strPath, sImage); }, keExitFailure, {r.strPath, r.pszSaid});
    }
    SQxToolImage sEmpty;
    EXPECT_THROW(WritePng(oDir.File("empty.png"), sEmpty), CQxToolError);
    EXPECT_FALSE(NQxTest::FileExists(oDir.File("empty.png")));
    EXPECT_FALSE(NQxTest::FileExists(oDir.File("full.png"))) << "a cut PNG is removed";
}

TEST(ToolPng, NumberedNames)
{
    EXPECT_EQ(NumberedName("frame-%04d.png", 7), "frame-0007.png");
    EXPECT_EQ(NumberedName("f%d.png", 123), "f123.png");
    EXPECT_EQ(NumberedName("plain.png", 3), "plain.png");
    EXPECT_TRUE(HasNumberField("a%3d.png"));
    EXPECT_FALSE(HasNumberField("a.png"));
    for (const char* psz : {"a%s.png", "a%d%d.png", "a%.png", "100%", "a%123d.png"})
        EXPECT_EQ(Thrown([&] { HasNumberField(psz); }).GetStatus(), keExitUsage) << psz;
}

// --- Charts -----------------------------------------------------------------

// Pixels of one colour along a line of the image, from x on.
uint32_t RunOfColor(const SQxToolImage& in_r, uint32_t in_uiX, uint32_t in_uiY, const uint8_t in_aucRgb[3])
{
    uint32_t n = 0;
    const uint8_t* puc = in_r.vecPixels.data() + in_uiY * in_r.RowBytes();
    while (in_uiX + n < in_r.uiWidth && std::equal(in_aucRgb, in_aucRgb + 3, puc + 3 * (in_uiX + n))) ++n;
    return n;
}

// How far a bar reaches from the axis: its last pixel on the line.
uint32_t BarLength(const SQxToolImage& in_r, const SQxToolChartLayout& in_rs, uint32_t in_uiY, const uint8_t in_aucRgb[3])
{
    const uint8_t* puc = in_r.vecPixels.data() + in_uiY * in_r.RowBytes();
    uint32_t uiLast = in_rs.uiPlotLeft;
    for (uint32_t x = in_rs.uiPlotLeft + 1; x < in_r.uiWidth; ++x)
        if (std::equal(in_aucRgb, in_aucRgb + 3, puc + 3 * x)) uiLast = x;
    return uiLast - in_rs.uiPlotLeft;
}

TEST(ToolChart, BarsAreAsLongAsTheirValuesAndMissingOnesAreLeftOut)
{
    SQxToolChart sChart;
    sChart.strTitle = "test";
    sChart.vecSeries = {"one", "two"};
    sChart.vecRows = {{"first", {1.0, 0.5}}, {"second", {2.25, NAN}}};
    SQxToolChartLayout s;
    const SQxToolImage sImage = DrawChart(sChart, &s);
    ASSERT_EQ(sImage.uiChannels, 3u);
    EXPECT_GE(s.dAxisMax, 2.25) << "the axis holds the largest value";
    EXPECT_LT(s.dAxisMax, 2.25 * 1.5) << "without wasting the plot";
    uint8_t aucOne[3], aucTwo[3];
    SeriesColor(0, aucOne);
    SeriesColor(1, aucTwo);
    auto Expected = [&](double d) { return uint32_t(std::lround(d / s.dAxisMax * s.uiPlotWidth)); };
    const uint32_t uiMiddle = s.uiBarHeight / 2;
    EXPECT_EQ(BarLength(sImage, s, s.uiFirstBar + uiMiddle, aucOne), Expected(1.0));
    EXPECT_EQ(BarLength(sImage, s, s.uiFirstBar + s.uiBarStep + uiMiddle, aucTwo), Expected(0.5));
    EXPECT_EQ(BarLength(sImage, s, s.uiFirstBar + s.uiRowStep + uiMiddle, aucOne), Expected(2.25));
    EXPECT_EQ(BarLength(sImage, s, s.uiFirstBar + s.uiRowStep + s.uiBarStep + uiMiddle, aucTwo), 0u);
    // The reference line crosses the plot at 1, under the bars.
    const uint8_t aucRed[3] = {200, 30, 30};
    EXPECT_EQ(RunOfColor(sImage, s.uiPlotLeft + Expected(1.0), s.uiFirstBar + s.uiRowStep - 4, aucRed), 2u);

    // Text: glyphs in their cells, unknown characters as boxes.
    SQxToolImage sText;
    sText.Allocate(TextWidth("1?", 1), 7, 3, 8);
    const uint8_t aucInk[3] = {1, 2, 3};
    DrawText(sText, 0, 0, "1\x7f", 1, aucInk);
    EXPECT_EQ(TextWidth("1?", 1), 11u);
    EXPECT_EQ(RunOfColor(sText, 1, 6, aucInk), 3u) << "the foot of the 1";
    EXPECT_EQ(RunOfColor(sText, 6, 0, aucInk), 5u) << "the top of the box";
    EXPECT_EQ(RunOfColor(sText, 6, 3, aucInk), 1u);
}

// --- Raw frame files --------------------------------------------------------

TEST(ToolRawFiles, FramesWithPaddedPitchReadIntoPictures)
{
    CTempDir oDir;
    // Two frames of 3 lines of 5 bytes at a pitch of 8.
    const SQxToolRawLayout sLayout{5, 8, 3};
    std::string strFile(2 * 24, '\0');
    for (size_t i = 0; i < strFile.size(); ++i) strFile[i] = char(i);
    WriteFile(oDir.File("in.raw"), strFile);
    CQxToolRawReader oReader(oDir.File("in.raw"), sLayout, 0, "test");
    EXPECT_EQ(oReader.GetFrameCount(), 2u);
    std::vector<uint8_t> vecPicture(3 * 6, 0xEE);  // a picture pitch of 6
    ASSERT_TRUE(oReader.ReadFrame(vecPicture.data(), 6));
    ASSERT_TRUE(oReader.ReadFrame(vecPicture.data(), 6));
    EXPECT_FALSE(oReader.ReadFrame(vecPicture.data(), 6));
    const std::vector<uint8_t> vecSecond = {24, 25, 26, 27, 28, 0xEE, 32, 33, 34, 35, 36, 0xEE, 40, 41, 42, 43, 44, 0xEE};
    EXPECT_EQ(vecPicture, vecSecond);

    // Written back with a wider pitch: lines, then zeros.
    {
        CQxToolRawWriter oWriter(oDir.File("out.raw"));
        oWriter.WriteFrame(vecPicture.data(), 6, SQxToolRawLayout{5, 7, 3});
        oWriter.WriteFrame(vecPicture.data(), 6, SQxToolRawLayout{5, 5, 1});
        oWriter.Close();
    }
    const std::string strOut = NQxTest::ReadFile(oDir.File("out.raw"));
    const std::vector<uint8_t> vecOut(strOut.begin(), strOut.end());
    const std::vector<uint8_t> vecExpected = {24, 25, 26, 27, 28, 0, 0, 32, 33, 34, 35, 36, 0, 0,
                                              40, 41, 42, 43, 44, 0, 0, 24, 25, 26, 27, 28};
    EXPECT_EQ(vecOut, vecExpected);

    // A writer that is never closed belongs to failed work: its file goes.
    {
        CQxToolRawWriter oWriter(oDir.File("failed.raw"));
        oWriter.WriteFrame(vecPicture.data(), 6, SQxToolRawLayout{5, 5, 1});
    }
    EXPECT_FALSE(NQxTest::FileExists(oDir.File("failed.raw")));

    // --frames takes the first frames of a file with more.
    CQxToolRawReader oFirst(oDir.File("in.raw"), sLayout, 1, "test");
    EXPECT_EQ(oFirst.GetFrameCount(), 1u);
    ASSERT_TRUE(oFirst.ReadFrame(vecPicture.data(), 6));
    EXPECT_FALSE(oFirst.ReadFrame(vecPicture.data(), 6));
}

TEST(ToolRawFiles, FilesThatDoNotHoldWholeFramesAreRefused)
{
    CTempDir oDir;
    const SQxToolRawLayout sLayout{10, 10, 4};  // 40-byte frames
    for (const auto& [pszName, uiBytes] : {std::pair{"empty.raw", 0}, {"short.raw", 39}, {"ragged.raw", 85}, {"two.raw", 80}})
        WriteFile(oDir.File(pszName), std::string(uiBytes, 'x'));
    struct SCase {
        std::string strPath;
        uint32_t uiFrames;
        const char* pszSaid;
    } const asCases[] = {
        {oDir.File("none.raw"), 0, "No such file or directory"},
        {oDir.Path(), 0, "Is a directory"},
        {oDir.File("empty.raw"), 0, "is empty"},
        {oDir.File("short.raw"), 0, "39 bytes, less than one frame of 40 bytes (the layout)"},
        {oDir.File("ragged.raw"), 0, "2 frames of 40 bytes (the layout) and 5 bytes more"},
        {oDir.File("two.raw"), 3, "holds 2 frames of 40 bytes (the layout), but --frames asks for 3"},
    };
    for (const SCase& r : asCases)
        ExpectError([&] { CQxToolRawReader(r.strPath, sLayout, r.uiFrames, "the layout"); }, keExitFailure,
                    {r.strPath, r.pszSaid});
    // A ragged file is fine when --frames says how many whole frames to take.
    EXPECT_EQ(CQxToolRawReader(oDir.File("ragged.raw"), sLayout, 2, "x").GetFrameCount(), 2u);
}

TEST(ToolRawFiles, StreamsEndOnAFrameBoundaryOrFail)
{
    // A pipe is read until its end: whole frames are fine, a cut frame is
    // an error that says where it was cut.
    const SQxToolRawLayout sLayout{4, 4, 2};
    for (const size_t uBytes : {size_t(16), size_t(19)}) {
        int aiPipe[2];
        ASSERT_EQ(pipe(aiPipe), 0);
        std::vector<uint8_t> vec(uBytes, 1);
        ASSERT_EQ(write(aiPipe[1], vec.data(), vec.size()), ssize_t(vec.size()));
        close(aiPipe[1]);
        const std::string strPath = "/proc/self/fd/" + std::to_string(aiPipe[0]);
        CQxToolRawReader oReader(strPath, sLayout, 0, "x");
        EXPECT_EQ(oReader.GetFrameCount(), 0u) << "a stream has no known length";
        std::vector<uint8_t> vecPicture(8);
        EXPECT_TRUE(oReader.ReadFrame(vecPicture.data(), 4));
        EXPECT_TRUE(oReader.ReadFrame(vecPicture.data(), 4));
        if (uBytes == 16) {
            EXPECT_FALSE(oReader.ReadFrame(vecPicture.data(), 4));
        } else {
            ExpectError([&] { oReader.ReadFrame(vecPicture.data(), 4); }, keExitFailure,
                        {"ended 3 bytes into frame 3 (8 bytes each)"});
        }
        close(aiPipe[0]);
    }
}

TEST(ToolRawFiles, WriteErrorsSurface)
{
    CTempDir oDir;
    ExpectError([&] { CQxToolRawWriter(oDir.File("no/such.raw")); }, keExitFailure, {"No such file or directory"});
    // A full disk shows at the latest when the file is closed, small
    // frames that stay in the stream's buffer included; the cut file goes.
    std::vector<uint8_t> vec(1 << 16, 3);
    for (const uint32_t uiLine : {256u, 8u}) {
        const CFileSizeLimit oLimit(100);
        ExpectError(
            [&] {
                CQxToolRawWriter oWriter(oDir.File("full.raw"));
                oWriter.WriteFrame(vec.data(), 256, SQxToolRawLayout{uiLine, uiLine, 16});
                oWriter.Close();
            },
            keExitFailure, {"full.raw: File too large"});
        EXPECT_FALSE(NQxTest::FileExists(oDir.File("full.raw")));
    }
}

}  // namespace
