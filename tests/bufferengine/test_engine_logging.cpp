// The engine's log lines reach the QxLogger that this program supplies (the
// engine finds it at run time), with package 6027 and the exact texts.
#include <qxbase/qxcengines.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdarg>
#include <cstdio>
#include <mutex>
#include <string>
#include <vector>

#include "bufferengine/enginekit.h"

namespace {

struct SLine {
    int iPackage, iArgument, iLevel;
    std::string strText;
};

std::mutex g_oLinesMutex;
std::vector<SLine> g_vLines;

std::vector<SLine> TakeLines()
{
    std::lock_guard<std::mutex> oLock(g_oLinesMutex);
    std::vector<SLine> v;
    v.swap(g_vLines);
    return v;
}

// The lines at a package/argument/level whose text starts with the prefix.
size_t Count(const std::vector<SLine>& in_v, int in_iArgument, int in_iLevel, const std::string& in_strPrefix)
{
    size_t u = 0;
    for (const SLine& l : in_v)
        if (l.iPackage == 6027 && l.iArgument == in_iArgument && l.iLevel == in_iLevel &&
            l.strText.compare(0, in_strPrefix.size(), in_strPrefix) == 0)
            ++u;
    return u;
}

// The statistics of the rotation line "[64x36] rotated <degrees> ...".
struct SRotationTimes {
    unsigned long long ullMin = 0, ullCurrent = 0, ullMax = 0, ullAverage = 0, ullCount = 0;
};

SRotationTimes RotationTimes(const std::vector<SLine>& in_v, int in_iDegrees)
{
    SRotationTimes s;
    const std::string strFormat = "[64x36] rotated " + std::to_string(in_iDegrees) +
                                  " Size:[8192] sliceSize:[16] - Time:[min:%llu  cur:%llu  max:%llu  ave:%llu]us  "
                                  "totalCount:[%llu]";
    int iLines = 0;
    for (const SLine& l : in_v)
        if (l.iArgument == 7 && l.iLevel == 4 && l.strText.compare(0, 8, "[64x36] ") == 0) {
            ++iLines;
            EXPECT_EQ(std::sscanf(l.strText.c_str(), strFormat.c_str(), &s.ullMin, &s.ullCurrent, &s.ullMax,
                                  &s.ullAverage, &s.ullCount),
                      5)
                << l.strText;
        }
    EXPECT_EQ(iLines, 1);
    return s;
}

}  // namespace

// The SDK's logger: the format's 64-bit counts are written "%I64u".
extern "C" __attribute__((visibility("default"))) void QxLogger(int in_iPackage, int in_iArgument, int in_iLevel,
                                                                  const char* in_pszFormat, ...)
{
    std::string strFormat(in_pszFormat);
    for (size_t i; (i = strFormat.find("%I64u")) != std::string::npos;) strFormat.replace(i, 5, "%llu");
    char szText[1024];
    va_list args;
    va_start(args, in_pszFormat);
    std::vsnprintf(szText, sizeof(szText), strFormat.c_str(), args);
    va_end(args);
    std::lock_guard<std::mutex> oLock(g_oLinesMutex);
    g_vLines.push_back(SLine{in_iPackage, in_iArgument, in_iLevel, szText});
}

namespace {

using namespace NQxEngineKit;

TEST(EngineLogging, EveryOperationLogsItsLine)
{
    TakeLines();
    auto pAsync = MakeEngine();
    auto pSync = MakeSyncEngine();
    std::vector<SLine> v = TakeLines();
    EXPECT_EQ(Count(v, 1, 4, "        qxcBufferEngine:CreateBufferEngine Successful"), 2u);

    auto pSource = Allocate(Describe(keQxSurfaceFormatYUYV422, 8, 64, 36));
    auto pDestination = Allocate(Describe(keQxSurfaceFormatYUYV422, 8, 64, 36));
    auto pTurned = Allocate(Describe(keQxSurfaceFormatYUYV422, 8, 36, 64));
    SQxRect s = Whole(pSource.get());
    ASSERT_EQ(pAsync->SetConversionOptions(nullptr), S_OK);
    ASSERT_EQ(pSync->SetSyncConversionOptions(nullptr), S_OK);
    ASSERT_EQ(pAsync->CopySurface(pSource.get(), &s, pDestination.get(), &s, keQxFilterModeNearest), S_OK);
    ASSERT_EQ(pSync->SyncCopySurface(pSource.get(), &s, pDestination.get(), &s, keQxFilterModeNearest), S_OK);
    ASSERT_EQ(pAsync->ClearSurface(pDestination.get(), keQxColorBlack, 1.0f), S_OK);
    ASSERT_EQ(pAsync->RotateSurface(pSource.get(), pTurned.get(), keQxRotationAngle90), S_OK);
    v = TakeLines();
    const std::vector<SLine> vFirstTurn = v;
    EXPECT_EQ(Count(v, 4, 4, "        qxcBufferEngine:SetConversionOptions Successful"), 2u);
    EXPECT_EQ(Count(v, 2, 4, "        qxcBufferEngine:CopySurface Successful"), 2u);
    EXPECT_EQ(Count(v, 3, 4, "        qxcBufferEngine:ClearSurface Successful"), 1u);
    EXPECT_EQ(Count(v, 7, 6, "CQxcBufferEngine::RotateSurface(), rotationAngle:[1]"), 1u);
    EXPECT_EQ(Count(v, 7, 4, "[64x36] rotated  90 Size:[8192] sliceSize:[16] - Time:[min:"), 1u);
    EXPECT_EQ(Count(v, 7, 4, "        qxcBufferEngine:RotateSurface Successful"), 1u);
    for (const SLine& l : v) EXPECT_EQ(l.iPackage, 6027) << l.strText;

    // Conversions time their slices (argument 2, level 9) under the name of
    // their path; each line carries the path's name and one 64-bit count.
    auto pV210 = Allocate(Describe(keQxSurfaceFormatV210, 10, 64, 36));
    auto pRgba = Allocate(Describe(keQxSurfaceFormatARGBGraphic, 8, 64, 36));
    ASSERT_EQ(pAsync->CopySurface(pSource.get(), &s, pV210.get(), &s, keQxFilterModeNearest), S_OK);
    ASSERT_EQ(pSync->SyncCopySurface(pRgba.get(), &s, pDestination.get(), &s, keQxFilterModeNearest), S_OK);
    v = TakeLines();
    EXPECT_EQ(Count(v, 2, 9, "ConcRTCopy YUV <-> YUV:: -  Time:["), 1u);
    EXPECT_EQ(Count(v, 2, 9, "ConcRTCopy RGB <-> YUV:: -  Time:["), 1u);
    for (const SLine& l : v) {
        if (l.iLevel != 9) continue;
        unsigned long long ullTime = 0;
        char cEnd = 0;
        EXPECT_EQ(std::sscanf(l.strText.c_str() + l.strText.find("Time:["), "Time:[%llu%c", &ullTime, &cEnd), 2)
            << l.strText;
        EXPECT_EQ(cEnd, ']') << l.strText;
    }

    // The rotation's statistics run on from one turn to the next: after the
    // 90-degree turn above (maximum = average = current, count 1) and this
    // one, they are those of the two current times. The minimum starts at
    // 65535 microseconds.
    ASSERT_EQ(pAsync->RotateSurface(pSource.get(), pTurned.get(), keQxRotationAngle270), S_OK);
    const std::vector<SLine> vSecond = TakeLines();
    ASSERT_EQ(Count(vSecond, 7, 4, "[64x36] rotated 270 Size:[8192] sliceSize:[16] - Time:[min:"), 1u);
    const SRotationTimes sFirst = RotationTimes(vFirstTurn, 90), sSecond = RotationTimes(vSecond, 270);
    EXPECT_EQ(sFirst.ullCount, 1u);
    EXPECT_EQ(sFirst.ullMin, std::min(sFirst.ullCurrent, 65535ull));
    EXPECT_EQ(sFirst.ullMax, sFirst.ullCurrent);
    EXPECT_EQ(sFirst.ullAverage, sFirst.ullCurrent);
    EXPECT_EQ(sSecond.ullCount, 2u);
    EXPECT_EQ(sSecond.ullMin, std::min({sFirst.ullCurrent, sSecond.ullCurrent, 65535ull}));
    EXPECT_EQ(sSecond.ullMax, std::max(sFirst.ullCurrent, sSecond.ullCurrent));
    EXPECT_EQ(sSecond.ullAverage, (sFirst.ullCurrent + sSecond.ullCurrent) / 2);

    // Refusals go out at level 2.
    EXPECT_EQ(pAsync->CopySurface(nullptr, &s, pDestination.get(), &s, keQxFilterModeNearest),
              QX_HRESULT(0x89998045u));
    v = TakeLines();
    EXPECT_EQ(Count(v, 2, 2, "        qxcBufferEngine:CopySurface Failed. Error = 0x89998045"), 1u);
}

}  // namespace
