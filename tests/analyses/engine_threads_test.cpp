// Analyses at once on several threads, compiled with the thread sanitizer, which reports what they share and should
// not. Two kinds of analysis beside each other, and the folds of each on threads of their own.
#include <cstdio>
#include <thread>
#include <utility>

#include "tests/analyses/calls.h"
#include "tests/analyses/engine_runs.h"

namespace {

using namespace studystats;

template <class Run>
bool sameOnThreads(const LatentTable& data, const engine::Folds& folds) {
  Run alone(data, folds.count(), 1), threaded(data, folds.count(), 3);
  const Told told = runInOrder(alone, folds.source());
  return !told.empty() && sameBits(runOnThreads(threaded, folds.source(), 3), told);
}

}  // namespace

int main() {
  const LatentTable data(40, 12, 1);
  engine::Generator generator(3);
  const engine::Folds drawn = engine::Folds::drawn(data.n, 6, 10, generator);
  bool regression = false, leastSquares = false;
  std::thread beside([&] { regression = sameOnThreads<RegressionRun>(data, drawn); });
  leastSquares = sameOnThreads<PartialLeastSquaresRun>(data, drawn);
  beside.join();
  std::printf("same bits: regression %d, partial least squares %d\n", regression, leastSquares);
  return regression && leastSquares ? 0 : 1;
}
