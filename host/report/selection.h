// How often the folds' own selections chose each descriptor: the figure of every analysis that selects.
#pragma once

#include <studystats/host/report.h>

#include <string>
#include <vector>

namespace studystats {

// `open`: what the bars of descriptors outside the model are, as the end of a sentence.
ReportFigure selectionFigure(const Table& selection, std::size_t folds, const std::string& open);

}  // namespace studystats
