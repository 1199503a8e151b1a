#include "host/report/selection.h"

#include "host/report/chart_file.h"

#include <fmt/format.h>

#include <algorithm>

namespace studystats {

ReportFigure selectionFigure(const Table& selection, std::size_t folds, const std::string& open) {
  constexpr std::size_t kBars = 30;
  const std::size_t shown = std::min(selection.rows(), kBars);
  const std::string cut = selection.rows() > shown ? fmt::format(" The first {} of {}.", shown, selection.rows()) : "";
  return {"selection-frequency", "Selection frequency",
          fmt::format("Bars: in how many of {} folds each of {} descriptors was chosen.", folds, shown),
          "How often the folds' own selections chose a descriptor. Left of the dashed half, the choice is chance as "
          "much as anything; " +
              open + cut,
          filledChart("selection-frequency", {{"folds", folds}, {"lines", shown}})};
}

}  // namespace studystats
