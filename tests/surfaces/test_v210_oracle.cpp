// v210 decoding against an outside decoder: FFmpeg's (libavcodec). The
// surfaces' v210 -> 16-bit 4:2:2 conversion must agree sample for sample.
#include <gtest/gtest.h>

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

    const AVFrame* pFrame = oDecoder.Decode(oV210.Data());
    ASSERT_NE(nullptr, pFrame);
    ASSERT_EQ(AV_PIX_FMT_YUV422P10LE, pFrame->format);
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
TEST(V210Oracle, DecodingAgreesWithFfmpegSampleForSample)
{
    ExpectAgreement(1920, 4, 1);
    ExpectAgreement(1280, 4, 2);  // lines padded to 128 bytes
    ExpectAgreement(720, 6, 3);
    ExpectAgreement(96, 5, 4);
    ExpectAgreement(208, 4, 5);  // a last block that is not a whole unit
}

#else

TEST(V210Oracle, DecodingAgreesWithFfmpegSampleForSample)
{
    GTEST_SKIP() << "libavcodec was not found when this was built: install libavcodec-dev to run the "
                    "v210 comparison with FFmpeg's decoder";
}

#endif

}  // namespace
