// v210 against an outside decoder: FFmpeg's (libavcodec). The surfaces'
// v210 -> 16-bit 4:2:2 conversion must agree with it sample for sample, and
// what the 16-bit 4:2:2 -> v210 packer writes must decode, in FFmpeg, to
// the samples it was given.
#include <gtest/gtest.h>

#include <algorithm>
#include <vector>

#include "tests/surfaces/ffmpegv210.h"
#include "tests/surfaces/surfacetesthelpers.h"

using namespace NQxTest;

namespace {

#ifdef QXT_HAVE_LIBAVCODEC

void ExpectAgreement(int in_iWidth, int in_iHeight, uint32_t in_uiSeed)
{
    CFfmpegV210Decoder oDecoder(in_iWidth, in_iHeight);
    ASSERT_TRUE(oDecoder.IsOpen()) << "libavcodec has no v210 decoder";
    const long lPitch = CFfmpegV210Decoder::Pitch(in_iWidth);
    CPicture oV210(lPitch, in_iHeight);
    std::mt19937 oRandom(in_uiSeed);
    FillRandom(oV210.Data(), oV210.Bytes(), oRandom);
    // v210 words carry three 10-bit fields; the top two bits are zero.
    for (size_t ui = 3; ui < oV210.Bytes(); ui += 4)
        oV210.Data()[ui] &= 0x3f;

    const unsigned uiBlocks = (in_iWidth + 15) / 16;
    CPicture o16(64 * uiBlocks, in_iHeight);
    auto pSource = CreateSurface(keQxcSurfaceTypeV210_10bits, false);
    auto pDestination = CreateSurface(keQxcSurfaceTypeYCbCr422_16bits, false);
    pSource->Initialize(oV210.Data(), in_iWidth, in_iHeight, lPitch, false, keQxColorimetryITUR_BT_709);
    pDestination->Initialize(o16.Data(), in_iWidth, in_iHeight, o16.Pitch(), false, keQxColorimetryITUR_BT_709);
    ASSERT_TRUE(pDestination->CopyBlocksFrom(pSource.get(), uiBlocks, in_iHeight));

    // Packed again by the surfaces into a picture that starts out non-zero,
    // so that a sample the packer leaves out shows.
    CPicture oPacked(lPitch, in_iHeight);
    std::memset(oPacked.Data(), 0x5a, oPacked.Bytes());
    auto pPacker = CreateSurface(keQxcSurfaceTypeV210_10bits, false);
    auto pUnpacked = CreateSurface(keQxcSurfaceTypeYCbCr422_16bits, false);
    pUnpacked->Initialize(o16.Data(), in_iWidth, in_iHeight, o16.Pitch(), false, keQxColorimetryITUR_BT_709);
    pPacker->Initialize(oPacked.Data(), in_iWidth, in_iHeight, lPitch, false, keQxColorimetryITUR_BT_709);
    ASSERT_TRUE(pPacker->CopyBlocksFrom(pUnpacked.get(), uiBlocks, in_iHeight));
    std::vector<std::vector<uint16_t>> vPlanesOfPacked;
    {
        const AVFrame* pFrame = oDecoder.Decode(oPacked.Data());
        ASSERT_NE(nullptr, pFrame);
        for (int p = 0; p < 3; ++p) {
            const int iSamples = p == 0 ? in_iWidth : (in_iWidth + 1) / 2;
            for (int y = 0; y < in_iHeight; ++y) {
                const uint16_t* pus = reinterpret_cast<const uint16_t*>(pFrame->data[p] + y * pFrame->linesize[p]);
                vPlanesOfPacked.emplace_back(pus, pus + iSamples);
            }
        }
    }

    const AVFrame* pFrame = oDecoder.Decode(oV210.Data());
    ASSERT_NE(nullptr, pFrame);
    ASSERT_EQ(AV_PIX_FMT_YUV422P10LE, pFrame->format);
    for (int p = 0; p < 3; ++p)
        for (int y = 0; y < in_iHeight; ++y) {
            const uint16_t* pus = reinterpret_cast<const uint16_t*>(pFrame->data[p] + y * pFrame->linesize[p]);
            const std::vector<uint16_t>& v = vPlanesOfPacked[size_t(p * in_iHeight + y)];
            ASSERT_TRUE(std::equal(v.begin(), v.end(), pus))
                << "packed plane " << p << " line " << y << " width " << in_iWidth;
        }
    for (int y = 0; y < in_iHeight; ++y) {
        const uint8_t* pucLine = o16.Line(y);
        const uint16_t* pusY = reinterpret_cast<const uint16_t*>(pFrame->data[0] + y * pFrame->linesize[0]);
        const uint16_t* pusCb = reinterpret_cast<const uint16_t*>(pFrame->data[1] + y * pFrame->linesize[1]);
        const uint16_t* pusCr = reinterpret_cast<const uint16_t*>(pFrame->data[2] + y * pFrame->linesize[2]);
        for (int x = 0; x < in_iWidth; ++x) {
            const uint8_t* pucBlock = pucLine + 64 * (x / 16);
            uint16_t usY, usCb, usCr;
            std::memcpy(&usY, pucBlock + 2 * (x % 16), 2);
            std::memcpy(&usCb, pucBlock + 32 + 2 * (x % 16 / 2), 2);
            std::memcpy(&usCr, pucBlock + 48 + 2 * (x % 16 / 2), 2);
            ASSERT_EQ(pusY[x], usY) << "Y at " << x << "," << y << " width " << in_iWidth;
            if (x % 2 == 0) {
                ASSERT_EQ(pusCb[x / 2], usCb) << "Cb at " << x << "," << y << " width " << in_iWidth;
                ASSERT_EQ(pusCr[x / 2], usCr) << "Cr at " << x << "," << y << " width " << in_iWidth;
            }
        }
    }
}

// Heights of at least 4: the decoder splits a picture into slices of at
// least four lines and decodes nothing of a shorter one.
TEST(V210Oracle, DecodingAndPackingAgreeWithFfmpegSampleForSample)
{
    ExpectAgreement(1920, 4, 1);
    ExpectAgreement(1280, 4, 2);  // lines padded to 128 bytes
    ExpectAgreement(720, 6, 3);
    ExpectAgreement(96, 5, 4);
    ExpectAgreement(208, 4, 5);  // a last block that is not a whole unit
}

#else

TEST(V210Oracle, DecodingAndPackingAgreeWithFfmpegSampleForSample)
{
    GTEST_SKIP() << "libavcodec was not found when this was built: install libavcodec-dev to run the "
                    "v210 comparison with FFmpeg's decoder";
}

#endif

}  // namespace
