// The benchmarks one by one, then every case as a ratio. --benchmark_filter=PATTERN chooses the benchmarks;
// --ratios [PATTERN] prints the table alone, for the cases that the pattern finds.

#include <benchmark/benchmark.h>

#include <iostream>
#include <string>

#include "bench/comparison.h"
#include "bench/lapack.h"

int main(int argc, char** argv) {
  const bool ratiosOnly = argc > 1 && std::string(argv[1]) == "--ratios";
  const std::string pattern = ratiosOnly && argc > 2 ? argv[2] : "";

  if (!ratiosOnly) {
    studystats::bench::registerBenchmarks();
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 2;
    benchmark::RunSpecifiedBenchmarks();
  }
  std::cout << "\nOpenBLAS, one thread, kernels for " << studystats::bench::openblasCore();
  return studystats::bench::printComparisons(std::cout, pattern) ? 0 : 1;
}
