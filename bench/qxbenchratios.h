// A console reporter that remembers each benchmark's real time per
// iteration and, once the run is over, prints the ratios between chosen
// pairs: both sides of a ratio come from the same run on the same machine.
#ifndef QXBASE_BENCH_QXBENCHRATIOS_H
#define QXBASE_BENCH_QXBENCHRATIOS_H

#include <benchmark/benchmark.h>

#include <cstdio>
#include <map>
#include <string>
#include <vector>

class CQxBenchRatios : public benchmark::ConsoleReporter {
public:
    // With in_bCpuTime, the ratios use the CPU time of the benchmark's
    // thread: on a shared machine, single-thread kernels are then measured
    // without the time other processes take the core away.
    explicit CQxBenchRatios(bool in_bCpuTime = false) : m_bCpuTime(in_bCpuTime) {}

    // After the run, prints time(subject) / time(reference) per iteration.
    void Compare(const std::string& in_strSubject, const std::string& in_strReference, const std::string& in_strNote)
    {
        m_vecComparisons.push_back({in_strSubject, in_strReference, in_strNote});
    }

    // With repetitions, the median of a benchmark's runs stands for it.
    void ReportRuns(const std::vector<Run>& in_vecRuns) override
    {
        for (const Run& oRun : in_vecRuns) {
            if (oRun.error_occurred)
                continue;
            const std::string strName = oRun.run_name.str();
            if (oRun.run_type == Run::RT_Aggregate && oRun.aggregate_name == "median") {
                m_mapTimes[strName] = Time(oRun);
                m_mapMedian[strName] = true;
            } else if (oRun.run_type == Run::RT_Iteration && m_mapMedian.count(strName) == 0) {
                m_mapTimes[strName] = Time(oRun);
            }
        }
        ConsoleReporter::ReportRuns(in_vecRuns);
    }

    void Finalize() override
    {
        ConsoleReporter::Finalize();
        std::printf("\nMeasured in this run (%s time per iteration, subject / reference):\n", m_bCpuTime ? "CPU" : "real");
        for (const SComparison& sComparison : m_vecComparisons) {
            auto itSubject = m_mapTimes.find(sComparison.strSubject);
            auto itReference = m_mapTimes.find(sComparison.strReference);
            if (itSubject == m_mapTimes.end() || itReference == m_mapTimes.end()) continue;
            std::printf("  %-40s / %-44s = %6.3f  %s\n", sComparison.strSubject.c_str(),
                        sComparison.strReference.c_str(), itSubject->second / itReference->second,
                        sComparison.strNote.c_str());
        }
    }

private:
    double Time(const Run& in_oRun) const
    {
        return m_bCpuTime ? in_oRun.GetAdjustedCPUTime() : in_oRun.GetAdjustedRealTime();
    }

    struct SComparison {
        std::string strSubject, strReference, strNote;
    };
    bool m_bCpuTime;
    std::map<std::string, double> m_mapTimes;
    std::map<std::string, bool> m_mapMedian;
    std::vector<SComparison> m_vecComparisons;
};

#endif  // QXBASE_BENCH_QXBENCHRATIOS_H
