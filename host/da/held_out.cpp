// The classes of the rows held out: every fold run again.
//
// The analysis counts its held-out rows and does not name them. A fold is run again by a call whose model has its
// training rows alone, in the order in which they were taken, and classifies the rows held out; that call's own
// validation is one random fold of rows outside the model, and thrown away.
#include "host/da/canonical.h"
#include "host/da/discriminant.h"

#include <fmt/format.h>

#include <algorithm>
#include <limits>

namespace studystats {

std::size_t nearestClass(std::span<const double> distances, std::span<const double> precise) {
  constexpr double kEqual = 1e-12;
  std::size_t nearest = 0;
  for (std::size_t c = 1; c < distances.size(); ++c) {
    const bool smaller = distances[c] == distances[nearest] ? precise[c] < precise[nearest] * (1 - kEqual)
                                                            : distances[c] < distances[nearest];
    if (smaller) nearest = c;
  }
  return nearest;
}

namespace {

bool tied(std::span<const double> distances) {
  const double least = *std::min_element(distances.begin(), distances.end());
  return std::count(distances.begin(), distances.end(), least) > 1;
}

class FoldReplay {
 public:
  FoldReplay(const PreparedDiscriminant& prepared, const ClassRows& known, const ClassSelection& selection,
             const StopSignal& stop)
      : prepared_(prepared), known_(known), selection_(selection), quiet_(nobody_, stop) {}

  // Predictions of the fold's held-out rows, in their order; empty when the fold's classifier could not be built.
  // `selected`: in how many folds each descriptor was chosen is counted there.
  std::vector<HeldOut::Prediction> run(const FoldRows& fold, std::vector<std::int32_t>* selected = nullptr) {
    const ClassRows rows = rowsOfFold(known_, fold);
    const std::size_t classes = prepared_.classes();
    const DiscriminantCall call =
        callDiscriminant(rows, classes, settingsOf(selection_), prepared_.folds.seed, quiet_, {});
    if (call.status != 0) return {};
    for (const std::size_t j : call.chosen())
      if (selected) ++(*selected)[j];
    std::optional<CanonicalSpace> space;
    const auto precise = [&](std::size_t row) {
      if (!space)
        space.emplace(trainingOf(rows, fold.training.size()), std::span(rows.classOf).first(fold.training.size()),
                      classes, call.chosen());
      std::vector<double> distances;
      for (std::size_t c = 0; c < classes; ++c) distances.push_back(space->distance(rows.data, row, c));
      return distances;
    };
    std::vector<HeldOut::Prediction> predictions;
    for (std::size_t row = fold.training.size(); row < rows.data.rows; ++row) {
      HeldOut::Prediction prediction;
      for (std::size_t c = 0; c < classes; ++c)
        prediction.distances.push_back(static_cast<double>(call.distances[row + c * rows.data.rows]));
      const bool plain = call.chosen().size() == 1;  // differences, not yet in units of their spread
      const std::vector<double> exact = plain || tied(prediction.distances) ? precise(row) : prediction.distances;
      prediction.predicted = nearestClass(prediction.distances, exact);
      if (plain) prediction.distances = exact;
      predictions.push_back(std::move(prediction));
    }
    return predictions;
  }

 private:
  static Grid trainingOf(const ClassRows& rows, std::size_t n) {
    Grid training{n, rows.data.columns, {}};
    for (std::size_t j = 0; j < rows.data.columns; ++j) {
      const std::span<const double> column = rows.data.column(j).first(n);
      training.values.insert(training.values.end(), column.begin(), column.end());
    }
    return training;
  }

  const PreparedDiscriminant& prepared_;
  const ClassRows& known_;
  const ClassSelection& selection_;
  const ProgressCallback nobody_{};
  Watch quiet_;
};

bool countsAgree(const HeldOut& heldOut, const PreparedDiscriminant& prepared, const DiscriminantCall& call) {
  const std::size_t classes = prepared.classes();
  std::vector<std::int32_t> counts(classes * classes, 0);
  for (std::size_t i = 0; i < heldOut.rows.size(); ++i)
    for (const HeldOut::Prediction& prediction : heldOut.rows[i])
      ++counts[static_cast<std::size_t>(prepared.classOf[i] - 1) + prediction.predicted * classes];
  return counts == call.cvConfusion;
}

}  // namespace

std::optional<HeldOut> heldOutRows(const PreparedDiscriminant& prepared, const DiscriminantOptions& options,
                                   const DiscriminantCall& call, const FoldPlan& plan, Watch& watch, const Span& span) {
  const ClassRows known = knownRows(prepared);
  const std::size_t classes = prepared.classes();
  const RowsOfFolds folds(prepared.folds, plan, call.modelRows, static_cast<std::size_t>(call.restartedAt));
  HeldOut heldOut;
  heldOut.rows.resize(prepared.classOf.size());
  heldOut.foldsWithout.assign(classes, 0);
  heldOut.notTrained.assign(classes, 0);
  FoldReplay replay(prepared, known, options.selection, options.stop);
  for (std::size_t f = 0; f < folds.size(); ++f) {
    watch.report("held-out rows", fmt::format("{}{} of {}", span.text, f + 1, folds.size()), span.from, span.to,
                 static_cast<std::int64_t>(f), static_cast<std::int64_t>(folds.size()));
    const FoldRows fold = folds[f];
    std::vector<bool> held(classes, false), trained(classes, false);
    for (const std::size_t row : fold.heldOut) held[static_cast<std::size_t>(prepared.classOf[row] - 1)] = true;
    for (const std::size_t row : fold.training) trained[static_cast<std::size_t>(prepared.classOf[row] - 1)] = true;
    for (std::size_t c = 0; c < classes; ++c) {
      if (!held[c]) ++heldOut.foldsWithout[c];
      if (!trained[c]) ++heldOut.notTrained[c];
    }
    std::vector<HeldOut::Prediction> predictions = replay.run(fold);
    for (std::size_t i = 0; i < predictions.size(); ++i) {
      predictions[i].fold = f + 1;
      for (std::size_t c = 0; c < classes; ++c)  // a class without rows has no mean
        if (!trained[c]) predictions[i].distances[c] = std::numeric_limits<double>::quiet_NaN();
      heldOut.rows[fold.heldOut[i]].push_back(std::move(predictions[i]));
    }
  }
  if (!countsAgree(heldOut, prepared, call)) return std::nullopt;
  return heldOut;
}

void validateByColumn(DiscriminantCall& call, const PreparedDiscriminant& prepared, const ClassSelection& selection,
                      const StopSignal& stop, Watch& watch, const Span& span) {
  const ClassRows known = knownRows(prepared);
  const std::size_t classes = prepared.classes();
  const RowsOfFolds folds(prepared.folds, planOf(0, prepared.folds, prepared.classOf.size()), call.modelRows);
  FoldReplay replay(prepared, known, selection, stop);
  call.foldsPlanned = count32(folds.size());
  call.restartedAt = 0;
  call.cvFractionCorrect = std::numeric_limits<float>::quiet_NaN();
  call.cvSelCount.assign(call.selected.size(), 0);
  call.cvConfusion.assign(classes * classes, 0);
  for (std::size_t f = 0; f < folds.size(); ++f) {
    watch.report("folds", fmt::format("{}{} of {}", span.text, f + 1, folds.size()), span.from, span.to,
                 static_cast<std::int64_t>(f), static_cast<std::int64_t>(folds.size()));
    call.foldsBegun = count32(f + 1);
    const FoldRows fold = folds[f];
    const std::vector<HeldOut::Prediction> predictions = replay.run(fold, &call.cvSelCount);
    if (predictions.empty()) return;  // this fold's classifier could not be built
    for (std::size_t i = 0; i < predictions.size(); ++i)
      ++call.cvConfusion[static_cast<std::size_t>(prepared.classOf[fold.heldOut[i]] - 1) +
                         predictions[i].predicted * classes];
  }
  call.cvFractionCorrect = 1;  // every fold ended
}

}  // namespace studystats
