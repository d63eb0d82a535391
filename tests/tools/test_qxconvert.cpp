// qxconvert run as a user runs it: every mistake on the command line and
// every bad file ends with one clear message and the right exit status,
// and the commands produce the frames they promise.
#include "tools/pngread.h"
#include "tools/toolrun.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

using NQxTest::Contains;
using NQxTest::CTempDir;
using NQxTest::ReadFile;
using NQxTest::RunTool;
using NQxTest::SToolRun;
using NQxTest::WriteFile;

namespace {

SToolRun Convert(std::vector<std::string> in_vecArgs, const std::string& in_strStdin = "")
{
    in_vecArgs.insert(in_vecArgs.begin(), QXBASE_QXCONVERT_PATH);
    return RunTool(in_vecArgs, in_strStdin);
}

// A run that must succeed.
SToolRun ConvertOk(std::vector<std::string> in_vecArgs, const std::string& in_strStdin = "")
{
    SToolRun s = Convert(std::move(in_vecArgs), in_strStdin);
    EXPECT_EQ(s.iStatus, 0) << s.strErr;
    return s;
}

// A run that must fail with the status and say what went wrong, leaving
// no output file behind.
struct SFailure {
    std::vector<std::string> vecArgs;
    const char* pszSaid;
};

void ExpectFailures(const std::vector<SFailure>& in_vecCases, int in_iStatus, const std::string& in_strOutput)
{
    for (const SFailure& r : in_vecCases) {
        const SToolRun s = Convert(r.vecArgs);
        std::string strArgs;
        for (const std::string& str : r.vecArgs) strArgs += " " + str;
        EXPECT_EQ(s.iStatus, in_iStatus) << strArgs << "\n" << s.strErr;
        EXPECT_TRUE(Contains(s.strErr, r.pszSaid)) << strArgs << "\n" << s.strErr;
        EXPECT_EQ(Contains(s.strErr, "Try 'qxconvert --help'"), in_iStatus == 2) << strArgs;
        EXPECT_TRUE(s.strOut.empty()) << strArgs;
        EXPECT_NE(access(in_strOutput.c_str(), F_OK), 0) << strArgs << ": a failed run leaves no output behind";
    }
}

TEST(Qxconvert, CommandLineMistakesAreUsageErrors)
{
    CTempDir oDir;
    const std::string strOut = oDir.File("out.raw");
    ExpectFailures({
        {{}, "say where the frames go with -o FILE"},
        {{"transcode", "-o", strOut}, "unknown command \"transcode\""},
        {{"--frobnicate", "-o", strOut}, "unknown option --frobnicate"},
        {{"in.yuv", "-o", strOut}, "unknown command \"in.yuv\"; use convert, clear, rotate, combine, extract or formats (an input file is -i FILE)"},
        {{"-o", strOut, "in.yuv"}, "unexpected argument \"in.yuv\" (an input file is given with -i FILE)"},
        {{"-o"}, "option -o needs a value"},
        {{"--quiet=yes", "-o", strOut}, "option --quiet takes no value"},
        {{"-s", "1920", "-o", strOut}, "bad picture size \"1920\""},
        {{"-s", "0x16", "-o", strOut}, "at least one pixel"},
        {{"-s", "20000x16", "-o", strOut}, "too large"},
        {{"-f", "nv12", "-o", strOut}, "unknown pixel format \"nv12\""},
        {{"--to", "v210,,argb", "-o", strOut}, "empty entry in the --to list"},
        {{"-c", "2021", "-o", strOut}, "unknown colorimetry \"2021\""},
        {{"-p", "checkerboard", "-o", strOut}, "unknown test pattern"},
        {{"-n", "0", "-o", strOut}, "bad frame count \"0\""},
        {{"-i", "x.raw", "-o", strOut}, "needs its picture size (--size WxH) and pixel format"},
        {{"-i", "x.raw", "-p", "bars", "-s", "hd", "-f", "v210", "-o", strOut}, "not both"},
        {{"-s", "1000x16", "-f", "v210", "-o", strOut}, "a v210 picture's width must be a multiple of 16; 1000 is not"},
        {{"-s", "1002x16", "-o", strOut}, "multiple of 4"},
        {{"-i", "x.raw", "-s", "64x8", "-f", "yuyv8", "--pitch", "100", "-o", strOut},
         "a pitch of 100 bytes is shorter than one line of 64 yuyv8 pixels (128 bytes)"},
        {{"--pitch", "256", "-o", strOut}, "--pitch describes an input file"},
        {{"-s", "64x8", "--out-pitch", "64", "-o", strOut}, "an output pitch of 64 bytes is shorter"},
        {{"--angle", "90", "-o", strOut}, "--angle belongs to the rotate command"},
        {{"rotate", "-o", strOut}, "rotate needs --angle"},
        {{"rotate", "--angle", "45", "-o", strOut}, "bad rotation angle \"45\""},
        {{"--key-pattern", "ramp", "-o", strOut}, "belong to the combine command"},
        {{"extract", "-o", strOut}, "give the key's file with --key-output"},
        {{"extract", "--key-output", "k", "--to", "v210", "-o", strOut}, "convert them afterwards"},
        {{"clear", "-i", "x.raw", "-s", "hd", "-f", "yuyv8", "-o", strOut}, "clear makes its own frames"},
        {{"clear", "--color", "purple", "-o", strOut}, "unknown colour \"purple\""},
        {{"clear", "--alpha", "2", "-o", strOut}, "bad alpha \"2\""},
        {{"rotate", "--angle", "90", "--sync", "-o", strOut}, "only converts and clears"},
        {{"--engine", "elsewhere", "-o", strOut}, "bad engine origin"},
        {{"--png-depth", "12", "-o", strOut}, "bad PNG depth"},
        {{"-s", "64x16", "-n", "3", "-o", oDir.File("out.png")}, "3 frames need a numbered name"},
        {{"-s", "64x16", "-o", oDir.File("out%s.png")}, "not a frame number field"},
    }, 2, strOut);

    const SToolRun sHelp = Convert({"--help"});
    EXPECT_EQ(sHelp.iStatus, 0);
    EXPECT_TRUE(Contains(sHelp.strOut, "usage: qxconvert"));
}

TEST(Qxconvert, BadFilesAndRefusedConversionsFailClearly)
{
    CTempDir oDir;
    const std::string strOut = oDir.File("out.raw");
    WriteFile(oDir.File("short.raw"), std::string(100, 'x'));
    WriteFile(oDir.File("ragged.raw"), std::string(2 * 64 * 8 * 2 + 3, 'x'));
    ExpectFailures({
        {{"-i", oDir.File("short.raw"), "-s", "64x8", "-f", "yuyv8", "-o", strOut},
         "holds 100 bytes, less than one frame of 1024 bytes (64x8 yuyv8, pitch 128)"},
        {{"-i", oDir.File("ragged.raw"), "-s", "64x8", "-f", "yuyv8", "-o", strOut},
         "2 frames of 1024 bytes (64x8 yuyv8, pitch 128) and 3 bytes more"},
        {{"-s", "64x8", "-o", oDir.File("no/such/dir/out.png")}, "out.png: No such file or directory"},
        // 2VUY reaches 10-bit YUYV only in two steps; the error names the
        // route that keeps the most bits.
        {{"-s", "64x8", "-f", "2vuy", "--to", "yuyv10", "-o", strOut},
         "could not convert 64x8 2vuy to yuyv10 in one step (it can go through v210,yuyv10): 0x89998039"},
        // A key-only picture is converted to nothing.
        {{"-s", "64x8", "-f", "alpha", "-o", strOut}, "no test pattern can be made in alpha"},
        {{"rotate", "--angle", "90", "-s", "64x8", "-f", "v210", "-o", strOut}, "could not rotate a 64x8 v210 picture"},
        {{"extract", "-s", "64x8", "-f", "yuyv8", "--key-output", oDir.File("k.raw"), "-o", strOut},
         "could not extract video and key from 64x8 yuyv8"},
    }, 1, strOut);
}

TEST(Qxconvert, RoundTripsAndRawLayouts)
{
    CTempDir oDir;
    // Bars drawn in 8-bit YUYV, through v210 and back: 8 bits survive 10.
    ConvertOk({"-q", "-s", "96x32", "-o", oDir.File("bars.yuyv")});
    ConvertOk({"-q", "-s", "96x32", "--to", "v210,yuyv8", "-o", oDir.File("back.yuyv")});
    const std::string strBars = ReadFile(oDir.File("bars.yuyv"));
    ASSERT_EQ(strBars.size(), 96u * 2 * 32);
    EXPECT_EQ(ReadFile(oDir.File("back.yuyv")), strBars);

    // The same frames written with padded lines and read back through
    // --pitch, and read from standard input.
    ConvertOk({"-q", "-s", "96x32", "--out-pitch", "200", "-o", oDir.File("padded.yuyv")});
    const std::string strPadded = ReadFile(oDir.File("padded.yuyv"));
    ASSERT_EQ(strPadded.size(), 200u * 32);
    EXPECT_EQ(strPadded.substr(200, 192), strBars.substr(192, 192));
    EXPECT_EQ(strPadded.substr(192, 8), std::string(8, '\0'));
    const SToolRun s = ConvertOk({"-i", oDir.File("padded.yuyv"), "-s", "96x32", "-f", "yuyv8", "--pitch", "200",
                                  "-o", oDir.File("unpadded.yuyv")});
    EXPECT_EQ(ReadFile(oDir.File("unpadded.yuyv")), strBars);
    EXPECT_TRUE(Contains(s.strErr, "1 frame, 96x32 yuyv8 (" + oDir.File("padded.yuyv") + "), written to")) << s.strErr;
    ConvertOk({"-q", "-i", "-", "-s", "96x32", "-f", "yuyv8", "-o", oDir.File("piped.yuyv")}, oDir.File("bars.yuyv"));
    EXPECT_EQ(ReadFile(oDir.File("piped.yuyv")), strBars);

    // A pattern asked for in a format it is not drawn in comes through the
    // engine: 10-bit YUYV to v210 is a repacking that loses nothing.
    ConvertOk({"-q", "-s", "96x32", "-f", "yuayva10", "--to", "yuyv10,v210", "-o", oDir.File("a.v210")});
    ConvertOk({"-q", "-s", "96x32", "-f", "v210", "-o", oDir.File("b.v210")});
    EXPECT_EQ(ReadFile(oDir.File("a.v210")), ReadFile(oDir.File("b.v210")));
}

TEST(Qxconvert, ManyFramesShowProgressAndMoveThePattern)
{
    CTempDir oDir;
    const SToolRun s = ConvertOk({"-p", "zoneplate", "-s", "64x16", "-n", "40", "-o", oDir.File("zone.yuyv")});
    const std::string str = ReadFile(oDir.File("zone.yuyv"));
    ASSERT_EQ(str.size(), 40u * 64 * 2 * 16);
    const size_t uFrame = 64 * 2 * 16;
    EXPECT_NE(str.substr(0, uFrame), str.substr(uFrame, uFrame)) << "the zone plate moves";
    EXPECT_EQ(str.substr(0, uFrame), str.substr(8 * uFrame, uFrame)) << "and comes back after eight frames";
    // Not a terminal: one line a tenth of the way, the last at the end.
    for (const char* pszSaid : {"qxconvert: frame 4/40, ", "qxconvert: frame 40/40, ", "40 frames, 64x16 yuyv8 (zoneplate)"})
        EXPECT_TRUE(Contains(s.strErr, pszSaid)) << s.strErr;
    // Few frames, or --quiet: no progress.
    EXPECT_FALSE(Contains(Convert({"-s", "64x16", "-n", "3", "-o", oDir.File("z")}).strErr, "frame 3/3"));
    EXPECT_EQ(Convert({"-q", "-s", "64x16", "-n", "40", "-o", oDir.File("z")}).strErr, "");
}

TEST(Qxconvert, ClearRotateCombineExtract)
{
    CTempDir oDir;
    // Red, cleared in v210 and read in 8-bit YUYV: the engine's 10-bit red
    // (324, 364, 960) to 8 bits.
    ConvertOk({"clear", "-q", "--color", "red", "-s", "64x4", "-f", "v210", "--to", "yuyv8", "-o", oDir.File("red")});
    EXPECT_EQ(ReadFile(oDir.File("red")).substr(0, 4), "\x51\x5B\x51\xF0");
    EXPECT_EQ(ReadFile(oDir.File("red")).size(), 64u * 2 * 4);

    // Half turns twice give the picture back; quarter turns swap the sides.
    ConvertOk({"-q", "-s", "64x16", "-o", oDir.File("bars.yuyv")});
    ConvertOk({"rotate", "-q", "--angle", "90", "-s", "64x16", "-o", oDir.File("r90.yuyv")});
    EXPECT_EQ(ReadFile(oDir.File("r90.yuyv")).size(), 16u * 2 * 64);
    ConvertOk({"rotate", "-q", "--angle", "180", "-s", "64x16", "-o", oDir.File("r180.yuyv")});
    ConvertOk({"rotate", "-q", "--angle", "180", "-i", oDir.File("r180.yuyv"), "-s", "64x16", "-f", "yuyv8", "-o",
               oDir.File("r360.yuyv")});
    EXPECT_NE(ReadFile(oDir.File("r180.yuyv")), ReadFile(oDir.File("bars.yuyv")));
    EXPECT_EQ(ReadFile(oDir.File("r360.yuyv")), ReadFile(oDir.File("bars.yuyv")));

    // Bars with a ramp key, split again: the video is the bars, the key is
    // grey with the ramp's luma.
    ConvertOk({"combine", "-q", "-s", "64x16", "-o", oDir.File("keyed.yuayva")});
    ConvertOk({"extract", "-i", oDir.File("keyed.yuayva"), "-s", "64x16", "-f", "yuayva8", "-o",
               oDir.File("video.yuyv"), "--key-output", oDir.File("key.yuyv")});
    EXPECT_EQ(ReadFile(oDir.File("video.yuyv")), ReadFile(oDir.File("bars.yuyv")));
    const std::string strKey = ReadFile(oDir.File("key.yuyv"));
    ASSERT_EQ(strKey.size(), 64u * 2 * 16);
    EXPECT_LT(uint8_t(strKey[0]), uint8_t(strKey[2 * 63])) << "the key rises with the ramp";
    EXPECT_EQ(uint8_t(strKey[1]), 128) << "a grey key has no colour";
}

// The sample of channel c of pixel (x, y), 8 or 16 bits.
uint32_t Sample(const NQxTool::SQxToolImage& in_r, uint32_t in_uiX, uint32_t in_uiY, uint32_t in_uiChannel)
{
    const uint8_t* puc = in_r.vecPixels.data() + in_uiY * in_r.RowBytes();
    if (in_r.uiBits == 8) return puc[in_uiX * in_r.uiChannels + in_uiChannel];
    const uint8_t* pucSample = puc + 2 * (in_uiX * in_r.uiChannels + in_uiChannel);
    return uint32_t(pucSample[0] << 8 | pucSample[1]);
}

TEST(Qxconvert, PngPicturesShowTheBars)
{
    CTempDir oDir;
    // The main job's route: bars drawn in 8-bit YUYV, v210, then RGBA. Each
    // bar is 75% of full scale in its colours, 0 in the others.
    const SToolRun s = ConvertOk({"-s", "112x64", "--to", "v210,argb", "-o", oDir.File("bars.png")});
    EXPECT_TRUE(Contains(s.strErr, "1 frame, 112x64 yuyv8 (bars) -> v210 -> argb, written to " + oDir.File("bars.png")))
        << s.strErr;
    // 10-bit bars straight to a 16-bit PNG, converted by the engine there.
    const SToolRun sDeep = ConvertOk({"-s", "112x64", "-f", "v210", "--png-depth", "16", "-o", oDir.File("deep.png")});
    EXPECT_TRUE(Contains(sDeep.strErr, "(shown through yuyv10,abgr16)")) << sDeep.strErr;

    const uint8_t aucBars[7] = {7, 6, 3, 2, 5, 4, 1};  // R G B switches: white, yellow, cyan ...
    for (const char* pszFile : {"bars.png", "deep.png"}) {
        NQxTool::SQxToolImage sImage;
        ASSERT_TRUE(NQxTest::ReadPng(oDir.File(pszFile), &sImage)) << pszFile;
        ASSERT_EQ(sImage.uiWidth, 112u);
        ASSERT_EQ(sImage.uiHeight, 64u);
        EXPECT_EQ(sImage.uiChannels, 3u) << "an opaque picture has no alpha channel";
        const double dFull = sImage.uiBits == 8 ? 255.0 : 65535.0;
        for (uint32_t b = 0; b < 7; ++b)
            for (uint32_t c = 0; c < 3; ++c) {
                const double dExpected = (aucBars[b] >> (2 - c) & 1) ? 0.75 : 0.0;
                EXPECT_NEAR(Sample(sImage, 16 * b + 8, 20, c) / dFull, dExpected, 0.015)
                    << pszFile << " bar " << b << " channel " << c;
            }
        // The 100% white patch in the bottom row.
        EXPECT_NEAR(Sample(sImage, 30, 60, 1) / dFull, 1.0, 0.01) << pszFile;
    }

    // Several frames go to numbered files.
    ConvertOk({"-q", "-p", "zoneplate", "-s", "64x16", "-n", "3", "-o", oDir.File("z-%02d.png")});
    NQxTool::SQxToolImage sFrame;
    for (const char* pszFile : {"z-00.png", "z-01.png", "z-02.png"})
        EXPECT_TRUE(NQxTest::ReadPng(oDir.File(pszFile), &sFrame)) << pszFile;
    EXPECT_FALSE(NQxTest::ReadPng(oDir.File("z-03.png"), &sFrame));
}

TEST(Qxconvert, FormatsAndEngineChoice)
{
    const SToolRun s = ConvertOk({"formats"});
    EXPECT_TRUE(Contains(s.strOut, "v210               Uncompressed V210      10"));
    EXPECT_TRUE(Contains(s.strOut, "converts to: yuyv8 yuyv10 2vuy")) << s.strOut;
    CTempDir oDir;
    const SToolRun sFactory =
        ConvertOk({"-v", "--engine", "factory", "--sync", "-s", "64x4", "--to", "v210", "-o", oDir.File("x")});
    EXPECT_TRUE(Contains(sFactory.strErr, "engine created through the factory of the linked libqxbase"));
}

}  // namespace
