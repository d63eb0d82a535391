// Throughput of every block kernel, single thread, with the non-temporal
// stores the engine uses, on 1920x1080 and 3840x2160 pictures; each against
// memcpy of the larger of its source and destination measured in the same
// run, and v210 -> 16-bit 4:2:2 against FFmpeg's v210 decoder. The ratios
// are printed after the runs (above 1: faster than the reference).
#include <benchmark/benchmark.h>

#include "bench/qxbenchpictures.h"
#include "surfaces/kernels/blockmatrix.h"
#include "tests/surfaces/ffmpegv210.h"
#include "tests/surfaces/surfacetesthelpers.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <map>
#include <memory>
#include <string>
#include <vector>

namespace {

// Fills a source with valid values of its format: random bytes, with the
// two top bits of every 32-bit word of the 10-bit word formats cleared.
void FillSource(EQxcSurfaceType in_eType, uint8_t* out_puc, size_t in_uiBytes)
{
    std::mt19937 oRandom(11);
    NQxTest::FillRandom(out_puc, in_uiBytes, oRandom);
    if (in_eType == keQxcSurfaceTypeV210_10bits || in_eType == keQxcSurfaceTypeYCbCrA4224_10bits_Unshaped ||
        in_eType == keQxcSurfaceTypeYCbCrA4224_10bits_Shaped)
        for (size_t ui = 3; ui < in_uiBytes; ui += 4)
            out_puc[ui] &= 0x3f;
}

void RunMemcpy(benchmark::State& io_rState, size_t in_uiBytes)
{
    SBuffer oSource(in_uiBytes), oDestination(in_uiBytes);
    FillSource(keQxcSurfaceTypeInvalid, oSource.puc, in_uiBytes);
    for (auto _ : io_rState) {
        benchmark::DoNotOptimize(oSource.puc);
        std::memcpy(oDestination.puc, oSource.puc, in_uiBytes);
        benchmark::DoNotOptimize(oDestination.puc);
        benchmark::ClobberMemory();
    }
    io_rState.SetBytesProcessed(static_cast<int64_t>(io_rState.iterations()) * static_cast<int64_t>(in_uiBytes));
}

void RunKernel(benchmark::State& io_rState, EQxcSurfaceType in_eDestination, EQxcSurfaceType in_eSource,
               const SResolution& in_rs)
{
    const long lSourcePitch = NQxTest::LineBytes(in_eSource, in_rs.uiWidth);
    const long lDestinationPitch = NQxTest::LineBytes(in_eDestination, in_rs.uiWidth);
    SBuffer oSource(lSourcePitch * in_rs.uiHeight), oDestination(lDestinationPitch * in_rs.uiHeight);
    FillSource(in_eSource, oSource.puc, lSourcePitch * in_rs.uiHeight);
    std::unique_ptr<CQxcSurface> pSource = NQxTest::CreateSurface(in_eSource, false);
    std::unique_ptr<CQxcSurface> pDestination = NQxTest::CreateSurface(in_eDestination, false);
    pSource->Initialize(oSource.puc, in_rs.uiWidth, in_rs.uiHeight, lSourcePitch, true, keQxColorimetryITUR_BT_709);
    pDestination->Initialize(oDestination.puc, in_rs.uiWidth, in_rs.uiHeight, lDestinationPitch, true,
                             keQxColorimetryITUR_BT_709);
    const unsigned uiBlocks = pDestination->GetWidthInBlocks();
    for (auto _ : io_rState) {
        pDestination->SetPosition(0, 0);
        if (!pDestination->CopyBlocksFrom(pSource.get(), uiBlocks, in_rs.uiHeight)) {
            io_rState.SkipWithError("the conversion was refused");
            break;
        }
        benchmark::ClobberMemory();
    }
    const size_t uiBytes = std::max(lSourcePitch, lDestinationPitch) * static_cast<size_t>(in_rs.uiHeight);
    io_rState.SetBytesProcessed(static_cast<int64_t>(io_rState.iterations()) * static_cast<int64_t>(uiBytes));
}

#ifdef QXT_HAVE_LIBAVCODEC
void RunFfmpegV210(benchmark::State& io_rState, const SResolution& in_rs)
{
    NQxTest::CFfmpegV210Decoder oDecoder(static_cast<int>(in_rs.uiWidth), static_cast<int>(in_rs.uiHeight));
    if (!oDecoder.IsOpen()) {
        io_rState.SkipWithError("libavcodec has no v210 decoder");
        return;
    }
    const size_t uiBytes = NQxTest::CFfmpegV210Decoder::Pitch(in_rs.uiWidth) * in_rs.uiHeight;
    SBuffer oSource(uiBytes + AV_INPUT_BUFFER_PADDING_SIZE);
    FillSource(keQxcSurfaceTypeV210_10bits, oSource.puc, uiBytes);
    for (auto _ : io_rState) {
        if (oDecoder.DecodeInPlace(oSource.puc) == nullptr) {
            io_rState.SkipWithError("FFmpeg refused the picture");
            break;
        }
        benchmark::ClobberMemory();
    }
}
#endif

// Keeps each run's time per iteration, then prints the ratios.
class CRatioReporter : public benchmark::ConsoleReporter {
public:
    void ReportRuns(const std::vector<Run>& in_rvRuns) override
    {
        for (const Run& r : in_rvRuns) {
            // With repetitions, the median stands for the benchmark.
            const bool bAggregate = r.run_type == Run::RT_Aggregate;
            if (r.error_occurred || (bAggregate && r.aggregate_name != "median"))
                continue;
            if (!bAggregate && m_mapMedian.count(r.run_name.function_name) != 0)
                continue;
            if (bAggregate)
                m_mapMedian[r.run_name.function_name] = true;
            m_mapSeconds[r.run_name.function_name] = r.GetAdjustedRealTime() / 1e3;  // ms -> s
        }
        ConsoleReporter::ReportRuns(in_rvRuns);
    }

    void Finalize() override
    {
        ConsoleReporter::Finalize();
        std::printf("\nRatios measured in this run (kernel throughput / reference throughput):\n");
        for (const SPair& rs : m_vPairs) {
            const auto itKernel = m_mapSeconds.find(rs.sKernel);
            const auto itReference = m_mapSeconds.find(rs.sReference);
            if (itKernel == m_mapSeconds.end() || itReference == m_mapSeconds.end())
                continue;
            std::printf("  %-72s %5.2fx %s\n", rs.sKernel.c_str(), itReference->second / itKernel->second,
                        rs.sAgainst.c_str());
        }
    }

    void Pair(const std::string& in_sKernel, const std::string& in_sReference, const std::string& in_sAgainst)
    {
        m_vPairs.push_back(SPair{in_sKernel, in_sReference, in_sAgainst});
    }

private:
    struct SPair {
        std::string sKernel;
        std::string sReference;
        std::string sAgainst;
    };
    std::map<std::string, double> m_mapSeconds;
    std::map<std::string, bool> m_mapMedian;
    std::vector<SPair> m_vPairs;
};

struct SEntry {
    EQxcSurfaceType eDestination;
    EQxcSurfaceType eSource;
    const char* pszName;
};
#define QXB_ENTRY(Destination, Source, Kernel) {Destination, Source, #Kernel},
const SEntry kasMatrix[] = {QXC_BLOCK_MATRIX(QXB_ENTRY)};
#undef QXB_ENTRY

benchmark::internal::Benchmark* Configure(benchmark::internal::Benchmark* in_p)
{
    return in_p->Unit(benchmark::kMillisecond)->UseRealTime()->MinTime(0.25);
}

}  // namespace

int main(int argc, char** argv)
{
    CRatioReporter oReporter;
    std::map<size_t, std::string> mapMemcpy;
    for (const SResolution& rs : kasResolutions) {
        for (const SEntry& re : kasMatrix) {
            const size_t uiBytes = std::max(NQxTest::LineBytes(re.eSource, rs.uiWidth),
                                            NQxTest::LineBytes(re.eDestination, rs.uiWidth)) *
                                   static_cast<size_t>(rs.uiHeight);
            std::string& rsMemcpy = mapMemcpy[uiBytes];
            if (rsMemcpy.empty()) {
                rsMemcpy = "memcpy/" + std::to_string(uiBytes);
                Configure(benchmark::RegisterBenchmark(rsMemcpy.c_str(), RunMemcpy, uiBytes));
            }
            const std::string sName = std::string(re.pszName) + "(" + std::to_string(re.eDestination) + "<-" +
                                      std::to_string(re.eSource) + ")/" + rs.pszName;
            Configure(benchmark::RegisterBenchmark(sName.c_str(), RunKernel, re.eDestination, re.eSource, rs));
            oReporter.Pair(sName, rsMemcpy, "of memcpy " + std::to_string(uiBytes));
        }
#ifdef QXT_HAVE_LIBAVCODEC
        const std::string sFfmpeg = std::string("FFmpeg v210 decoder/") + rs.pszName;
        Configure(benchmark::RegisterBenchmark(sFfmpeg.c_str(), RunFfmpegV210, rs));
        oReporter.Pair(std::string("K422_16FromV210(6<-11)/") + rs.pszName, sFfmpeg, "of FFmpeg's v210 decoder");
#endif
    }
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks(&oReporter);
    benchmark::Shutdown();
    return 0;
}
