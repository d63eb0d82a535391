// FFmpeg's v210 decoder (libavcodec), an outside reference for v210
// decoding in the tests and a peer in the benchmarks. Present only where the
// build found libavcodec (QXT_HAVE_LIBAVCODEC).
#ifndef QXBASE_TESTS_SURFACES_FFMPEGV210_H
#define QXBASE_TESTS_SURFACES_FFMPEGV210_H

#ifdef QXT_HAVE_LIBAVCODEC

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavutil/frame.h>
#include <libavutil/pixfmt.h>
}

#include <cstdint>
#include <cstring>
#include <vector>

namespace NQxTest {

// Decodes whole v210 pictures of one size, single-threaded, into planar
// 4:2:2 10-bit (16-bit words).
class CFfmpegV210Decoder {
public:
    CFfmpegV210Decoder(int in_iWidth, int in_iHeight)
    {
        const AVCodec* pCodec = avcodec_find_decoder(AV_CODEC_ID_V210);
        if (pCodec == nullptr)
            return;
        m_pContext = avcodec_alloc_context3(pCodec);
        m_pFrame = av_frame_alloc();
        m_pPacket = av_packet_alloc();
        if (m_pContext == nullptr || m_pFrame == nullptr || m_pPacket == nullptr)
            return;
        m_pContext->width = in_iWidth;
        m_pContext->height = in_iHeight;
        m_pContext->thread_count = 1;
        m_bOpen = avcodec_open2(m_pContext, pCodec, nullptr) == 0;
        m_vucPacket.resize(static_cast<size_t>(Pitch(in_iWidth)) * in_iHeight + AV_INPUT_BUFFER_PADDING_SIZE);
    }
    ~CFfmpegV210Decoder()
    {
        av_packet_free(&m_pPacket);
        av_frame_free(&m_pFrame);
        avcodec_free_context(&m_pContext);
    }
    CFfmpegV210Decoder(const CFfmpegV210Decoder&) = delete;
    CFfmpegV210Decoder& operator=(const CFfmpegV210Decoder&) = delete;

    // The line length the decoder expects: whole 48-pixel runs.
    static long Pitch(int in_iWidth) { return (in_iWidth + 47) / 48 * 128L; }

    bool IsOpen() const { return m_bOpen; }

    // Decodes a picture of Pitch(width) x height bytes; the planes stay valid
    // until the next call.
    const AVFrame* Decode(const uint8_t* in_puc)
    {
        std::memcpy(m_vucPacket.data(), in_puc, m_vucPacket.size() - AV_INPUT_BUFFER_PADDING_SIZE);
        return DecodeInPlace(m_vucPacket.data());
    }

    // The same without the copy: in_puc must be followed by
    // AV_INPUT_BUFFER_PADDING_SIZE readable bytes.
    const AVFrame* DecodeInPlace(const uint8_t* in_puc)
    {
        m_pPacket->data = const_cast<uint8_t*>(in_puc);
        m_pPacket->size = static_cast<int>(m_vucPacket.size() - AV_INPUT_BUFFER_PADDING_SIZE);
        if (avcodec_send_packet(m_pContext, m_pPacket) != 0)
            return nullptr;
        return avcodec_receive_frame(m_pContext, m_pFrame) == 0 ? m_pFrame : nullptr;
    }

private:
    AVCodecContext* m_pContext = nullptr;
    AVFrame* m_pFrame = nullptr;
    AVPacket* m_pPacket = nullptr;
    std::vector<uint8_t> m_vucPacket;
    bool m_bOpen = false;
};

}  // namespace NQxTest

#endif  // QXT_HAVE_LIBAVCODEC
#endif  // QXBASE_TESTS_SURFACES_FFMPEGV210_H
