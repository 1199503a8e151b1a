// Neighbour lists must never hold the distances of all pairs, nor those of a point from all others: the largest amount
// of memory that is in use beside the lists is counted.

#include <gtest/gtest.h>
#include <malloc.h>
#include <studystats/utilities.h>

#include <algorithm>
#include <cstdlib>
#include <new>

#include "tests/utils/points.h"

namespace {

std::size_t live = 0, highest = 0;

void* obtained(void* block) {
  if (block == nullptr) throw std::bad_alloc();
  highest = std::max(highest, live += malloc_usable_size(block));
  return block;
}

void release(void* block) {
  live -= malloc_usable_size(block);
  std::free(block);
}

}  // namespace

void* operator new(std::size_t size) { return obtained(std::malloc(std::max<std::size_t>(size, 1))); }
void* operator new(std::size_t size, std::align_val_t to) {
  return obtained(
      std::aligned_alloc(std::size_t(to), (size + std::size_t(to) - 1) / std::size_t(to) * std::size_t(to)));
}
void operator delete(void* block) noexcept { release(block); }
void operator delete(void* block, std::size_t) noexcept { release(block); }
void operator delete(void* block, std::align_val_t) noexcept { release(block); }
void operator delete(void* block, std::size_t, std::align_val_t) noexcept { release(block); }

namespace {

using namespace studystats::test;

TEST(NeighbourLists, HoldAFewDistancesAtATime) {
  constexpr std::int32_t kPoints = 4000;
  const struct {
    DataMatrix points;
    bool fixedSize;
  } kRows[] = {
      {normalPoints(kPoints, 3), false},
      {normalPoints(kPoints, 3), true},
      {gridPoints(kPoints, 1, 1), true},  // two thousand ties a point, of which ten are wanted
  };
  for (const auto& row : kRows) {
    IndexMatrix lists;
    const std::size_t before = live;
    highest = live;
    StatsClusterUtils::CreateNeighborLists(row.points, kPoints, StatsDistanceUtils::STATS_DIST_EUCLIDEAN, 10,
                                           row.fixedSize, lists);
    EXPECT_GE(lists.back().size(), 10U);
    EXPECT_GT(live, before);
    EXPECT_LT(highest - live, 500000U);  // all pairs: 128 million bytes; one block of points against all: two million
  }
}

}  // namespace
