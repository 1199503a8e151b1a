// How often the folds' own selections chose each descriptor: the data, the figure and the table of every analysis that
// selects.
#pragma once

#include <studystats/host/report.h>

#include "host/report/data.h"

#include <string>
#include <vector>

namespace studystats {

struct Choice {
  std::string name;
  std::size_t folds = 0;  // that chose it
  bool inModel = false;
};

// The data "selection", the most often chosen first.
Table selectionData(std::vector<Choice> choices);

// `open`: what the bars of descriptors outside the model are, as the end of a sentence.
ReportFigure selectionFigure(const Table& selection, std::size_t folds, const std::string& open);

ReportTable selectionTable(std::size_t folds);

}  // namespace studystats
