#include "ratio_reporter.h"

#include <cstdio>
#include <cstring>
#include <map>
#include <vector>

#include "utils/common/TempList.h"

namespace qmbench {

namespace {

struct Ratio {
    std::string label, numerator, denominator, target;
};

std::vector<Ratio>& Ratios() {
    static std::vector<Ratio> ratios;
    return ratios;
}

// Keeps the console output and remembers each run's CPU time per iteration (in nanoseconds):
// CPU time is steadier than wall time on a shared machine.
class RecordingReporter : public benchmark::ConsoleReporter {
public:
    // Plain columns without colour codes, so that logs and pipes read cleanly.
    RecordingReporter() : ConsoleReporter(OO_Tabular) {}
    void ReportRuns(const std::vector<Run>& runs) override {
        for (const Run& run : runs)
            if (run.run_type == Run::RT_Iteration && run.iterations > 0)
                times[run.benchmark_name()] = run.GetAdjustedCPUTime() *
                                              benchmark::GetTimeUnitMultiplier(benchmark::kNanosecond) /
                                              benchmark::GetTimeUnitMultiplier(run.time_unit);
        ConsoleReporter::ReportRuns(runs);
    }
    std::map<std::string, double> times;
};

}  // namespace

void CopyBaseline(benchmark::State& state, const void* from, std::size_t size) {
    std::vector<unsigned char> to(size);
    for (auto _ : state) {
        std::memcpy(to.data(), from, size);
        benchmark::ClobberMemory();
    }
    state.SetBytesProcessed((int64_t)state.iterations() * (int64_t)size);
}

void AddRatio(const std::string& label, const std::string& numerator, const std::string& denominator,
              const std::string& target) {
    Ratios().push_back({label, numerator, denominator, target});
}

int RunAndReport(int argc, char** argv) {
    // A list file in the folder the benchmark was started from is not ours to act on.
    DetachTempListInstance();
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
    RecordingReporter reporter;
    benchmark::RunSpecifiedBenchmarks(&reporter);
    std::printf("\n");
    for (const Ratio& r : Ratios()) {
        auto n = reporter.times.find(r.numerator), d = reporter.times.find(r.denominator);
        if (n == reporter.times.end() || d == reporter.times.end() || d->second <= 0) {
            std::printf("ratio %s: not measured (%s / %s)\n", r.label.c_str(), r.numerator.c_str(), r.denominator.c_str());
            continue;
        }
        std::printf("ratio %s: %.3f   [%s / %s]   target: %s\n", r.label.c_str(), n->second / d->second,
                    r.numerator.c_str(), r.denominator.c_str(), r.target.c_str());
    }
    benchmark::Shutdown();
    return 0;
}

}  // namespace qmbench
