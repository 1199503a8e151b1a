// Each fold fits a model on its training rows and predicts the rows that it holds out, from the centring of the whole
// data set unless the fold is asked to prepare its own. The coefficients of the folds spread around those of the whole:
// their jackknife standard errors.
//
// Wold (1978), Technometrics 20, 397-405; Efron & Tibshirani, An Introduction to the Bootstrap (1993), chapter 11;
// Martens & Martens (2000), Food Quality and Preference 11, 5-16.
#include "analyses/pls/cross_validation.h"

#include <algorithm>
#include <cmath>

#include "numeric/status.h"

namespace studystats::core {
namespace {

using engine::PartialLeastSquaresFold;
using engine::Status;

// Scores whose sum of squares is this fraction of the largest one's, and a share of a response's squares of the square
// of this fraction, or less, are rounding.
constexpr double kScoresOfRounding = 1.0e-20, kResponseOfRounding = 1.0e-22;

void sumSquares(const PlsData& d, double* squares) {
  for (std::int32_t k = 0; k < d.q; ++k) {
    squares[k] = 0.0;
    for (std::int32_t i = 0; i < d.n; ++i) squares[k] += d.y.x(i, k) * d.y.x(i, k);
  }
}

// Leading components of which the scores, and what they give some response, are more than rounding.
std::int32_t rankOf(const PlsModel& model, std::int32_t nComponents, const double* responseSquares) {
  double largest = 0.0;
  for (std::int32_t a = 0; a < nComponents; ++a) {
    const double squares = model.scoreSquares[a];
    largest = std::max(largest, squares);
    if (!(squares > kScoresOfRounding * largest)) return a;
    const auto gives = [&](std::int32_t k) {
      const double factor = model.inner[a] * model.respWeights(a, k);
      return factor * factor * squares > kResponseOfRounding * responseSquares[k];
    };
    std::int32_t k = 0;
    while (k < model.q && !gives(k)) ++k;
    if (k == model.q) return a;
  }
  return nComponents;
}

// Predictions of the rows held out, in the table's units.
void predictRows(const PlsProblem& v, std::span<const std::int32_t> rows, const PlsModel& model,
                 const ColumnUnits& units, PlsFoldScratch& s, Pace& pace) {
  const auto n = static_cast<std::int32_t>(rows.size());
  scoreRows(v.data, rows.data(), n, model, model.nComponents, units, s.samples, pace,
            [&](std::int32_t i, const PlsSampleScores& scores) {
              double* prediction = s.predictions.data() + i;
              for (std::int32_t k = 0; k < model.q; ++k)
                predictResponse(model, k, model.nComponents, scores, [&](std::int32_t, double predicted) {
                  const std::int32_t column = model.p + k;
                  *prediction = units ? predicted * units.scale[column] + units.shift[column] : predicted;
                  prediction += n;
                });
            });
}

}  // namespace

PlsFitted fitRows(const PlsProblem& v, std::span<const std::int32_t> rows, const PlsModel& model,
                  PreparationScratch& preparation, const PlsResidualSums* sums, PlsFoldScratch& s, Pace& pace) {
  const std::int32_t p = v.size.p, q = v.size.q;
  PlsFitted fitted;
  fitted.units = columnUnits(v.preparation, v.data, rows, p, p + q, preparation, pace);
  PlsData samples(s.data.data(), static_cast<std::int32_t>(rows.size()), p, q);
  takeSamples(v.data, rows.data(), fitted.units, samples, pace);
  sumSquares(samples, s.responseSquares.data());
  fitted.extraction = fitComponents(samples, model, s.component, sums, pace);
  fitted.rank = rankOf(model, fitted.extraction.nComponents, s.responseSquares.data());
  return fitted;
}

void coefficientsInUnits(const PlsModel& model, ConstMatrix rotations, const ColumnUnits& units, double* coefs,
                         Matrix intercepts, Pace& pace) {
  coefficients(model, rotations, coefs, pace);
  if (!units) return;
  const RawUnits raw{units.scale, units.shift};
  convertToRawUnits(model, raw, coefs);
  findIntercepts(model, raw, coefs, intercepts);
}

PartialLeastSquaresFold runFold(const PlsProblem& v, const engine::FoldRows& rows, PlsFoldScratch& s, Pace& pace) {
  const PlsModel& model = s.model.view;
  PartialLeastSquaresFold fold;
  fold.rows = rows;

  // 1. The model of the training rows.
  const PlsFitted fitted = fitRows(v, rows.training, model, s.preparation, nullptr, s, pace);
  fold.status = static_cast<Status>(fitted.extraction.status);
  fold.components = fitted.extraction.nComponents;
  fold.rank = fitted.rank;
  fold.scoreSquares = {model.scoreSquares, static_cast<std::size_t>(fold.components)};
  if (fold.status != Status::Done) return fold;
  const auto figures = static_cast<std::size_t>(v.size.figures());
  if (v.coefficients) {
    const Matrix rotations{s.rotations.data(), model.p};
    findRotations(model, rotations, s.samples, pace);
    coefficientsInUnits(model, {rotations.data, rotations.ld}, fitted.units, s.coefs.data(),
                        {s.intercepts.data(), model.nComponents}, pace);
    fold.coefficients = {s.coefs.data(), static_cast<std::size_t>(v.size.coefficients())};
    fold.intercepts = {s.intercepts.data(), figures};
  }

  // 2. Its predictions.
  predictRows(v, rows.heldOut, model, fitted.units, s, pace);
  fold.predictions = {s.predictions.data(), rows.heldOut.size() * figures};
  if (pace.stopped()) fold.status = Status::Stopped;
  return fold;
}

void clearSums(const PlsSizes& size, const PlsSums& sums) {
  const std::ptrdiff_t perResponse = size.perComponent(), used = area(size.p, sums.nComputed);
  for (std::int32_t k = 0; k < size.q; ++k) {
    std::fill_n(sums.press.column(k), sums.nComputed, 0.0);
    if (sums.means == nullptr) continue;
    std::fill_n(sums.means + k * perResponse, used, 0.0);
    std::fill_n(sums.squares + k * perResponse, used, 0.0);
  }
}

void addFold(const PlsProblem& v, const PartialLeastSquaresFold& fold, double weight, PlsSums& sums) {
  const auto nHeld = static_cast<std::ptrdiff_t>(fold.rows.heldOut.size());
  const double* predicted = fold.predictions.data();
  for (std::int32_t k = 0; k < v.size.q; ++k)
    for (std::int32_t a = 0; a < v.size.nComponents; ++a, predicted += nHeld)
      for (std::ptrdiff_t i = 0; i < nHeld; ++i) {
        const double error = v.data(fold.rows.heldOut[static_cast<std::size_t>(i)], v.size.p + k) - predicted[i];
        sums.press(a, k) += weight * (error * error);
      }
  if (v.coefficients) addCoefficients(v.size, fold.coefficients.data(), sums);
}

// Mean and squares about it, brought up to date with the coefficients of the fold: no difference of large sums is
// formed. Welford (1962), Technometrics 4, 419-420.
void addCoefficients(const PlsSizes& size, const double* coefs, PlsSums& sums) {
  const std::ptrdiff_t perResponse = size.perComponent(), used = area(size.p, sums.nComputed);
  ++sums.nFolds;
  for (std::int32_t k = 0; k < size.q; ++k) {
    double* __restrict means = sums.means + k * perResponse, * __restrict squares = sums.squares + k * perResponse;
    const double* __restrict values = coefs + k * perResponse;
    for (std::ptrdiff_t e = 0; e < used; ++e) {
      const double fromOldMean = values[e] - means[e];
      means[e] += fromOldMean / sums.nFolds;
      squares[e] += fromOldMean * (values[e] - means[e]);
    }
  }
}

void standardErrors(const PlsSizes& size, const PlsSums& sums, double weight, double* errors) {
  const std::ptrdiff_t perResponse = size.perComponent(), used = area(size.p, sums.nComputed);
  const double shrink = sums.nFolds < 1 ? 0.0 : static_cast<double>(sums.nFolds - 1) / sums.nFolds;
  for (std::int32_t k = 0; k < size.q; ++k)
    for (std::ptrdiff_t e = k * perResponse; e < k * perResponse + used; ++e)
      errors[e] = std::sqrt(sums.squares[e] * shrink * weight);
}

}  // namespace studystats::core
