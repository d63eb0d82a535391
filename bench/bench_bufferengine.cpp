// The buffer engine against its peers, measured in one run: CopySurface on
// 2 cores (the engine's work queue) against memcpy of the same bytes, the
// same kernels composed on one thread, and libyuv on one thread where it has
// the conversion; ClearSurface likewise; and the per-call overhead of a small
// copy. Each iteration times every contender on the same frames, one after
// the other, so that the ratios share the machine's state. Frames rotate
// through a ring larger than the last-level cache, as a stream of video
// frames does.
#include <qxbase/qxcengines.h>
#include <qxbase/qxchostsurface.h>
#include <qxbase/qxcsurfacefactory.h>

#include <benchmark/benchmark.h>
#include <libyuv.h>

#include <chrono>
#include <cstring>
#include <functional>
#include <memory>
#include <random>
#include <vector>

namespace {

typedef std::chrono::steady_clock TClock;

double Seconds(const std::function<void()>& in_fn)
{
    const TClock::time_point t0 = TClock::now();
    in_fn();
    return std::chrono::duration<double>(TClock::now() - t0).count();
}

struct SRelease {
    void operator()(IUnknown* p) const { p->Release(); }
};
typedef std::unique_ptr<CQxcHostSurface, SRelease> TSurface;

SQxSurfaceDescription Describe(EQxSurfaceFormat in_eFormat, uint32_t in_uiBits, uint32_t in_uiWidth,
                               uint32_t in_uiHeight)
{
    return CQxcHostSurface::MakeDescription(in_eFormat, in_uiBits, in_uiWidth, in_uiHeight);
}

TSurface Allocate(const SQxSurfaceDescription& in_rs)
{
    CQxcHostSurface* p = nullptr;
    CQxcHostSurface::CreateAllocated(in_rs, nullptr, &p);
    return TSurface(p);
}

IQxcBufferEngine* Engine()
{
    static IQxcBufferEngine* s_pEngine = [] {
        HRESULT hr = S_OK;
        CQxUnknown* pUnknown = CQxcBufferEngineFactory::CreateInstance(nullptr, &hr);
        IQxcBufferEngineFactory* pFactory = nullptr;
        pUnknown->NonDelegatingAddRef();
        pUnknown->NonDelegatingQueryInterface(IID_IQxcBufferEngineFactory, reinterpret_cast<void**>(&pFactory));
        pUnknown->NonDelegatingRelease();
        IQxcBufferEngine* pEngine = nullptr;
        pFactory->CreateBufferEngine(nullptr, &pEngine);
        pFactory->Release();
        return pEngine;
    }();
    return s_pEngine;
}

struct SFormat {
    EQxSurfaceFormat eFormat;
    uint32_t uiBits;
    const char* pszName;
};
const SFormat kYuyv{keQxSurfaceFormatYUYV422, 8, "YUYV"};
const SFormat kV210{keQxSurfaceFormatV210, 10, "v210"};
const SFormat kRgba{keQxSurfaceFormatARGBGraphic, 8, "RGBA"};

// The frames of one case: a ring of sources and destinations, and buffers
// for memcpy of the larger of the two frame sizes.
struct SFrames {
    SFrames(const SFormat& in_rsSource, const SFormat& in_rsDestination, uint32_t in_uiWidth, uint32_t in_uiHeight)
    {
        const size_t uFrame = size_t(in_uiWidth) * in_uiHeight * 4;
        uiCount = uint32_t(std::max<size_t>(6, (192u << 20) / (2 * uFrame)));  // the ring spans 192 MiB or more
        std::mt19937 oRandom(7);
        for (uint32_t i = 0; i < uiCount; ++i) {
            vSources.push_back(Allocate(Describe(in_rsSource.eFormat, in_rsSource.uiBits, in_uiWidth, in_uiHeight)));
            vDestinations.push_back(
                Allocate(Describe(in_rsDestination.eFormat, in_rsDestination.uiBits, in_uiWidth, in_uiHeight)));
            CQxcHostSurface* p = vSources.back().get();
            for (uint32_t b = 0; b < p->GetBufferSize(); ++b) p->GetBuffer()[b] = uint8_t(oRandom());
            if (in_rsSource.eFormat == keQxSurfaceFormatV210)
                for (uint32_t b = 3; b < p->GetBufferSize(); b += 4) p->GetBuffer()[b] &= 0x3F;
        }
        uBytes = std::max(vSources[0]->GetBufferSize(), vDestinations[0]->GetBufferSize());
        for (uint32_t i = 0; i < uiCount; ++i) {
            vMemcpyFrom.emplace_back(uBytes, uint8_t(i));
            vMemcpyTo.emplace_back(uBytes, 0);
        }
    }
    uint32_t uiCount;
    std::vector<TSurface> vSources, vDestinations;
    size_t uBytes;
    std::vector<std::vector<uint8_t>> vMemcpyFrom, vMemcpyTo;
};

// The surfaces' kernels composed on the calling thread, line by line, as a
// slice does: through the 16-bit 4:2:2 line into v210, through the unshaped
// 16-bit 4:2:2:4 line otherwise; RGB through one buffer-surface copy.
class COneThread {
public:
    COneThread(const SFormat& in_rsSource, const SFormat& in_rsDestination)
    {
        const CQxcSurfaceFactory oFactory;
        m_bBuffers = in_rsSource.eFormat == keQxSurfaceFormatARGBGraphic ||
                     in_rsDestination.eFormat == keQxSurfaceFormatARGBGraphic;
        m_pSource.reset(Create(oFactory, in_rsSource, m_bBuffers));
        m_pDestination.reset(Create(oFactory, in_rsDestination, m_bBuffers));
        m_pMiddle.reset(in_rsDestination.eFormat == keQxSurfaceFormatV210
                            ? static_cast<CQxcSurface*>(oFactory.CreateYCbCr422_16bitsSurface(true))
                            : oFactory.CreateYCbCrA4224_16bits_UnshapedSurface(true));
    }
    bool Ready() const { return m_pSource && m_pDestination; }

    void Run(CQxcHostSurface* in_pSource, CQxcHostSurface* in_pDestination)
    {
        const SQxSurfaceDescription& s = in_pSource->GetDescription();
        const SQxSurfaceDescription& d = in_pDestination->GetDescription();
        Bind(m_pSource.get(), in_pSource);
        Bind(m_pDestination.get(), in_pDestination);
        m_pMiddle->Initialize(m_aucLine, s.ulWidth, 1, sizeof(m_aucLine), false, s.eColorimetry);
        const unsigned uiBlocks = (s.ulWidth + 15) / 16;
        for (unsigned y = 0; y < s.ulHeight && y < d.ulHeight; ++y) {
            m_pSource->SetPosition(0, y);
            m_pDestination->SetPosition(0, y);
            if (m_bBuffers) {
                static_cast<CQxcBufferSurface*>(m_pDestination.get())->CopyFrom(m_pSource.get(), s.ulWidth, 1);
                continue;
            }
            m_pMiddle->SetPosition(0, 0);
            m_pMiddle->CopyBlocksFrom(m_pSource.get(), uiBlocks, 1);
            m_pMiddle->SetPosition(0, 0);
            m_pDestination->CopyBlocksFrom(m_pMiddle.get(), uiBlocks, 1);
        }
    }

private:
    // Block surfaces, or the buffer surfaces of the RGB pairs.
    static CQxcSurface* Create(const CQxcSurfaceFactory& in_ro, const SFormat& in_rs, bool in_bBuffers)
    {
        switch (in_rs.eFormat) {
        case keQxSurfaceFormatYUYV422:
            return in_bBuffers ? static_cast<CQxcSurface*>(in_ro.CreateYCbCr422_8bits_BufferSurface(false))
                               : in_ro.CreateYCbCr422_8bitsSurface(false);
        case keQxSurfaceFormatV210: return in_ro.CreateV210_10bitsSurface(false);
        case keQxSurfaceFormatARGBGraphic: return in_ro.CreateRGBA_8bits_UnshapedBufferSurface(false);
        default: return nullptr;
        }
    }
    static void Bind(CQxcSurface* in_pSurface, CQxcHostSurface* in_pHost)
    {
        const SQxSurfaceDescription& s = in_pHost->GetDescription();
        const EQxColorimetry eColorimetry = keQxColorimetryITUR_BT_709;
        if (CQxcBufferSurface* p = dynamic_cast<CQxcBufferSurface*>(in_pSurface))
            p->Initialize(in_pHost->GetBuffer(), s.ulWidth, s.ulHeight, s.lPitch, false, eColorimetry,
                          s.eSurfaceFormat == keQxSurfaceFormatARGBGraphic ? keQxcColorRangeGraphic
                                                                          : keQxcColorRangeYuv);
        else
            in_pSurface->Initialize(in_pHost->GetBuffer(), s.ulWidth, s.ulHeight, s.lPitch, false, eColorimetry);
    }

    std::unique_ptr<CQxcSurface> m_pSource, m_pDestination, m_pMiddle;
    bool m_bBuffers = false;
    alignas(64) unsigned char m_aucLine[49152];
};

// libyuv on one thread, where it has the conversion (its YUYV/RGB matrices
// are BT.601: the same work, other coefficients).
std::function<void(CQxcHostSurface*, CQxcHostSurface*)> PeerOf(const SFormat& in_rsSource,
                                                               const SFormat& in_rsDestination)
{
    auto fnPlane = [](CQxcHostSurface* p) { return p->GetBuffer(); };
    if (in_rsSource.eFormat == in_rsDestination.eFormat)
        return [fnPlane](CQxcHostSurface* s, CQxcHostSurface* d) {
            libyuv::CopyPlane(fnPlane(s), s->GetPitch(), fnPlane(d), d->GetPitch(),
                              int(CQxcHostSurface::GetLineBytes(s->GetDescription().eSurfaceFormat,
                                                                s->GetDescription().ulComponentBitCount,
                                                                s->GetDescription().ulWidth)),
                              int(s->GetDescription().ulHeight));
        };
    if (in_rsSource.eFormat == keQxSurfaceFormatYUYV422 && in_rsDestination.eFormat == keQxSurfaceFormatARGBGraphic)
        return [fnPlane](CQxcHostSurface* s, CQxcHostSurface* d) {
            libyuv::YUY2ToARGB(fnPlane(s), s->GetPitch(), fnPlane(d), d->GetPitch(), int(s->GetDescription().ulWidth),
                               int(s->GetDescription().ulHeight));
        };
    if (in_rsSource.eFormat == keQxSurfaceFormatARGBGraphic && in_rsDestination.eFormat == keQxSurfaceFormatYUYV422)
        return [fnPlane](CQxcHostSurface* s, CQxcHostSurface* d) {
            libyuv::ARGBToYUY2(fnPlane(s), s->GetPitch(), fnPlane(d), d->GetPitch(), int(s->GetDescription().ulWidth),
                               int(s->GetDescription().ulHeight));
        };
    return nullptr;
}

void CopySurface(benchmark::State& io_rState, SFormat in_sSource, SFormat in_sDestination, uint32_t in_uiWidth,
                 uint32_t in_uiHeight)
{
    SFrames oFrames(in_sSource, in_sDestination, in_uiWidth, in_uiHeight);
    IQxcBufferEngine* pEngine = Engine();
    SQxRect sRect{0, 0, int32_t(in_uiWidth), int32_t(in_uiHeight)};
    if (pEngine->CopySurface(oFrames.vSources[0].get(), &sRect, oFrames.vDestinations[0].get(), &sRect,
                             keQxFilterModeNearest) != S_OK) {
        io_rState.SkipWithError("the engine does not convert this pair yet");
        return;
    }
    COneThread oOneThread(in_sSource, in_sDestination);
    const bool bSameType = in_sSource.eFormat == in_sDestination.eFormat;
    auto fnPeer = PeerOf(in_sSource, in_sDestination);
    double dEngine = 0, dMemcpy = 0, dOneThread = 0, dPeer = 0;
    uint32_t i = 0;
    for (auto _ : io_rState) {
        i = (i + 1) % oFrames.uiCount;
        CQxcHostSurface* pSource = oFrames.vSources[i].get();
        CQxcHostSurface* pDestination = oFrames.vDestinations[i].get();
        const double d = Seconds([&] {
            pEngine->CopySurface(pSource, &sRect, pDestination, &sRect, keQxFilterModeNearest);
        });
        io_rState.SetIterationTime(d);
        dEngine += d;
        dMemcpy += Seconds([&] {
            std::memcpy(oFrames.vMemcpyTo[i].data(), oFrames.vMemcpyFrom[i].data(), oFrames.uBytes);
            benchmark::ClobberMemory();
        });
        // The other contenders work on frames of the ring that the engine
        // has not just brought into the cache.
        const uint32_t j = (i + oFrames.uiCount / 3) % oFrames.uiCount;
        const uint32_t k = (i + 2 * oFrames.uiCount / 3) % oFrames.uiCount;
        if (!bSameType && oOneThread.Ready())
            dOneThread += Seconds([&] { oOneThread.Run(oFrames.vSources[j].get(), oFrames.vDestinations[j].get()); });
        if (fnPeer) dPeer += Seconds([&] { fnPeer(oFrames.vSources[k].get(), oFrames.vDestinations[k].get()); });
    }
    const double dIterations = double(io_rState.iterations());
    io_rState.counters["fps"] = dIterations / dEngine;
    io_rState.counters["x_memcpy"] = dMemcpy / dEngine;
    if (dOneThread > 0) io_rState.counters["x_1thread"] = dOneThread / dEngine;
    if (dPeer > 0) io_rState.counters["x_libyuv"] = dPeer / dEngine;
}

void ClearSurface(benchmark::State& io_rState, uint32_t in_uiWidth, uint32_t in_uiHeight)
{
    SFrames oFrames(kYuyv, kYuyv, in_uiWidth, in_uiHeight);
    IQxcBufferEngine* pEngine = Engine();
    double dEngine = 0, dMemset = 0, dPeer = 0;
    uint32_t i = 0;
    for (auto _ : io_rState) {
        i = (i + 1) % oFrames.uiCount;
        CQxcHostSurface* pSurface = oFrames.vDestinations[i].get();
        const double d = Seconds([&] { pEngine->ClearSurface(pSurface, keQxColorBlack, 1.0f); });
        io_rState.SetIterationTime(d);
        dEngine += d;
        // memset of the same bytes, and libyuv filling the frame as 32-bit
        // pixels (a YUYV pair is one 32-bit value).
        dMemset += Seconds([&] {
            std::memset(oFrames.vMemcpyTo[i].data(), 0x10, pSurface->GetBufferSize());
            benchmark::ClobberMemory();
        });
        CQxcHostSurface* pOther = oFrames.vDestinations[(i + oFrames.uiCount / 2) % oFrames.uiCount].get();
        dPeer += Seconds([&] {
            libyuv::ARGBRect(pOther->GetBuffer(), pOther->GetPitch(), 0, 0, int(in_uiWidth / 2), int(in_uiHeight),
                             0x80108010u);
        });
    }
    io_rState.counters["fps"] = double(io_rState.iterations()) / dEngine;
    io_rState.counters["x_memset"] = dMemset / dEngine;
    io_rState.counters["x_libyuv"] = dPeer / dEngine;
}

// The per-call cost of the engine on a 64x16 copy, with the kernels' own
// time on one thread beside it: the difference is the engine's overhead.
void SmallCopy(benchmark::State& io_rState, SFormat in_sSource, SFormat in_sDestination)
{
    auto pSource = Allocate(Describe(in_sSource.eFormat, in_sSource.uiBits, 64, 16));
    auto pDestination = Allocate(Describe(in_sDestination.eFormat, in_sDestination.uiBits, 64, 16));
    COneThread oOneThread(in_sSource, in_sDestination);
    IQxcBufferEngine* pEngine = Engine();
    SQxRect sRect{0, 0, 64, 16};
    double dEngine = 0, dOneThread = 0;
    for (auto _ : io_rState) {
        const double d = Seconds([&] {
            pEngine->CopySurface(pSource.get(), &sRect, pDestination.get(), &sRect, keQxFilterModeNearest);
        });
        io_rState.SetIterationTime(d);
        dEngine += d;
        if (in_sSource.eFormat != in_sDestination.eFormat)
            dOneThread += Seconds([&] { oOneThread.Run(pSource.get(), pDestination.get()); });
    }
    const double dIterations = double(io_rState.iterations());
    io_rState.counters["us_per_call"] = 1e6 * dEngine / dIterations;
    if (dOneThread > 0) io_rState.counters["us_overhead"] = 1e6 * (dEngine - dOneThread) / dIterations;
}

void Register()
{
    struct SCase {
        const char* pszName;
        SFormat sSource, sDestination;
    };
    const SCase asCases[] = {{"YUYV_to_v210", kYuyv, kV210},  {"v210_to_YUYV", kV210, kYuyv},
                             {"YUYV_to_RGBA709", kYuyv, kRgba}, {"RGBA_to_YUYV", kRgba, kYuyv},
                             {"YUYV_to_YUYV", kYuyv, kYuyv}};
    const uint32_t auiSizes[][2] = {{1920, 1080}, {3840, 2160}};
    for (const SCase& c : asCases)
        for (const auto& s : auiSizes)
            benchmark::RegisterBenchmark(
                (std::string("CopySurface/") + c.pszName + "/" + std::to_string(s[0]) + "x" + std::to_string(s[1]))
                    .c_str(),
                CopySurface, c.sSource, c.sDestination, s[0], s[1])
                ->UseManualTime()
                ->Unit(benchmark::kMillisecond);
    for (const auto& s : auiSizes)
        benchmark::RegisterBenchmark(
            (std::string("ClearSurface/YUYV/") + std::to_string(s[0]) + "x" + std::to_string(s[1])).c_str(),
            ClearSurface, s[0], s[1])
            ->UseManualTime()
            ->Unit(benchmark::kMillisecond);
    benchmark::RegisterBenchmark("CopySurface64x16/YUYV_to_v210", SmallCopy, kYuyv, kV210)
        ->UseManualTime()
        ->Unit(benchmark::kMicrosecond);
    benchmark::RegisterBenchmark("CopySurface64x16/YUYV_to_YUYV", SmallCopy, kYuyv, kYuyv)
        ->UseManualTime()
        ->Unit(benchmark::kMicrosecond);
}

}  // namespace

int main(int argc, char** argv)
{
    Register();
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
