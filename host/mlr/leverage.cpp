#include "host/mlr/leverage.h"

#include "host/preparation/preparation.h"

#include <studystats/engine.h>

#include <cmath>
#include <new>
#include <numeric>

namespace studystats {

LeverageModel::LeverageModel(const Grid& model, const std::vector<std::size_t>& chosen)
    : chosen_(chosen), rows_(static_cast<double>(model.rows)) {
  const std::size_t n = model.rows, k = chosen.size();
  std::vector<double> standardised;
  for (const std::size_t j : chosen) {
    const std::span<const double> column = model.column(j);
    mean_.push_back(std::accumulate(column.begin(), column.end(), 0.0) / rows_);
    double squares = 0;
    for (const double x : column) squares += (x - mean_.back()) * (x - mean_.back());
    sd_.push_back(std::sqrt(squares / (rows_ - 1)));
    for (const double x : column) standardised.push_back((x - mean_.back()) / sd_.back());
  }
  if (k == 0) return;
  engine::PrincipalComponents components(
      {.table = {standardised.data(), count32(n), count32(k), count32(n)}, .scores = false});
  const engine::Status status = components.fit();
  if (status == engine::Status::NoMemory) throw std::bad_alloc();
  if (status != engine::Status::Done) throw NotComputed("the leverages could not be computed.");
  const engine::PrincipalComponentsModel& axes = components.model();
  eigenvalues_.assign(axes.eigenvalues.begin(), axes.eigenvalues.end());
  vectors_.assign(axes.loadings.data, axes.loadings.data + k * k);
  if (eigenvalues_.back() > 0) condition_ = std::sqrt(eigenvalues_.front() / eigenvalues_.back());
  for (std::size_t a = 0; a < k; ++a) {
    double inflation = 0;
    for (std::size_t c = 0; c < k; ++c) inflation += vectors_[a + c * k] * vectors_[a + c * k] / eigenvalues_[c];
    vif_.push_back(inflation);
  }
}

double LeverageModel::at(const std::vector<double>& standardised) const {
  const std::size_t k = chosen_.size();
  double leverage = 1 / rows_;
  for (std::size_t c = 0; c < k; ++c) {
    double score = 0;
    for (std::size_t a = 0; a < k; ++a) score += standardised[a] * vectors_[a + c * k];
    leverage += score * score / ((rows_ - 1) * eigenvalues_[c]);
  }
  return leverage;
}

Grid LeverageModel::axes() const {
  const std::size_t k = chosen_.size();
  Grid axes{k, k, vectors_};
  for (std::size_t c = 0; c < k; ++c)
    for (std::size_t a = 0; a < k; ++a) axes.values[a + c * k] /= std::sqrt((rows_ - 1) * eigenvalues_[c]);
  return axes;
}

double LeverageModel::of(const Grid& grid, std::size_t row) const {
  std::vector<double> standardised;
  for (std::size_t a = 0; a < chosen_.size(); ++a) standardised.push_back((grid(row, chosen_[a]) - mean_[a]) / sd_[a]);
  return at(standardised);
}

double LeverageModel::atTableZero(const UsedData& used) const {
  std::vector<double> standardised;
  for (std::size_t a = 0; a < chosen_.size(); ++a) {
    const double zero = (0 - used.shift[chosen_[a]]) / used.scale[chosen_[a]];
    standardised.push_back((zero - mean_[a]) / sd_[a]);
  }
  return at(standardised);
}

}  // namespace studystats
