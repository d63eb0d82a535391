// The RGB path of the copy service, single thread: 8-bit YUYV to RGBA and
// RGBA to YUYV at BT.709 (RGB at graphics levels) on 1920x1080 and 3840x2160
// pictures, against libyuv's packed conversions in the same run, once with
// libyuv's best path on this machine and once held to SSSE3 and below. Our
// kernels run as the engine runs them (streaming stores) and with cached
// stores, as libyuv writes. libyuv's packed conversions use their BT.601
// constants: the work per pixel is the same whatever the constants.
//
// The ratios printed after the run are time(libyuv) / time(ours), CPU time
// of the benchmark's thread (the machine is shared): above 1, ours is
// faster. Run with --benchmark_repetitions=N for medians.
#include <benchmark/benchmark.h>

#include <libyuv.h>

#include <qxbase/qxcsurfacefactory.h>

#include "bench/qxbenchpictures.h"
#include "bench/qxbenchratios.h"

#include <cstdlib>
#include <cstring>
#include <memory>
#include <random>
#include <string>

namespace {

// A picture of random bytes.
struct SPicture : SBuffer {
    SPicture(unsigned in_uiPitch, unsigned in_uiHeight) : SBuffer(size_t(in_uiPitch) * in_uiHeight), uiPitch(in_uiPitch)
    {
        std::mt19937 oRandom(7);
        for (size_t ui = 0; ui < size_t(in_uiPitch) * in_uiHeight; ++ui)
            puc[ui] = static_cast<uint8_t>(oRandom());
    }
    unsigned uiPitch;
};

const int kiHeldToSsse3 = libyuv::kCpuInitialized | libyuv::kCpuHasX86 | libyuv::kCpuHasSSE2 | libyuv::kCpuHasSSSE3;

enum EDirection { keToRgba, keToYuyv };

void RunOurs(benchmark::State& io_rState, EDirection in_e, bool in_bCached, const SResolution& in_rs)
{
    SPicture oYuyv(2 * in_rs.uiWidth, in_rs.uiHeight), oRgba(4 * in_rs.uiWidth, in_rs.uiHeight);
    const CQxcSurfaceFactory oFactory;
    std::unique_ptr<CQxcBufferSurface> pYuyv(oFactory.CreateYCbCr422_8bits_BufferSurface(in_e == keToRgba || in_bCached));
    std::unique_ptr<CQxcBufferSurface> pRgba(oFactory.CreateRGBA_8bits_UnshapedBufferSurface(in_e == keToYuyv || in_bCached));
    pYuyv->Initialize(oYuyv.puc, in_rs.uiWidth, in_rs.uiHeight, oYuyv.uiPitch, false, keQxColorimetryITUR_BT_709,
                      keQxcColorRangeYuv);
    pRgba->Initialize(oRgba.puc, in_rs.uiWidth, in_rs.uiHeight, oRgba.uiPitch, true, keQxColorimetryITUR_BT_709,
                      keQxcColorRangeGraphic);
    CQxcBufferSurface* pDestination = in_e == keToRgba ? pRgba.get() : pYuyv.get();
    const CQxcBufferSurface* pSource = in_e == keToRgba ? pYuyv.get() : pRgba.get();
    for (auto _ : io_rState) {
        pDestination->SetPosition(0, 0);
        if (!pDestination->CopyFrom(pSource, in_rs.uiWidth, in_rs.uiHeight)) {
            io_rState.SkipWithError("the conversion was refused");
            break;
        }
        benchmark::ClobberMemory();
    }
}

void RunLibyuv(benchmark::State& io_rState, EDirection in_e, bool in_bHeld, const SResolution& in_rs)
{
    SPicture oYuyv(2 * in_rs.uiWidth, in_rs.uiHeight), oRgba(4 * in_rs.uiWidth, in_rs.uiHeight);
    libyuv::MaskCpuFlags(in_bHeld ? kiHeldToSsse3 : -1);
    for (auto _ : io_rState) {
        if (in_e == keToRgba)
            libyuv::YUY2ToARGB(oYuyv.puc, int(oYuyv.uiPitch), oRgba.puc, int(oRgba.uiPitch), int(in_rs.uiWidth),
                               int(in_rs.uiHeight));
        else
            libyuv::ARGBToYUY2(oRgba.puc, int(oRgba.uiPitch), oYuyv.puc, int(oYuyv.uiPitch), int(in_rs.uiWidth),
                               int(in_rs.uiHeight));
        benchmark::ClobberMemory();
    }
    libyuv::MaskCpuFlags(-1);
}

}  // namespace

int main(int argc, char** argv)
{
    CQxBenchRatios oReporter(true);
    for (const SResolution& rs : kasResolutions) {
        for (EDirection e : {keToRgba, keToYuyv}) {
            const std::string strWhat = std::string(e == keToRgba ? "YUYV->RGBA" : "RGBA->YUYV") + " " + rs.pszName;
            const std::string strStream = strWhat + " ours, streaming";
            const std::string strCached = strWhat + " ours, cached";
            const std::string strBest = strWhat + " libyuv best";
            const std::string strHeld = strWhat + " libyuv SSSE3";
            for (const std::string* p : {&strStream, &strCached, &strBest, &strHeld}) {
                benchmark::internal::Benchmark* pBench =
                    p == &strStream   ? benchmark::RegisterBenchmark(p->c_str(), RunOurs, e, false, rs)
                    : p == &strCached ? benchmark::RegisterBenchmark(p->c_str(), RunOurs, e, true, rs)
                                      : benchmark::RegisterBenchmark(p->c_str(), RunLibyuv, e, p == &strHeld, rs);
                pBench->Unit(benchmark::kMillisecond);
            }
            for (const std::string* p : {&strStream, &strCached}) {
                oReporter.Compare(strHeld, *p, "libyuv held to SSSE3 / ours");
                oReporter.Compare(strBest, *p, "libyuv best path / ours");
            }
        }
    }
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks(&oReporter);
    benchmark::Shutdown();
    return 0;
}
