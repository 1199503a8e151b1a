// The parts of the page of partial least squares that are made in files of their own.
#pragma once

#include <studystats/host/report.h>

#include "host/report/components.h"
#include "host/text.h"

#include <string>
#include <vector>

namespace studystats {

inline std::size_t kept(const PartialLeastSquares& result) { return static_cast<std::size_t>(result.kept); }

inline std::string keptText(const PartialLeastSquares& result) {
  return counted(kept(result), "component", "components");
}

std::vector<std::string> responseNames(const PartialLeastSquares& result);

// Of `rows`, `components` and `descriptors`.
std::vector<ReportFigure> plsFigures(const PartialLeastSquares& result, const Table& rows,
                                     const ColouringColumns& colours);

}  // namespace studystats
