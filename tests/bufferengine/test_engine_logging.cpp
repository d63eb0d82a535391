// The engine's log lines reach the QxLogger that this program supplies (the
// engine finds it at run time), with package 6027 and the exact texts.
#include <qxbase/qxcengines.h>

#include <gtest/gtest.h>

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
    EXPECT_EQ(Count(v, 4, 4, "        qxcBufferEngine:SetConversionOptions Successful"), 2u);
    EXPECT_EQ(Count(v, 2, 4, "        qxcBufferEngine:CopySurface Successful"), 2u);
    EXPECT_EQ(Count(v, 3, 4, "        qxcBufferEngine:ClearSurface Successful"), 1u);
    EXPECT_EQ(Count(v, 7, 6, "CQxcBufferEngine::RotateSurface(), rotationAngle:[1]"), 1u);
    EXPECT_EQ(Count(v, 7, 4, "[64x36] rotated  90 Size:[8192] sliceSize:[16] - Time:[min:"), 1u);
    EXPECT_EQ(Count(v, 7, 4, "        qxcBufferEngine:RotateSurface Successful"), 1u);
    for (const SLine& l : v) EXPECT_EQ(l.iPackage, 6027) << l.strText;

    // Refusals go out at level 2.
    EXPECT_EQ(pAsync->CopySurface(nullptr, &s, pDestination.get(), &s, keQxFilterModeNearest),
              QX_HRESULT(0x89998045u));
    v = TakeLines();
    EXPECT_EQ(Count(v, 2, 2, "        qxcBufferEngine:CopySurface Failed. Error = 0x89998045"), 1u);
}

}  // namespace
