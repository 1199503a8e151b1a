// The steps of an agglomeration, by chains of nearest neighbours.
//
// From any group one goes to its nearest, from there to the nearest of that, until two are each other's nearest: these
// are joined, and the chain goes on from the group before them. With linkages under which a union is never nearer to a
// third group than both its parts were, the merges are those of the method that always joins the nearest two, in
// another order. Murtagh (1983), The Computer Journal 26, 354-359. Distances of a union: Lance & Williams (1967), The
// Computer Journal 9, 373-380; Ward's on squared distances: Murtagh & Legendre (2014), Journal of Classification 31,
// 274-295.
//
// Rounding must not make a union nearer than both its parts were: the chain could close to a ring, and a merge could
// lie below those that formed its groups. The distances of a union are therefore raised to the smaller of its parts'.
#include "host/cluster/nearest_neighbour_chain.h"

#include <algorithm>
#include <cmath>

namespace studystats {
namespace {

constexpr std::int32_t kNone = -1;

// The distance between the union of groups i and j and a group k, from those between i and k, j and k, i and j.
struct Union {
  Linkage linkage;
  double ni, nj, dij;

  double operator()(double dik, double djk, double nk) const {
    const double nearer = std::min(dik, djk);
    switch (linkage) {
      case Linkage::Ward:
        return std::max(nearer, ((ni + nk) * dik + (nj + nk) * djk - nk * dij) / (ni + nj + nk));
      case Linkage::Average:
        return std::max(nearer, (ni * dik + nj * djk) / (ni + nj));
      case Linkage::Complete:
        return std::max(dik, djk);
      case Linkage::Single:
        break;
    }
    return nearer;
  }
};

class Chain {
 public:
  Chain(CondensedMatrix& distances, Linkage linkage)
      : distances_(distances), linkage_(linkage), sizes_(distances.size(), 1.0) {
    for (std::size_t i = 0; i < distances.size(); ++i) left_.push_back(static_cast<std::int32_t>(i));
  }

  ChainMerge next() {
    if (chain_.empty()) chain_.push_back(left_.front());
    while (true) {
      const std::int32_t tip = chain_.back();
      const std::int32_t before = chain_.size() > 1 ? chain_[chain_.size() - 2] : kNone;
      const std::int32_t nearest = nearestTo(tip, before);
      if (nearest == before) {
        chain_.resize(chain_.size() - 2);
        return join(std::min(tip, before), std::max(tip, before));
      }
      chain_.push_back(nearest);
    }
  }

 private:
  double& at(std::int32_t i, std::int32_t j) {
    return distances_(static_cast<std::size_t>(i), static_cast<std::size_t>(j));
  }

  // `before` unless another group is nearer.
  std::int32_t nearestTo(std::int32_t group, std::int32_t before) {
    std::int32_t nearest = before;
    double least = before == kNone ? 0.0 : at(group, before);
    for (const std::int32_t other : left_) {
      if (other == group) continue;
      const double distance = at(group, other);
      if (nearest != kNone && !(distance < least)) continue;
      nearest = other;
      least = distance;
    }
    return nearest;
  }

  // The union takes the place of the second group.
  ChainMerge join(std::int32_t first, std::int32_t second) {
    const auto i = static_cast<std::size_t>(first), j = static_cast<std::size_t>(second);
    const double dij = at(first, second);
    const Union together{linkage_, sizes_[i], sizes_[j], dij};
    left_.erase(std::lower_bound(left_.begin(), left_.end(), first));
    for (const std::int32_t k : left_) {
      if (k == second) continue;
      double& djk = at(second, k);
      djk = together(at(first, k), djk, sizes_[static_cast<std::size_t>(k)]);
    }
    sizes_[j] += sizes_[i];
    return {first, second, linkage_ == Linkage::Ward ? std::sqrt(dij) : dij};
  }

  CondensedMatrix& distances_;  // Ward: squared
  Linkage linkage_;
  std::vector<double> sizes_;
  std::vector<std::int32_t> left_, chain_;  // left_: one row of each group, ascending
};

}  // namespace

std::vector<ChainMerge> chainMerges(CondensedMatrix& distances, Linkage linkage, Watch& watch, Stretch stretch) {
  const std::size_t n = distances.size();
  if (linkage == Linkage::Ward)
    for (std::size_t i = 0; i < n; ++i)
      for (std::size_t j = i + 1; j < n; ++j) distances(i, j) *= distances(i, j);
  Chain chain(distances, linkage);
  std::vector<ChainMerge> merges;
  const std::size_t step = std::max<std::size_t>(1, n / 50);
  while (merges.size() + 1 < n) {
    if (merges.size() % step == 0)
      watch.report("analysis", "joining groups", stretch.from, stretch.to, static_cast<std::int64_t>(merges.size()),
                   static_cast<std::int64_t>(n - 1));
    merges.push_back(chain.next());
  }
  return merges;
}

}  // namespace studystats
