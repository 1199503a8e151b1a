// Distances, matrices of them and neighbour lists, pair after pair.
#pragma once

#include <cstdint>
#include <vector>

namespace studystats::definition {

using Columns = std::vector<std::vector<double>>;  // element (row r, column c) is m[c][r]

double distance(const Columns& points, std::size_t i, std::size_t j, bool tanimoto);

// dist: n x n, or K columns with the distances of row r from the rows index[k][r].
void distanceMatrix(const Columns& points, Columns& dist, bool tanimoto);
void distanceMatrix(const Columns& points, const std::vector<std::vector<std::int32_t>>& index, Columns& dist,
                    bool tanimoto);

void neighbourLists(const Columns& points, std::int32_t nPoints, bool tanimoto, std::int32_t nNeighbours,
                    bool fixedSize, std::vector<std::vector<std::int32_t>>& lists);

}  // namespace studystats::definition
