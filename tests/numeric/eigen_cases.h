// What the tests of the eigensolver share: a call with everything it was given and everything it left behind.
#pragma once

#include <bit>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <vector>

namespace studystats::test {

using Numbers = std::vector<double>;

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();

using Solver = void (*)(const std::int32_t*, const std::int32_t*, double*, double*, const std::int32_t*, double*,
                        double*, double*, std::int32_t*);

struct EigenCall {
  std::int32_t nm, n, wantVectors;
  Numbers a, z, w, work1, work2;
  std::int32_t ierr = -1;

  // Everything but the lower triangle of a holds idle; each array has one more number behind it.
  EigenCall(std::int32_t rows, std::int32_t order, std::int32_t want, double idle)
      : nm(rows), n(order), wantVectors(want), a(size() + 1, idle), z(a), w(length() + 1, idle), work1(w), work2(w) {}

  std::size_t length() const { return static_cast<std::size_t>(n); }
  std::size_t size() const { return static_cast<std::size_t>(nm) * length(); }
  std::size_t at(std::size_t i, std::size_t j) const { return i + j * static_cast<std::size_t>(nm); }

  void solve(Solver solver) {
    solver(&nm, &n, a.data(), w.data(), &wantVectors, z.data(), work1.data(), work2.data(), &ierr);
  }
};

// Signs and payloads of not-a-numbers are the one thing that is not promised.
inline bool sameBits(double a, double b) {
  return std::bit_cast<std::uint64_t>(a) == std::bit_cast<std::uint64_t>(b) || (std::isnan(a) && std::isnan(b));
}

inline bool sameBits(const Numbers& a, const Numbers& b) {
  if (a.size() != b.size()) return false;
  for (std::size_t i = 0; i < a.size(); ++i)
    if (!sameBits(a[i], b[i])) return false;
  return true;
}

}  // namespace studystats::test
