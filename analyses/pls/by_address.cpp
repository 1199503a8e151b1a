// The routines with by-address arguments: each wraps its addresses once and hands them to the method.
#include <algorithm>
#include <numeric>

#include "analyses/pls/components.h"
#include "analyses/pls/cross_validation.h"
#include "analyses/pls/kernels.h"
#include "analyses/pls/prediction.h"
#include "analyses/pls/validation_order.h"
#include "analyses/pls/weighted_sums.h"
#include "numeric/host_reports.h"
#include "numeric/matrix_view.h"
#include "numeric/scratch.h"
#include "numeric/status.h"

namespace studystats::core {
namespace {

// Scratch of a fit whose data lie column after column.
struct PlsFitScratch {
  PlsFitScratch(Arena& arena, std::int32_t n, std::int32_t p, std::int32_t q, std::int32_t nComponents)
      : component(arena, n, q),
        samples(arena, p, nComponents),
        rotations(arena, area(p, nComponents)),
        scoreSquares(arena, nComponents),
        storage(arena, area(n, std::ptrdiff_t{p} + q)),
        rows(arena, n) {}

  PlsComponentScratch component;
  PlsSampleScratch samples;
  Array<double> rotations, scoreSquares, storage;
  Array<std::int32_t> rows;
};

// The model and its coefficients. The data, n x (p + q), are deflated by every component that was found.
std::int32_t fit(Matrix data, std::int32_t n, const PlsModel& model, double* coefs, PlsFitScratch& s, Pace& pace) {
  std::iota(s.rows.data(), s.rows.data() + n, 0);
  PlsData current(s.storage.data(), n, model.p, model.q);
  takeSamples({data.data, data.ld}, s.rows.data(), {}, current, pace);
  const std::int32_t status = fitComponents(current, model, s.component, nullptr, pace).status;
  if (status == kDone && model.nComponents > 0)
    deflate(current.x, model.loadings.column(model.nComponents - 1), s.component.scores.data(), pace);

  for (std::int32_t j = 0; j < model.p; ++j)
    for (std::int32_t i = 0; i < n; ++i) data(i, j) = current.x.x(j, i);
  for (std::int32_t k = 0; k < model.q; ++k) std::copy_n(current.y.x.column(k), n, data.column(model.p + k));
  if (status != kDone) return status;
  const Matrix rotations{s.rotations.data(), model.p};
  findRotations(model, rotations, s.samples, pace);
  coefficients(model, {rotations.data, rotations.ld}, coefs, pace);
  return status;
}

// Scratch of a validation by addresses.
struct PlsCvlScratch {
  PlsCvlScratch(Arena& arena, PlsSizes size)
      : order(arena, size.n),
        fit(arena, size.n, size.p, size.q, size.nComponents),
        means(arena, size.coefficients()),
        squares(arena, size.coefficients()),
        contrib(arena, size.nComponents),
        cumulative(arena, size.nComponents),
        rows(arena, size.n) {}

  PlsOrderScratch order;
  PlsFitScratch fit;
  Array<double> means, squares, contrib, cumulative;
  Array<std::int32_t> rows;
};

// What is validated: rows as the folds see them, and the first nComputed components of their models.
struct PlsValidation {
  PlsRows table;
  PlsSizes size;
  std::int32_t nComputed;
  Matrix press;
};

// The caller's working arrays, and the tags that travel with the rows.
struct CvlArrays {
  const std::int32_t* rowTags;
  Matrix work;  // n x m
  std::int32_t* workTags;
  double *sampleWork, *coefs, *s1, *s2;
};

using Rows = std::span<const std::int32_t>;

// The rows of the data packed from the top; the rest zero.
void packRows(const PlsRows& table, Rows rows, Matrix work) {
  for (std::int32_t j = 0; j < table.m; ++j) {
    std::fill_n(work.column(j), table.n, 0.0);
    for (std::size_t i = 0; i < rows.size(); ++i) work.column(j)[i] = table.data(rows[i], j);
  }
}

void packRowsAndTags(const PlsRows& table, Rows rows, const CvlArrays& to) {
  packRows(table, rows, to.work);
  std::fill_n(to.workTags, 2 * std::ptrdiff_t{table.n}, 0);
  for (std::size_t i = 0; i < rows.size(); ++i) to.workTags[i] = to.rowTags[rows[i]];
}

void addToSums(const PlsValidation& v, const CvlArrays& arrays) {
  const std::ptrdiff_t perResponse = v.size.perComponent(), used = area(v.size.p, v.nComputed);
  for (std::int32_t k = 0; k < v.size.q; ++k)
    for (std::ptrdiff_t e = k * perResponse; e < k * perResponse + used; ++e) {
      arrays.s1[e] += arrays.coefs[e];
      arrays.s2[e] += arrays.coefs[e] * arrays.coefs[e];
    }
}

// The held-out rows, predicted one by one from the working copy.
void predictHeldOut(const PlsValidation& v, const PlsModel& model, std::int32_t nHeld, double weight,
                    const CvlArrays& arrays, PlsCvlScratch& s) {
  const std::int32_t a = model.nComponents, p = v.size.p;
  for (std::int32_t k = 0; k < v.size.q; ++k)
    for (std::int32_t i = 0; i < nHeld; ++i) {
      for (std::int32_t j = 0; a > 0 && j < p; ++j) arrays.sampleWork[j] = arrays.work(i, j);
      PlsPrd(arrays.sampleWork, &a, &p, &a, model.respWeights.column(k), model.inner, model.weights.data,
             model.loadings.data, s.contrib.data(), s.cumulative.data());
      for (std::int32_t c = 0; c < v.nComputed; ++c) {
        const double error = arrays.work(i, p + k) - s.cumulative[c];
        v.press(c, k) += weight * (error * error);
      }
    }
}

std::int32_t runFolds(const PlsValidation& v, const PlsModel& model, std::int32_t* rowOrder, double* coefErrors,
                      const CvlArrays& arrays, PlsCvlScratch& s, Pace& pace) {
  // 1. The rows of the model, the first response sorted; plan and order.
  PlsFolds folds = planFolds(v.table, rowOrder, s.order);
  const std::int32_t nModel = folds.planned.n, nFolds = folds.planned.plan.folds;
  packRows(v.table, {s.order.modelRows.data(), static_cast<std::size_t>(nModel)}, arrays.work);
  if (v.table.m > v.size.p) std::copy_n(s.order.key.data(), nModel, arrays.work.column(v.size.p));
  PlsSums sums{v.press, s.means.data(), s.squares.data(), v.nComputed};
  clearSums(v.size, {v.press, arrays.s1, arrays.s2, v.nComputed});

  // 2. The folds.
  const double weight = folds.planned.plan.pressWeight;
  for (std::int32_t g = 0; g < nFolds; ++g) {
    if (!pace.begin(g + 1, nFolds)) return kStopped;
    const engine::FoldRows rows = folds(g, {s.rows.data(), static_cast<std::size_t>(v.size.n)});
    packRowsAndTags(v.table, rows.training, arrays);
    const std::int32_t status = fit(arrays.work, v.size.n, model, arrays.coefs, s.fit, pace);
    if (status != kDone) return status;
    addToSums(v, arrays);
    addCoefficients(v.size, arrays.coefs, sums);
    if (v.size.q < 1) continue;
    packRowsAndTags(v.table, rows.heldOut, arrays);
    predictHeldOut(v, model, static_cast<std::int32_t>(rows.heldOut.size()), weight, arrays, s);
  }

  // 3. The spread of the coefficients.
  standardErrors(v.size, sums, weight, coefErrors);
  return kDone;
}

}  // namespace

void PlsCmp(const double* data, const std::int32_t* nRows, const std::int32_t* /*m*/, const std::int32_t* nDescriptors,
            const std::int32_t* nResponses, double* scores, double* weights, double* loadings, double* respWeights,
            double* innerCoef, std::int32_t* status) {
  const std::int32_t n = std::max(*nRows, 0), p = std::max(*nDescriptors, 0), q = std::max(*nResponses, 0);
  Obtained<PlsFitScratch> scratch(n, p, q, 0);
  if (!scratch) {
    *status = kNoScratch;
    return;
  }
  Pace unasked;
  std::iota(scratch->rows.data(), scratch->rows.data() + n, 0);
  PlsData current(scratch->storage.data(), n, p, q);
  takeSamples({data, n}, scratch->rows.data(), {}, current, unasked);
  double* u = scratch->component.u.data();
  PlsComponent component{scores, weights, loadings, respWeights, innerCoef};
  rowSums(current.x, u, startVector(current, u), weights, unasked);
  *status = extractComponent(current, component, u, scratch->component.uBefore.data(), unasked);
}

void PlsPrd(double* sampleWork, const std::int32_t* nUse, const std::int32_t* nDescriptors, const std::int32_t* nModel,
            const double* respColumn, const double* inner, const double* weights, const double* loadings,
            double* contrib, double* cumulative) {
  const std::int32_t p = std::max(*nDescriptors, 0);
  const Matrix sample{sampleWork, p};
  const ConstMatrix w{weights, p}, l{loadings, p};
  for (std::int32_t a = 0; a < *nUse; ++a) {
    double t = 0.0;
    for (std::int32_t j = 0; j < p; ++j) t += sample(j, a) * w(j, a);
    contrib[a] = inner[a] * respColumn[a] * t;
    cumulative[a] = a == 0 ? contrib[a] : cumulative[a - 1] + contrib[a];
    for (std::int32_t j = 0; a + 1 < *nModel && j < p; ++j) sample(j, a + 1) = sample(j, a) - t * l(j, a);
  }
}

void PlsFit(double* data, const std::int32_t* nRows, const std::int32_t* /*m*/, const std::int32_t* nDescriptors,
            const std::int32_t* nResponses, const std::int32_t* nComponents, double* weights, double* loadings,
            double* respWeights, double* inner, double* coefs, std::int32_t* status) {
  const std::int32_t n = std::max(*nRows, 0), p = std::max(*nDescriptors, 0), q = std::max(*nResponses, 0);
  const std::int32_t nModel = std::max(*nComponents, 0);
  Obtained<PlsFitScratch> scratch(n, p, q, nModel);
  if (!scratch) {
    *status = kNoScratch;
    return;
  }
  const PlsModel model{
      p, q, nModel, {weights, p}, {loadings, p}, {respWeights, nModel}, inner, scratch->scoreSquares.data()};
  Pace unasked;
  *status = fit({data, n}, n, model, coefs, *scratch, unasked);
}

void PlsCvl(const double* data, const std::int32_t* rowTags, double* work, std::int32_t* workTags,
            std::int32_t* rowOrder, const std::int32_t* rowUse, const std::int32_t* nRows, const std::int32_t* nColumns,
            const std::int32_t* nResponses, const std::int32_t* nDescriptors, const std::int32_t* nComputed,
            const std::int32_t* nComponents, const double* /*scales*/, const double* /*means*/,
            const std::int32_t* /*scaled*/, double* press, double* coefErrors, double* sampleWork, double* foldCoefs,
            double* weights, double* loadings, double* respWeights, double* inner, double* s1, double* s2,
            std::int32_t* status, ProgressMonitor* const* monitor, std::int32_t* continueFlag) {
  *continueFlag = 1;
  *status = kSingular;
  const std::int32_t n = std::max(*nRows, 0), p = std::max(*nDescriptors, 0), q = std::max(*nResponses, 0);
  const std::int32_t nModel = std::max(*nComponents, 0), nUsed = std::clamp(*nComputed, 0, nModel);
  if (*nColumns < std::int64_t{p} + q) return;
  Obtained<PlsCvlScratch> scratch(PlsSizes{n, p, q, nModel});
  if (!scratch) {
    *status = kNoScratch;
    return;
  }
  const PlsModel model{
      p, q, nModel, {weights, p}, {loadings, p}, {respWeights, nModel}, inner, scratch->fit.scoreSquares.data()};
  const HostReports reports{monitor, continueFlag};
  Pace pace{engine::Checkpoint(reports)};
  const PlsValidation validation{{{data, n}, rowUse, n, *nColumns, p}, {n, p, q, nModel}, nUsed, {press, nModel}};
  *status = runFolds(validation, model, rowOrder, coefErrors,
                     {rowTags, {work, n}, workTags, sampleWork, foldCoefs, s1, s2}, *scratch, pace);
}

}  // namespace studystats::core
