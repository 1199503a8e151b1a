// The parts of the page of a discriminant analysis that are made in files of their own.
#pragma once

#include <studystats/host/report.h>

#include "host/report/components.h"

#include <string>
#include <vector>

namespace studystats {

// The two tables of confusion, as the data "confusion" call them.
inline constexpr const char* kHeldOutRows = "cross-validated";
inline constexpr const char* kFittedRows = "resubstitution (fitted)";

inline bool selects(const Discriminant& result) { return result.selection.kind != ClassSelection::Kind::All; }
inline std::size_t functionsOf(const Discriminant& result) { return result.functions.size(); }

// The verdict on a row left out, by which it is marked.
std::string verdictOf(const DiscriminantRow& row);

// The distance to the mean of its own class, or of the class predicted where none is known.
double ownDistance(const Discriminant& result, const DiscriminantRow& row);

// Of the page's data, with `selection` among them.
std::vector<ReportFigure> discriminantFigures(const Discriminant& result, const Table& selection,
                                              const ColouringColumns& colours);

}  // namespace studystats
