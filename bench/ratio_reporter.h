// Benchmarks report their targets as ratios against a baseline measured in the same run.
// Each benchmark records its time per item; after the run, every ratio registered with
// AddRatio is printed as "ratio <name>: <x> (target ...)".
#pragma once

#include <benchmark/benchmark.h>

#include <cstddef>
#include <string>

namespace qmbench {

// Registers a ratio: time per iteration of benchmark `numerator` over that of `denominator`
// (benchmark names as Google Benchmark prints them, e.g. "BM_DatePlus/1").
void AddRatio(const std::string& label, const std::string& numerator, const std::string& denominator,
              const std::string& target);

// The usual baseline: a memcpy of `size` bytes from `from` into a block of the benchmark's own,
// counted as `size` bytes per iteration.
void CopyBaseline(benchmark::State& state, const void* from, std::size_t size);

// Runs the registered benchmarks and prints the ratios; use as the body of main.
int RunAndReport(int argc, char** argv);

}  // namespace qmbench

#define QM_BENCH_MAIN() \
    int main(int argc, char** argv) { return qmbench::RunAndReport(argc, argv); }
