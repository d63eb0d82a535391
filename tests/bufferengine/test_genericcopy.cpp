// The byte mover: which path each copy takes, that exactly the given bytes
// are copied, and the field weave's line order.
#include <qxbase/qxcgenericcopy.h>

#include <gtest/gtest.h>

#include <memory>

#include "bufferengine/guardedbuffer.h"

namespace {

// Counts how often the streaming path is taken.
class CCountingCopy : public CQxcGenericCopySSE2 {
public:
    bool FastCopy(void* in_pSource, void* out_pDestination, unsigned int in_uiSize) override
    {
        ++m_iCalls;
        m_uBytes += in_uiSize;
        return CQxcGenericCopySSE2::FastCopy(in_pSource, out_pDestination, in_uiSize);
    }
    int m_iCalls = 0;
    size_t m_uBytes = 0;
};

TEST(GenericCopy, ContiguousCopyStreamsAlignedBuffersAndFallsBackOtherwise)
{
    std::mt19937 oRandom = SeededRandom("GenericCopy.Contiguous");
    struct SCase {
        unsigned int uiSize;
        size_t uSourceOffset, uDestinationOffset;
        bool bStreams;
    };
    const SCase asCases[] = {
        {4096 * 3 + 128 * 2 + 48, 0, 0, true},  // blocks, lines and a tail
        {4096, 0, 0, true},
        {16, 0, 0, true},
        {0, 0, 0, true},
        {100, 0, 0, false},  // size not a multiple of 16
        {4096, 8, 0, false},  // source off alignment
        {4096, 0, 8, false},  // destination off alignment
        {12345, 3, 5, false},
    };
    for (const SCase& c : asCases) {
        SCOPED_TRACE(testing::Message() << "size " << c.uiSize << " offsets " << c.uSourceOffset << "/"
                                        << c.uDestinationOffset);
        CGuardedBuffer oSource(c.uiSize, c.uSourceOffset), oDestination(c.uiSize, c.uDestinationOffset, 0x5A);
        oSource.FillRandom(oRandom);
        CCountingCopy oCopy;
        EXPECT_TRUE(oCopy.GenericCopy(oSource.Data(), oDestination.Data(), c.uiSize));
        EXPECT_EQ(oCopy.m_iCalls, c.bStreams ? 1 : 0);
        EXPECT_EQ(oSource.Bytes(), oDestination.Bytes());
        EXPECT_TRUE(oDestination.GuardsIntact());
    }
}

TEST(GenericCopy, FastCopyCopiesExactlyItsSizeForEverySplitOfBlocksLinesAndTail)
{
    std::mt19937 oRandom = SeededRandom("GenericCopy.FastCopy");
    CQxcGenericCopySSE2 oCopy;
    for (unsigned int uiSize = 0; uiSize <= 3 * 4096 + 256; uiSize += 16 * 7) {
        CGuardedBuffer oSource(uiSize), oDestination(uiSize);
        oSource.FillRandom(oRandom);
        ASSERT_TRUE(oCopy.FastCopy(oSource.Data(), oDestination.Data(), uiSize));
        ASSERT_EQ(oSource.Bytes(), oDestination.Bytes()) << "size " << uiSize;
        ASSERT_TRUE(oDestination.GuardsIntact()) << "size " << uiSize;
    }
}

TEST(GenericCopy, StridedCopyHonoursPitchesAndDirection)
{
    std::mt19937 oRandom = SeededRandom("GenericCopy.Strided");
    const unsigned int uiLines = 9;
    struct SCase {
        unsigned int uiLineBytes;
        int iSourcePitch, iDestinationPitch;
        bool bStreams;
    };
    const SCase asCases[] = {
        {1440, 1536, 1472, true},
        {1440, 1440, 1448, false},  // destination pitch not a multiple of 16
        {1440, 1444, 1440, false},
        {1437, 1440, 1440, false},
    };
    for (const SCase& c : asCases) {
        SCOPED_TRACE(testing::Message() << "line " << c.uiLineBytes << " pitches " << c.iSourcePitch << "/"
                                        << c.iDestinationPitch);
        CGuardedBuffer oSource(size_t(c.iSourcePitch) * uiLines);
        CGuardedBuffer oDestination(size_t(c.iDestinationPitch) * uiLines, 0, 0x77);
        oSource.FillRandom(oRandom);
        CCountingCopy oCopy;
        EXPECT_TRUE(oCopy.GenericCopy(oSource.Data(), c.iSourcePitch, oDestination.Data(),
                                      c.iDestinationPitch, c.uiLineBytes, uiLines));
        EXPECT_EQ(oCopy.m_iCalls, c.bStreams ? int(uiLines) : 0);
        for (unsigned int y = 0; y < uiLines; ++y) {
            const unsigned char* pucIn = oSource.Data() + size_t(y) * c.iSourcePitch;
            const unsigned char* pucOut = oDestination.Data() + size_t(y) * c.iDestinationPitch;
            ASSERT_EQ(0, std::memcmp(pucIn, pucOut, c.uiLineBytes)) << "line " << y;
            for (size_t x = c.uiLineBytes; x < size_t(c.iDestinationPitch); ++x)
                ASSERT_EQ(pucOut[x], 0x77) << "padding of line " << y << " written";
        }
        EXPECT_TRUE(oDestination.GuardsIntact());
    }

    // A negative destination pitch turns the picture upside down.
    CGuardedBuffer oSource(4 * 64), oDestination(4 * 64);
    oSource.FillRandom(oRandom);
    CCountingCopy oCopy;
    EXPECT_TRUE(oCopy.GenericCopy(oSource.Data(), 64, oDestination.Data() + 3 * 64, -64, 64, 4));
    EXPECT_EQ(oCopy.m_iCalls, 4);
    for (int y = 0; y < 4; ++y)
        EXPECT_EQ(0, std::memcmp(oSource.Data() + y * 64, oDestination.Data() + (3 - y) * 64, 64));
    EXPECT_TRUE(oDestination.GuardsIntact());

    // No lines, no bytes.
    CGuardedBuffer oUntouched(64, 0, 0x33);
    EXPECT_TRUE(oCopy.GenericCopy(oSource.Data(), 64, oUntouched.Data(), 64, 64, 0));
    EXPECT_EQ(oUntouched.Bytes(), std::vector<unsigned char>(64, 0x33));
}

TEST(GenericCopy, WeaveTakesEvenAndOddLinesFromTheRightFieldAndDropsAnOddLastLine)
{
    const unsigned int uiLineBytes = 40;
    const int iPitch = 48;
    // Field lines carry their field (1 or 2) and line number in every byte.
    CGuardedBuffer oFirst(3 * iPitch), oSecond(3 * iPitch);
    for (int y = 0; y < 3; ++y) {
        std::memset(oFirst.Data() + y * iPitch, 0x10 + y, iPitch);
        std::memset(oSecond.Data() + y * iPitch, 0x20 + y, iPitch);
    }
    CQxcGenericCopySSE2 oCopy;
    for (bool bFirstOnEven : {true, false}) {
        for (unsigned int uiFrameLines : {0u, 1u, 2u, 5u, 6u}) {
            SCOPED_TRACE(testing::Message() << "first on even " << bFirstOnEven << ", lines " << uiFrameLines);
            CGuardedBuffer oFrame(6 * iPitch, 0, 0xEE);
            EXPECT_TRUE(oCopy.GenericCopyInterlace(oFirst.Data(), iPitch, oSecond.Data(), iPitch, oFrame.Data(),
                                                   iPitch, uiLineBytes, uiFrameLines, bFirstOnEven));
            const unsigned int uiWritten = uiFrameLines < 2 ? 0 : uiFrameLines / 2 * 2;
            for (unsigned int y = 0; y < 6; ++y) {
                const bool bFromFirst = (y % 2 == 0) == bFirstOnEven;
                const unsigned char ucExpected =
                    y < uiWritten ? static_cast<unsigned char>((bFromFirst ? 0x10 : 0x20) + y / 2) : 0xEE;
                for (unsigned int x = 0; x < unsigned(iPitch); ++x)
                    ASSERT_EQ(oFrame[y * iPitch + x], x < uiLineBytes ? ucExpected : 0xEE)
                        << "line " << y << " byte " << x;
            }
            EXPECT_TRUE(oFrame.GuardsIntact());
        }
    }
}

TEST(GenericCopy, FactoryMakesTheStreamingCopierOwnedByTheCaller)
{
    std::unique_ptr<CQxcGenericCopy> pCopy(CQxcGenericCopyFactory::CreateGenericCopy());
    ASSERT_NE(pCopy, nullptr);
    EXPECT_NE(dynamic_cast<CQxcGenericCopySSE2*>(pCopy.get()), nullptr);
}

}  // namespace
