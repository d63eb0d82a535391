// qxbench: the buffer engine against memcpy and its peers (libyuv,
// libswscale, FFmpeg's v210 codec, each where the build found it), in one
// run, at 1080p and 2160p. Prints a Markdown table of frames per second
// and ratios; --plot FILE.png draws every contender's speed relative to
// memcpy as a bar chart.
//
// Every contender works on the same ring of frames, larger than the
// processor's caches as a stream of video is, and the contenders of one
// case take turns in several short rounds, so that they share the
// machine's state; each one's figure is the median of its rounds.
#include "tools/common/qxtoolargs.h"
#include "tools/common/qxtoolchart.h"
#include "tools/common/qxtoolengine.h"
#include "tools/common/qxtoolerror.h"
#include "tools/common/qxtoolformats.h"
#include "tools/common/qxtoolpng.h"

#ifdef QXB_HAVE_LIBYUV
#include <libyuv.h>
#endif
#if defined(QXB_HAVE_SWSCALE) || defined(QXB_HAVE_LIBAVCODEC)
extern "C" {
#include <libavutil/frame.h>
#include <libavutil/pixfmt.h>
#ifdef QXB_HAVE_SWSCALE
#include <libswscale/swscale.h>
#endif
#ifdef QXB_HAVE_LIBAVCODEC
#include <libavcodec/avcodec.h>
#endif
}
#endif

#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <ctime>
#include <fstream>
#include <functional>
#include <memory>
#include <random>
#include <string>
#include <vector>

using namespace NQxTool;

namespace {

const char kszUsage[] =
    "usage: qxbench [OPTIONS]\n"
    "\n"
    "Times the host buffer engine against memcpy, libyuv, libswscale and FFmpeg's v210 codec\n"
    "(each where present) in one run and prints a Markdown table of frames per second and ratios.\n"
    "\n"
    "  --sizes LIST      picture sizes, comma-separated (default 1080p,2160p; widths in multiples of 16)\n"
    "  --case TEXT       only the conversions whose name contains TEXT (may be repeated)\n"
    "  --seconds S       time given to each contender of each case (default 0.4)\n"
    "  --rounds N        rounds the time is cut into; the median round counts (default 5)\n"
    "  --plot FILE.png   draw every contender's speed relative to memcpy\n"
    "  --list            list the conversions and their contenders\n"
    "  -h, --help        this text\n";

typedef std::chrono::steady_clock TClock;

// The contenders, in the table's column order after memcpy.
enum EContender : int {
    keMemcpy = 0,
    keEngine = 1,
    keLibyuv = 2,
    keSwscale = 3,
    keFfmpeg = 4,
    keContenderCount = 5
};
const char* const kapszContenders[keContenderCount] = {"memcpy", "qxbase engine", "libyuv", "libswscale",
                                                       "FFmpeg v210"};

// Works on frame i of the ring.
typedef std::function<void(uint32_t)> TRunner;

// The frames of one case: a ring of source and destination pictures, and
// plain buffers for memcpy of the larger of the two frames.
struct SRing {
    std::vector<std::unique_ptr<CQxToolPicture>> vecSources;
    std::vector<std::unique_ptr<CQxToolPicture>> vecDestinations;
    std::vector<std::vector<uint8_t>> vecCopyFrom;
    std::vector<std::vector<uint8_t>> vecCopyTo;
    size_t uCopyBytes = 0;
};

void FillRandom(const CQxToolPicture& in_r, std::mt19937& io_rRandom)
{
    uint8_t* puc = in_r.GetBuffer();
    const size_t uBytes = in_r.GetSurface()->GetBufferSize();
    for (size_t i = 0; i + 4 <= uBytes; i += 4) {
        uint32_t ui = io_rRandom();
        // v210 words keep their top two bits clear.
        if (in_r.GetFormat().eFormat == keQxSurfaceFormatV210) ui &= 0x3FFFFFFF;
        std::memcpy(puc + i, &ui, 4);
    }
}

SRing MakeRing(const SQxToolFormat& in_rsFrom, const SQxToolFormat* in_psTo, uint32_t in_uiWidth,
               uint32_t in_uiHeight)
{
    SRing s;
    const EQxColorimetry eColorimetry = keQxColorimetryITUR_BT_709;
    std::mt19937 oRandom(2024);
    const size_t uFrame = size_t(in_uiWidth) * in_uiHeight * 4;
    // The ring spans at least 192 MiB, far beyond any last-level cache (small
    // pictures, which only check the tool, stop at 64 frames).
    const uint32_t uiCount =
        uint32_t(std::clamp<size_t>(((192u << 20) + 2 * uFrame - 1) / (2 * uFrame), 4, 64));
    for (uint32_t i = 0; i < uiCount; ++i) {
        s.vecSources.emplace_back(new CQxToolPicture(in_rsFrom, in_uiWidth, in_uiHeight, eColorimetry));
        FillRandom(*s.vecSources.back(), oRandom);
        if (in_psTo)
            s.vecDestinations.emplace_back(new CQxToolPicture(*in_psTo, in_uiWidth, in_uiHeight, eColorimetry));
    }
    s.uCopyBytes = s.vecSources[0]->GetSurface()->GetBufferSize();
    if (in_psTo) s.uCopyBytes = std::max<size_t>(s.uCopyBytes, s.vecDestinations[0]->GetSurface()->GetBufferSize());
    for (uint32_t i = 0; i < uiCount; ++i) {
        s.vecCopyFrom.emplace_back(s.uCopyBytes, uint8_t(i));
        s.vecCopyTo.emplace_back(s.uCopyBytes, uint8_t(0));
    }
    return s;
}

// --- Peers ------------------------------------------------------------------

#ifdef QXB_HAVE_SWSCALE
// One libswscale context between two packed formats of one size, on one
// thread, YUV at studio levels and RGB at full levels, BT.709.
class CSwscale {
public:
    CSwscale(AVPixelFormat in_eFrom, AVPixelFormat in_eTo, int in_iWidth, int in_iHeight)
        : m_iHeight(in_iHeight)
    {
        m_pContext = sws_getContext(in_iWidth, in_iHeight, in_eFrom, in_iWidth, in_iHeight, in_eTo, SWS_POINT,
                                    nullptr, nullptr, nullptr);
        if (!m_pContext) return;
        const int* piCoefficients = sws_getCoefficients(SWS_CS_ITU709);
        const bool bFromRgb = in_eFrom == AV_PIX_FMT_BGRA, bToRgb = in_eTo == AV_PIX_FMT_BGRA;
        sws_setColorspaceDetails(m_pContext, piCoefficients, bFromRgb ? 1 : 0, piCoefficients, bToRgb ? 1 : 0, 0,
                                 1 << 16, 1 << 16);
    }
    ~CSwscale() { sws_freeContext(m_pContext); }
    CSwscale(const CSwscale&) = delete;
    CSwscale& operator=(const CSwscale&) = delete;
    bool IsOpen() const { return m_pContext != nullptr; }
    void Run(const CQxToolPicture& in_rFrom, const CQxToolPicture& in_rTo)
    {
        const uint8_t* apucFrom[4] = {in_rFrom.GetBuffer(), nullptr, nullptr, nullptr};
        uint8_t* apucTo[4] = {in_rTo.GetBuffer(), nullptr, nullptr, nullptr};
        const int aiFrom[4] = {in_rFrom.GetPitch(), 0, 0, 0}, aiTo[4] = {in_rTo.GetPitch(), 0, 0, 0};
        sws_scale(m_pContext, apucFrom, aiFrom, 0, m_iHeight, apucTo, aiTo);
    }

private:
    SwsContext* m_pContext;
    int m_iHeight;
};
#endif

#ifdef QXB_HAVE_LIBAVCODEC
// FFmpeg's v210 decoder (v210 -> planar 10-bit 4:2:2) or encoder (the
// reverse), on one thread.
class CFfmpegV210 {
public:
    CFfmpegV210(bool in_bEncode, int in_iWidth, int in_iHeight)
    {
        const AVCodec* pCodec =
            in_bEncode ? avcodec_find_encoder(AV_CODEC_ID_V210) : avcodec_find_decoder(AV_CODEC_ID_V210);
        m_pContext = pCodec ? avcodec_alloc_context3(pCodec) : nullptr;
        m_pFrame = av_frame_alloc();
        m_pPacket = av_packet_alloc();
        if (!m_pContext || !m_pFrame || !m_pPacket) return;
        m_pContext->width = in_iWidth;
        m_pContext->height = in_iHeight;
        m_pContext->thread_count = 1;
        m_pContext->pix_fmt = AV_PIX_FMT_YUV422P10;
        m_pContext->time_base = AVRational{1, 25};
        if (avcodec_open2(m_pContext, pCodec, nullptr) != 0) return;
        if (in_bEncode) {
            m_pFrame->format = AV_PIX_FMT_YUV422P10;
            m_pFrame->width = in_iWidth;
            m_pFrame->height = in_iHeight;
            if (av_frame_get_buffer(m_pFrame, 64) != 0) return;
            for (int p = 0; p < 3; ++p)
                for (int y = 0; y < in_iHeight; ++y) {
                    uint16_t* pui = reinterpret_cast<uint16_t*>(m_pFrame->data[p] + y * m_pFrame->linesize[p]);
                    for (int x = 0; x < (p ? in_iWidth / 2 : in_iWidth); ++x) pui[x] = uint16_t((x * 7 + y) & 1023);
                }
        }
        m_bOpen = true;
    }
    ~CFfmpegV210()
    {
        av_packet_free(&m_pPacket);
        av_frame_free(&m_pFrame);
        avcodec_free_context(&m_pContext);
    }
    CFfmpegV210(const CFfmpegV210&) = delete;
    CFfmpegV210& operator=(const CFfmpegV210&) = delete;
    bool IsOpen() const { return m_bOpen; }

    // Decodes a v210 picture that is followed by the codec's padding.
    bool Decode(const uint8_t* in_puc, int in_iBytes)
    {
        m_pPacket->data = const_cast<uint8_t*>(in_puc);
        m_pPacket->size = in_iBytes;
        if (avcodec_send_packet(m_pContext, m_pPacket) != 0) return false;
        return avcodec_receive_frame(m_pContext, m_pFrame) == 0;
    }
    // Encodes the planar picture made at start.
    bool Encode()
    {
        if (avcodec_send_frame(m_pContext, m_pFrame) != 0) return false;
        const bool bOk = avcodec_receive_packet(m_pContext, m_pPacket) == 0;
        av_packet_unref(m_pPacket);
        return bOk;
    }

private:
    bool m_bOpen = false;
    AVCodecContext* m_pContext = nullptr;
    AVFrame* m_pFrame = nullptr;
    AVPacket* m_pPacket = nullptr;
};
#endif

// --- Cases --------------------------------------------------------------------

struct SCase {
    const char* pszName;
    const char* pszFrom;
    const char* pszTo;  // null: a clear of the source
};

const SCase kasCases[] = {
    {"copy yuyv8", "yuyv8", "yuyv8"},
    {"clear yuyv8", "yuyv8", nullptr},
    {"yuyv8 -> v210", "yuyv8", "v210"},
    {"v210 -> yuyv8", "v210", "yuyv8"},
    {"yuyv10 -> v210", "yuyv10", "v210"},
    {"v210 -> yuyv10", "v210", "yuyv10"},
    {"yuyv8 -> 2vuy", "yuyv8", "2vuy"},
    {"yuyv8 -> argb", "yuyv8", "argb"},
    {"argb -> yuyv8", "argb", "yuyv8"},
};

// What each peer does for a case, as a note under the table.
struct SPeerNote {
    const char* pszCase;
    EContender eContender;
    const char* pszNote;
};
const SPeerNote kasNotes[] = {
    {"yuyv10 -> v210", keFfmpeg, "FFmpeg's v210 encoder packs planar 10-bit 4:2:2 (yuv422p10)"},
    {"v210 -> yuyv10", keFfmpeg, "FFmpeg's v210 decoder unpacks to planar 10-bit 4:2:2 (yuv422p10)"},
    {"yuyv8 -> 2vuy", keLibyuv, "libyuv swaps the bytes of each pair with ARGBShuffle"},
    {"yuyv8 -> argb", keLibyuv, "libyuv's YUY2ToARGB has its BT.601 matrix only"},
    {"argb -> yuyv8", keLibyuv, "libyuv's ARGBToYUY2 has its BT.601 matrix only"},
};

struct SResult {
    std::string strCase;
    uint32_t uiWidth = 0, uiHeight = 0;
    double adFps[keContenderCount];
    std::string strEngineRefusal;
};

struct SOptions {
    std::vector<SQxToolSize> vecSizes;
    std::vector<std::string> vecCases;
    double dSeconds = 0.4;
    uint32_t uiRounds = 5;
    std::string strPlot;
    bool bList = false;
    bool bHelp = false;
};

bool Selected(const SOptions& in_rs, const char* in_pszCase)
{
    if (in_rs.vecCases.empty()) return true;
    for (const std::string& str : in_rs.vecCases)
        if (std::string(in_pszCase).find(str) != std::string::npos) return true;
    return false;
}

// The peers of a case, made for the ring; each entry's runner may be empty.
std::vector<std::pair<EContender, TRunner>> MakePeers(const SCase& in_rs, SRing& io_rRing, uint32_t in_uiWidth,
                                                      uint32_t in_uiHeight,
                                                      [[maybe_unused]] std::vector<std::shared_ptr<void>>& io_rKeep)
{
    std::vector<std::pair<EContender, TRunner>> vec;
    const std::string strCase = in_rs.pszName;
    [[maybe_unused]] const int w = int(in_uiWidth), h = int(in_uiHeight);
    [[maybe_unused]] auto Src = [&io_rRing](uint32_t i) -> const CQxToolPicture& { return *io_rRing.vecSources[i]; };
    [[maybe_unused]] auto Dst = [&io_rRing](uint32_t i) -> const CQxToolPicture& {
        return *io_rRing.vecDestinations[i];
    };
#ifdef QXB_HAVE_LIBYUV
    if (strCase == "yuyv8 -> argb")
        vec.emplace_back(keLibyuv, [=](uint32_t i) {
            libyuv::YUY2ToARGB(Src(i).GetBuffer(), Src(i).GetPitch(), Dst(i).GetBuffer(), Dst(i).GetPitch(), w, h);
        });
    if (strCase == "argb -> yuyv8")
        vec.emplace_back(keLibyuv, [=](uint32_t i) {
            libyuv::ARGBToYUY2(Src(i).GetBuffer(), Src(i).GetPitch(), Dst(i).GetBuffer(), Dst(i).GetPitch(), w, h);
        });
    if (strCase == "yuyv8 -> 2vuy") {
        static const uint8_t s_aucSwapPairs[16] = {1, 0, 3, 2, 5, 4, 7, 6, 9, 8, 11, 10, 13, 12, 15, 14};
        vec.emplace_back(keLibyuv, [=](uint32_t i) {
            libyuv::ARGBShuffle(Src(i).GetBuffer(), Src(i).GetPitch(), Dst(i).GetBuffer(), Dst(i).GetPitch(),
                                s_aucSwapPairs, w / 2, h);
        });
    }
#endif
#ifdef QXB_HAVE_SWSCALE
    struct SPair {
        const char* pszCase;
        AVPixelFormat eFrom, eTo;
    } const asSwscale[] = {{"yuyv8 -> argb", AV_PIX_FMT_YUYV422, AV_PIX_FMT_BGRA},
                           {"argb -> yuyv8", AV_PIX_FMT_BGRA, AV_PIX_FMT_YUYV422},
                           {"yuyv8 -> 2vuy", AV_PIX_FMT_YUYV422, AV_PIX_FMT_UYVY422}};
    for (const SPair& r : asSwscale) {
        if (strCase != r.pszCase) continue;
        std::shared_ptr<CSwscale> p = std::make_shared<CSwscale>(r.eFrom, r.eTo, w, h);
        if (!p->IsOpen()) continue;
        io_rKeep.push_back(p);
        vec.emplace_back(keSwscale, [=](uint32_t i) { p->Run(Src(i), Dst(i)); });
    }
#endif
#ifdef QXB_HAVE_LIBAVCODEC
    if (strCase == "v210 -> yuyv10") {
        std::shared_ptr<CFfmpegV210> p = std::make_shared<CFfmpegV210>(false, w, h);
        if (p->IsOpen()) {
            // The decoder reads whole packets with padding after them: its
            // own copies of the ring's v210 frames.
            auto pPackets = std::make_shared<std::vector<std::vector<uint8_t>>>();
            const int iBytes = int(Src(0).GetPitch()) * h;
            for (const auto& pSource : io_rRing.vecSources) {
                pPackets->emplace_back(size_t(iBytes) + AV_INPUT_BUFFER_PADDING_SIZE, uint8_t(0));
                std::memcpy(pPackets->back().data(), pSource->GetBuffer(), size_t(iBytes));
            }
            io_rKeep.push_back(p);
            io_rKeep.push_back(pPackets);
            vec.emplace_back(keFfmpeg, [=](uint32_t i) {
                if (!p->Decode((*pPackets)[i].data(), iBytes)) throw CQxToolError("FFmpeg's v210 decoder failed");
            });
        }
    }
    if (strCase == "yuyv10 -> v210") {
        std::shared_ptr<CFfmpegV210> p = std::make_shared<CFfmpegV210>(true, w, h);
        if (p->IsOpen()) {
            io_rKeep.push_back(p);
            vec.emplace_back(keFfmpeg, [=](uint32_t) {
                if (!p->Encode()) throw CQxToolError("FFmpeg's v210 encoder failed");
            });
        }
    }
#endif
    return vec;
}

// Frames per second of each contender: rounds in which every contender
// takes its turn, the median round of each.
std::vector<double> Time(const std::vector<TRunner>& in_vecRunners, uint32_t in_uiRingSize, const SOptions& in_rs)
{
    const size_t uCount = in_vecRunners.size();
    std::vector<std::vector<double>> vecRounds(uCount);
    std::vector<uint32_t> vecNext(uCount, 0);
    const double dTurn = in_rs.dSeconds / in_rs.uiRounds;
    // A first pass over two frames: code and tables in, page faults out.
    for (size_t c = 0; c < uCount; ++c)
        for (uint32_t i = 0; i < std::min<uint32_t>(2, in_uiRingSize); ++i) in_vecRunners[c](i);
    for (uint32_t r = 0; r < in_rs.uiRounds; ++r)
        for (size_t k = 0; k < uCount; ++k) {
            const size_t c = (k + r) % uCount;  // who goes first changes every round
            uint32_t uiFrames = 0;
            const TClock::time_point t0 = TClock::now();
            double dElapsed = 0.0;
            do {
                in_vecRunners[c](vecNext[c]);
                vecNext[c] = (vecNext[c] + 1) % in_uiRingSize;
                ++uiFrames;
                dElapsed = std::chrono::duration<double>(TClock::now() - t0).count();
            } while (dElapsed < dTurn || uiFrames < 2);
            vecRounds[c].push_back(uiFrames / dElapsed);
        }
    std::vector<double> vecFps;
    for (std::vector<double>& vec : vecRounds) {
        std::sort(vec.begin(), vec.end());
        vecFps.push_back(vec[vec.size() / 2]);
    }
    return vecFps;
}

SResult RunCase(const SCase& in_rs, const SQxToolSize& in_rsSize, CQxToolEngine& io_rEngine, const SOptions& in_rOptions)
{
    SResult sResult;
    sResult.strCase = in_rs.pszName;
    sResult.uiWidth = in_rsSize.uiWidth;
    sResult.uiHeight = in_rsSize.uiHeight;
    for (double& d : sResult.adFps) d = NAN;

    const SQxToolFormat& rsFrom = ParseFormat(in_rs.pszFrom);
    const SQxToolFormat* psTo = in_rs.pszTo ? &ParseFormat(in_rs.pszTo) : nullptr;
    SRing sRing = MakeRing(rsFrom, psTo, in_rsSize.uiWidth, in_rsSize.uiHeight);
    const uint32_t uiRing = uint32_t(sRing.vecSources.size());

    std::vector<EContender> vecWho;
    std::vector<TRunner> vecRunners;
    vecWho.push_back(keMemcpy);
    vecRunners.push_back([&sRing](uint32_t i) {
        std::memcpy(sRing.vecCopyTo[i].data(), sRing.vecCopyFrom[i].data(), sRing.uCopyBytes);
    });
    // The engine takes part when it does the conversion at all.
    try {
        if (psTo)
            io_rEngine.Copy(*sRing.vecSources[0], *sRing.vecDestinations[0], keQxFilterModeNearest);
        else
            io_rEngine.Clear(*sRing.vecSources[0], keQxColorBlue, 1.0f);
        vecWho.push_back(keEngine);
        if (psTo)
            vecRunners.push_back([&sRing, &io_rEngine](uint32_t i) {
                io_rEngine.Copy(*sRing.vecSources[i], *sRing.vecDestinations[i], keQxFilterModeNearest);
            });
        else
            vecRunners.push_back([&sRing, &io_rEngine](uint32_t i) {
                io_rEngine.Clear(*sRing.vecSources[i], keQxColorBlue, 1.0f);
            });
    } catch (const CQxToolError& e) {
        sResult.strEngineRefusal = e.what();
    }
    std::vector<std::shared_ptr<void>> vecKeep;
    for (auto& r : MakePeers(in_rs, sRing, in_rsSize.uiWidth, in_rsSize.uiHeight, vecKeep)) {
        vecWho.push_back(r.first);
        vecRunners.push_back(r.second);
    }
    const std::vector<double> vecFps = Time(vecRunners, uiRing, in_rOptions);
    for (size_t i = 0; i < vecWho.size(); ++i) sResult.adFps[vecWho[i]] = vecFps[i];
    return sResult;
}

// --- Report -------------------------------------------------------------------

std::string Cell(double in_d, const char* in_pszFormat)
{
    if (!std::isfinite(in_d)) return "—";
    char sz[32];
    std::snprintf(sz, sizeof(sz), in_pszFormat, in_d);
    return sz;
}

double BestPeer(const SResult& in_r)
{
    double d = NAN;
    for (int c = keLibyuv; c < keContenderCount; ++c)
        if (std::isfinite(in_r.adFps[c]) && !(in_r.adFps[c] <= d)) d = in_r.adFps[c];
    return d;
}

std::string Machine()
{
    std::ifstream file("/proc/cpuinfo");
    std::string strLine, strModel = "unknown processor";
    while (std::getline(file, strLine))
        if (strLine.compare(0, 10, "model name") == 0) {
            strModel = strLine.substr(strLine.find(':') + 2);
            break;
        }
    return strModel + ", " + std::to_string(sysconf(_SC_NPROCESSORS_ONLN)) + " cores";
}

void PrintTable(const std::vector<SResult>& in_vec, const std::string& in_strEngineOrigin)
{
    char szDate[32];
    const std::time_t t = std::time(nullptr);
    std::strftime(szDate, sizeof(szDate), "%Y-%m-%d", std::localtime(&t));
    printf("qxbench, %s, %s\n\n", szDate, Machine().c_str());
    printf("| conversion | size | memcpy | qxbase engine | libyuv | libswscale | FFmpeg v210 | engine ÷ memcpy | "
           "engine ÷ best peer |\n");
    printf("|---|---|---:|---:|---:|---:|---:|---:|---:|\n");
    for (const SResult& r : in_vec) {
        const double dEngine = r.adFps[keEngine];
        printf("| %s | %ux%u | %s | %s | %s | %s | %s | %s | %s |\n", r.strCase.c_str(), r.uiWidth, r.uiHeight,
               Cell(r.adFps[keMemcpy], "%.1f").c_str(), Cell(dEngine, "%.1f").c_str(),
               Cell(r.adFps[keLibyuv], "%.1f").c_str(), Cell(r.adFps[keSwscale], "%.1f").c_str(),
               Cell(r.adFps[keFfmpeg], "%.1f").c_str(), Cell(dEngine / r.adFps[keMemcpy], "%.2f").c_str(),
               Cell(dEngine / BestPeer(r), "%.2f").c_str());
    }
    printf("\nFrames per second, the median of the rounds. The engine runs its slices on all %ld cores "
           "(its work queue); memcpy and the peers run on one thread. memcpy moves the larger of the two frames. "
           "The engine was %s.\n",
           sysconf(_SC_NPROCESSORS_ONLN), in_strEngineOrigin.c_str());
    std::vector<std::string> vecNoted;
    for (const SResult& r : in_vec) {
        for (const SPeerNote& rNote : kasNotes)
            if (r.strCase == rNote.pszCase && std::isfinite(r.adFps[rNote.eContender]) &&
                std::find(vecNoted.begin(), vecNoted.end(), rNote.pszNote) == vecNoted.end()) {
                vecNoted.push_back(rNote.pszNote);
                printf("- %s: %s.\n", r.strCase.c_str(), rNote.pszNote);
            }
        if (!r.strEngineRefusal.empty() &&
            std::find(vecNoted.begin(), vecNoted.end(), r.strEngineRefusal) == vecNoted.end()) {
            vecNoted.push_back(r.strEngineRefusal);
            printf("- %s: %s.\n", r.strCase.c_str(), r.strEngineRefusal.c_str());
        }
    }
}

void Plot(const std::vector<SResult>& in_vec, const std::string& in_strPath)
{
    SQxToolChart sChart;
    sChart.strTitle = "qxbench: frames per second relative to memcpy";
    sChart.strAxis = "x memcpy (red line: memcpy = 1)";
    for (int c = keEngine; c < keContenderCount; ++c) sChart.vecSeries.push_back(kapszContenders[c]);
    for (const SResult& r : in_vec) {
        SQxToolChartRow sRow;
        sRow.strLabel = r.strCase + " " + std::to_string(r.uiHeight) + "p";
        for (int c = keEngine; c < keContenderCount; ++c) sRow.vecValues.push_back(r.adFps[c] / r.adFps[keMemcpy]);
        sChart.vecRows.push_back(sRow);
    }
    WritePng(in_strPath, DrawChart(sChart, nullptr));
}

SOptions Parse(int argc, char** argv)
{
    SOptions s;
    CQxToolArgs oArgs(argc, argv, 1);
    while (!oArgs.Done()) {
        const std::string str = oArgs.Next();
        if (str == "--sizes") {
            for (const std::string& strSize : SplitList(oArgs.Value(), "--sizes")) {
                const SQxToolSize sSize = ParseSize(strSize);
                if (sSize.uiWidth % 16 != 0)
                    throw UsageError("the width of " + strSize + " is not a multiple of 16, which v210 needs");
                s.vecSizes.push_back(sSize);
            }
        } else if (str == "--case") {
            s.vecCases.push_back(oArgs.Value());
        } else if (str == "--seconds") {
            const std::string strValue = oArgs.Value();
            char* pszEnd = nullptr;
            s.dSeconds = std::strtod(strValue.c_str(), &pszEnd);
            if (strValue.empty() || *pszEnd != '\0' || !(s.dSeconds > 0.0 && s.dSeconds <= 600.0))
                throw UsageError("bad time \"" + strValue + "\"; give seconds above 0, at most 600");
        } else if (str == "--rounds") {
            s.uiRounds = ParseCount(oArgs.Value(), "round count", 1, 1000);
        } else if (str == "--plot") {
            s.strPlot = oArgs.Value();
        } else if (str == "--list") {
            s.bList = true;
        } else if (str == "-h" || str == "--help") {
            s.bHelp = true;
        } else {
            throw UsageError((CQxToolArgs::IsOption(str) ? "unknown option " : "unexpected argument ") + str);
        }
    }
    oArgs.End();
    if (s.vecSizes.empty()) s.vecSizes = {ParseSize("1080p"), ParseSize("2160p")};
    bool bAny = false;
    for (const SCase& r : kasCases) bAny = bAny || Selected(s, r.pszName);
    if (!bAny) throw UsageError("no conversion matches the --case given; --list shows them");
    return s;
}

int Run(const SOptions& in_rs)
{
    CQxToolEngine oEngine(keQxToolEngineAny, false);
    if (in_rs.bList) {
        for (const SCase& r : kasCases) {
            SRing sRing = MakeRing(ParseFormat(r.pszFrom), r.pszTo ? &ParseFormat(r.pszTo) : nullptr, 64, 2);
            std::vector<std::shared_ptr<void>> vecKeep;
            std::string strPeers;
            for (auto& rPeer : MakePeers(r, sRing, 64, 2, vecKeep)) strPeers += std::string(", ") + kapszContenders[rPeer.first];
            printf("%-16s memcpy, qxbase engine%s\n", r.pszName, strPeers.c_str());
        }
        return keExitOk;
    }
    // A plot that cannot be written fails now, not after minutes of timing.
    if (!in_rs.strPlot.empty()) CheckWritable(in_rs.strPlot);
    std::vector<SResult> vecResults;
    for (const SCase& r : kasCases) {
        if (!Selected(in_rs, r.pszName)) continue;
        for (const SQxToolSize& sSize : in_rs.vecSizes) {
            fprintf(stderr, "qxbench: %s at %ux%u\n", r.pszName, sSize.uiWidth, sSize.uiHeight);
            vecResults.push_back(RunCase(r, sSize, oEngine, in_rs));
        }
    }
    PrintTable(vecResults, oEngine.GetOrigin());
    if (!in_rs.strPlot.empty()) Plot(vecResults, in_rs.strPlot);
    return keExitOk;
}

}  // namespace

int main(int argc, char** argv)
{
    return ToolMain("qxbench", [&] {
        const SOptions s = Parse(argc, argv);
        if (s.bHelp) {
            fputs(kszUsage, stdout);
            return int(keExitOk);
        }
        return Run(s);
    });
}
