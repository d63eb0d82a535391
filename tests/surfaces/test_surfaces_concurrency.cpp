// The engine's pattern: every slice makes its own surface objects over the
// same pictures and converts its own lines, on its own thread. The result
// must equal one conversion of the whole picture, and nothing may race
// (this program also runs under ThreadSanitizer).
#include <gtest/gtest.h>

#include "tests/surfaces/surfacetesthelpers.h"

#include <thread>

using namespace NQxTest;

namespace {

void ConvertSlice(const CPicture& in_rSource, const CPicture& in_rDestination, unsigned in_uiWidth,
                  unsigned in_uiFirstLine, unsigned in_uiLines)
{
    // Objects made here, as each slice makes its own.
    auto pSource = CreateSurface(keQxcSurfaceTypeV210_10bits, false);
    auto pHub = CreateSurface(keQxcSurfaceTypeYCbCrA4224_16bits_Unshaped, true);
    auto pDestination = CreateSurface(keQxcSurfaceTypeYCbCr422_8bits, false);
    CPicture oLine(96 * ((in_uiWidth + 15) / 16), 1);
    pSource->Initialize(in_rSource.Data(), in_uiWidth, in_rSource.Lines(), in_rSource.Pitch(), false,
                        keQxColorimetryITUR_BT_709);
    pHub->Initialize(oLine.Data(), in_uiWidth, 1, oLine.Pitch(), true, keQxColorimetryITUR_BT_709);
    pDestination->Initialize(in_rDestination.Data(), in_uiWidth, in_rDestination.Lines(), in_rDestination.Pitch(),
                             true, keQxColorimetryITUR_BT_709);
    for (unsigned uiLine = in_uiFirstLine; uiLine < in_uiFirstLine + in_uiLines; ++uiLine) {
        pSource->SetPosition(0, uiLine);
        pHub->SetPosition(0, 0);
        pDestination->SetPosition(0, uiLine);
        ASSERT_TRUE(pHub->CopyBlocksFrom(pSource.get(), pSource->GetWidthInBlocks(), 1));
        pHub->SetPosition(0, 0);
        ASSERT_TRUE(pDestination->CopyBlocksFrom(pHub.get(), pHub->GetWidthInBlocks(), 1));
    }
}

TEST(SurfacesConcurrency, SlicesOnTheirOwnThreadsMatchOneConversion)
{
    const unsigned uiWidth = 720, uiLines = 64, uiThreads = 4;
    CPicture oSource(NQxcKernels::V210LinePixels(uiWidth) / 6 * 16, uiLines);
    std::mt19937 oRandom(12);
    FillRandom(oSource.Data(), oSource.Bytes(), oRandom);
    CPicture oOnce(32 * ((uiWidth + 15) / 16), uiLines);
    CPicture oSliced(oOnce);
    ConvertSlice(oSource, oOnce, uiWidth, 0, uiLines);

    std::vector<std::thread> vThreads;
    for (unsigned t = 0; t < uiThreads; ++t)
        vThreads.emplace_back(ConvertSlice, std::cref(oSource), std::cref(oSliced), uiWidth, t * uiLines / uiThreads,
                              uiLines / uiThreads);
    for (std::thread& r : vThreads)
        r.join();
    EXPECT_TRUE(oSliced.SameAs(oOnce));
}

}  // namespace
