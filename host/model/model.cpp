// A model applied to rows: the table's columns become prepared descriptors as they did in training, and the rest is a
// few sums. Figures for people are those of the training.
#include <studystats/host/model.h>

#include "host/distributions.h"
#include "host/limits.h"
#include "host/model/model_data.h"
#include "host/names.h"
#include "host/preparation/block.h"
#include "host/reading/reader_source.h"
#include "host/text.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <numeric>

namespace studystats {
namespace {

constexpr double kMissing = std::numeric_limits<double>::quiet_NaN();

// The descriptor with the largest entry.
const std::string& largestOf(const ModelData& data, const std::vector<double>& entries) {
  const auto largest =
      std::max_element(entries.begin(), entries.end(), [](double a, double b) { return std::abs(a) < std::abs(b); });
  return data.descriptors[static_cast<std::size_t>(largest - entries.begin())].name;
}

// The product of a descriptor's factors, prepared; not-a-number when a cell is missing or outside a transform's domain.
double preparedValue(const ModelDescriptor& descriptor, const std::vector<std::size_t>& columns,
                     std::span<const double> values) {
  double product = 1;
  for (std::size_t f = 0; f < columns.size(); ++f) {
    double value = values[columns[f]];
    for (const Transform& transform : descriptor.recipe.factors[f].transforms)
      if (std::isnan(value) || !transformed(value, transform, value)) value = kMissing;
    product = f == 0 ? value : product * value;
  }
  return (product - descriptor.shift) / descriptor.scale;
}

std::optional<double> halfWidthOf(const ModelData& data, std::optional<double> error, double leverage) {
  if (!error || !(data.tValue > 0)) return {};
  return data.tValue * *error * std::sqrt(1 + leverage);
}

// Rows less the parameters that were fitted on them.
int degreesOfFreedom(const ModelData& data) {
  if (data.regression) return data.regression->dfResidual;
  return data.pls.empty() ? 0 : static_cast<int>(data.rows) - static_cast<int>(data.components) - 1;
}

void predictRegression(const ModelData& data, const std::vector<double>& x, Prediction& prediction) {
  const RegressionModel& model = *data.regression;
  double sum = 0;
  for (std::size_t a = 0; a < x.size(); ++a) sum += model.coefficients[a] * x[a];
  prediction.values = {model.intercept + sum};

  std::vector<double> standardised;
  for (std::size_t a = 0; a < x.size(); ++a) standardised.push_back((x[a] - model.means[a]) / model.sds[a]);
  double leverage = 1 / static_cast<double>(data.rows);
  for (std::size_t c = 0; c < x.size(); ++c) {
    const std::span<const double> axis = model.axes.column(c);
    const double score = std::inner_product(standardised.begin(), standardised.end(), axis.begin(), 0.0);
    leverage += score * score;
  }
  prediction.leverage = leverage;
  prediction.halfWidths = {halfWidthOf(data, model.crossValidatedRmse, leverage)};
  if (leverage > model.leverageLimit && !x.empty()) prediction.outside = largestOf(data, standardised);
}

// Scores, T2, residual distance, and which descriptor carries a row out of the plane's limits.
void placeInPlane(const ModelData& data, const std::vector<double>& x, Prediction& prediction) {
  const PlaneModel& plane = *data.plane;
  const std::size_t kept = std::min(data.components, plane.rotations.columns);
  std::vector<double> left;
  for (std::size_t j = 0; j < x.size(); ++j) left.push_back(x[j] - plane.centre[j]);
  std::vector<double> within(x.size(), 0.0);  // what each descriptor adds to T2
  double t2 = 0;
  for (std::size_t a = 0; a < kept; ++a) {
    const std::span<const double> rotation = plane.rotations.column(a);
    const double score = std::inner_product(x.begin(), x.end(), rotation.begin(), 0.0) - plane.offsets[a];
    prediction.scores.push_back(score);
    if (!(plane.variances[a] > 0)) continue;
    t2 += score * score / plane.variances[a];
    for (std::size_t j = 0; j < x.size(); ++j)
      within[j] += score / plane.variances[a] * rotation[j] * (x[j] - plane.centre[j]);
  }
  for (std::size_t a = 0; a < kept; ++a)
    for (std::size_t j = 0; j < x.size(); ++j) left[j] -= prediction.scores[a] * plane.loadings(j, a);
  const double q = std::inner_product(left.begin(), left.end(), left.begin(), 0.0);
  prediction.t2 = t2;
  prediction.q = q;
  const double beyondT2 = data.t2Limit ? t2 / *data.t2Limit : 0, beyondQ = data.qLimit ? q / *data.qLimit : 0;
  if (std::max(beyondT2, beyondQ) > 1) prediction.outside = largestOf(data, beyondQ > beyondT2 ? left : within);
}

void predictPls(const ModelData& data, const std::vector<double>& x, Prediction& prediction) {
  const auto n = static_cast<double>(data.rows);
  const std::size_t a = data.components - 1;
  const double leverage = 1 / n + prediction.t2.value_or(0) / (n - 1);
  for (const PlsModelResponse& response : data.pls) {
    const std::span<const double> coefficients = response.coefficients.column(a);
    const double sum = std::inner_product(x.begin(), x.end(), coefficients.begin(), 0.0);
    prediction.values.push_back(response.mean + response.scale * sum);
    prediction.halfWidths.push_back(halfWidthOf(data, response.crossValidatedRmse[a], leverage));
  }
}

void classify(const ModelData& data, const std::vector<double>& x, Prediction& prediction) {
  const DiscriminantModel& model = *data.discriminant;
  const CanonicalSpace& space = *model.placed;
  const Grid row{1, x.size(), x};
  for (std::size_t c = 0; c < model.classes.size(); ++c) prediction.distances.push_back(space.distance(row, 0, c));
  std::size_t nearest = 0;
  for (std::size_t c = 1; c < model.classes.size(); ++c)
    if (prediction.distances[c] < prediction.distances[nearest]) nearest = c;
  std::size_t next = nearest == 0 ? 1 : 0;
  for (std::size_t c = 0; c < model.classes.size(); ++c)
    if (c != nearest && prediction.distances[c] < prediction.distances[next]) next = c;
  prediction.predictedClass = model.classes[nearest];
  prediction.nextClass = model.classes[next];
  prediction.posteriors = posteriorsOf(prediction.distances, model.priors);
  prediction.scores = space.scores(row, 0);
  if (prediction.distances[nearest] * prediction.distances[nearest] > data.distanceLimit)
    prediction.outside = largestOf(data, space.contributions(row, 0, nearest));
}

std::string counting(std::size_t n) { return counted(n, "descriptor", "descriptors"); }

}  // namespace

void complete(ModelData& data) {
  data.columns.clear();
  data.factors.clear();
  for (const ModelDescriptor& descriptor : data.descriptors) {
    data.factors.emplace_back();
    for (const DescriptorRecipe::Factor& factor : descriptor.recipe.factors) {
      const auto at = std::find(data.columns.begin(), data.columns.end(), factor.column);
      data.factors.back().push_back(static_cast<std::size_t>(at - data.columns.begin()));
      if (at == data.columns.end()) data.columns.push_back(factor.column);
    }
  }
  const int df = degreesOfFreedom(data);
  data.tValue = df >= 1 ? tQuantile(data.level, df) : 0;
  if (data.plane) {
    const std::size_t kept = std::min(data.components, data.plane->rotations.columns);
    data.t2Limit =
        kept > 0 ? t2LimitOf(static_cast<double>(kept), static_cast<double>(data.rows), data.level) : std::nullopt;
    data.qLimit = kept > 0 ? qLimitFrom(data.plane->qMeans[kept - 1], data.plane->qVariances[kept - 1], data.level)
                           : std::nullopt;
  }
  if (data.discriminant && !data.descriptors.empty()) {
    data.distanceLimit = chiSquareQuantile(data.level, static_cast<double>(data.descriptors.size()));
    data.discriminant->placed.emplace(data.discriminant->space);
  }
}

const ModelData& Model::data() const {
  if (!data_) throw NotComputed("there is no model: it was neither made by an analysis nor loaded.");
  return *data_;
}

Model Model::parse(std::string_view json, const std::string& name) {
  return Model(std::make_shared<const ModelData>(parsedModel(json, name)));
}

Model Model::load(const std::string& path) {
  const ProgressCallback nobody;
  const StopSignal never;
  const Watch watch(nobody, never);
  const FileText file(path, watch);
  return parse(file.text(), shownFile(path));
}

std::string Model::json() const { return jsonOf(data()); }
void Model::save(const std::string& path) const { writeFile(path, json()); }
Model::Kind Model::kind() const { return data().kind; }
const std::vector<std::string>& Model::columns() const { return data().columns; }
const std::vector<std::string>& Model::responses() const { return data().responses; }
std::size_t Model::components() const { return data().components; }
double Model::level() const { return data().level; }
const std::string& Model::rowNameColumn() const { return data().rowNameColumn; }

const std::vector<std::string>& Model::classes() const {
  static const std::vector<std::string> kNone;
  return data().discriminant ? data().discriminant->classes : kNone;
}

std::size_t Model::scores() const {
  const ModelData& d = data();
  if (d.discriminant) return d.discriminant->space.vectors.columns;
  return d.plane ? std::min(d.components, d.plane->rotations.columns) : 0;
}

std::string Model::description() const {
  const ModelData& d = data();
  const std::string trained =
      fmt::format("{}, trained on {}", counting(d.descriptors.size()), counted(d.rows, "row", "rows"));
  switch (d.kind) {
    case Kind::Regression:
      return fmt::format("{} of {}, {}", d.regression->stepwise ? "stepwise regression" : "regression",
                         d.responses.front(), trained);
    case Kind::PartialLeastSquares:
      return fmt::format("partial least squares of {}, {}, {}", listed(d.responses),
                         counted(d.components, "component", "components"), trained);
    case Kind::Discriminant:
      return fmt::format("discriminant analysis of {}, {} classes, {}", d.responses.front(),
                         d.discriminant->classes.size(), trained);
    case Kind::PrincipalComponents:
      break;
  }
  return fmt::format("principal components, {} kept, {}", d.components, trained);
}

std::string Model::honesty() const {
  const ModelData& d = data();
  const std::string not_ = "not validated: " + d.validation.reason;
  if (d.kind == Kind::Regression) {
    const RegressionModel& model = *d.regression;
    const std::string fitted = fmt::format("fitted R2 {}, s {}; ", fixed(model.r2, 3), significant(model.s, 3));
    if (!model.q2 || !model.crossValidatedRmse) return fitted + not_;
    return fitted + fmt::format("cross-validated q2 {}, RMSE {} ({})", fixed(*model.q2, 3),
                                significant(*model.crossValidatedRmse, 3), d.validation.scheme);
  }
  if (d.kind == Kind::PartialLeastSquares) {
    const PlsModelResponse& response = d.pls.front();
    const std::size_t a = d.components - 1;
    return fmt::format("{}fitted R2 {}, RMSE {}; cross-validated q2 {}, RMSE {} ({})",
                       d.pls.size() > 1 ? d.responses.front() + ": " : "", fixed(response.r2[a], 3),
                       significant(response.rmse[a], 3), fixed(response.q2[a], 3),
                       significant(response.crossValidatedRmse[a], 3), d.validation.scheme);
  }
  if (d.kind == Kind::Discriminant) {
    const DiscriminantModel& model = *d.discriminant;
    const std::string fitted = fmt::format("fitted {} correct; ", percent(model.fitted));
    return model.crossValidated ? fitted + fmt::format("cross-validated {} correct ({})",
                                                       percent(*model.crossValidated), d.validation.scheme)
                                : fitted + not_;
  }
  const std::vector<double>& explained = d.plane->explained;
  return explained.empty() ? std::string() : fmt::format("{} of the variance explained", percent(explained.back()));
}

std::string Model::domainLimits() const {
  const ModelData& d = data();
  if (d.kind == Kind::Regression) return fmt::format("leverage above {}", significant(d.regression->leverageLimit, 3));
  const std::string level = percent(d.level, 0);
  if (d.kind == Kind::Discriminant) return fmt::format("farther from every class than {} of its rows", level);
  return fmt::format("T2 or residual distance beyond its {} limit", level);
}

std::string Model::intervalText() const {
  const ModelData& d = data();
  if (d.kind == Kind::Regression && d.regression->crossValidatedRmse)
    return fmt::format(
        "The interval is t({}; {}) * {} * root(1 + leverage): it takes the cross-validated error {} in "
        "place of s = {}{}.",
        brief(d.level, 4), d.regression->dfResidual, significant(*d.regression->crossValidatedRmse, 3),
        significant(*d.regression->crossValidatedRmse, 3), significant(d.regression->s, 3),
        d.regression->stepwise ? ", because the descriptors were chosen on the same data" : "");
  if (d.kind == Kind::PartialLeastSquares)
    return fmt::format("The interval is t({}; {}) * cross-validated RMSE * root(1 + 1/n + T2/(n - 1)).",
                       brief(d.level, 4), degreesOfFreedom(d));
  return {};
}

std::optional<double> Model::fittedHalfWidth(const Prediction& prediction) const {
  const ModelData& d = data();
  if (!d.regression || !prediction.leverage) return {};
  return halfWidthOf(d, d.regression->s, *prediction.leverage);
}

Model Model::withComponents(int components) const {
  ModelData changed = data();
  const std::size_t computed = changed.pls.empty() ? 0 : changed.pls.front().coefficients.columns;
  if (changed.kind != Kind::PartialLeastSquares)
    throw BadOptions("--components is for models of partial least squares.", {.option = "--components"});
  if (components < 1 || static_cast<std::size_t>(components) > computed)
    throw BadOptions(fmt::format("--components {}: the model has 1 to {}.", components, computed),
                     {.option = "--components"});
  changed.components = static_cast<std::size_t>(components);
  complete(changed);
  return Model(std::make_shared<const ModelData>(std::move(changed)));
}

Model Model::withLevel(double level) const {
  ModelData changed = data();
  if (!(level > 0 && level < 1))
    throw BadOptions(fmt::format("--level {} is not a probability between 0 and 1, such as 0.95.", level),
                     {.option = "--level"});
  changed.level = level;
  complete(changed);
  return Model(std::make_shared<const ModelData>(std::move(changed)));
}

Prediction Model::predict(std::span<const double> values) const {
  const ModelData& d = data();
  if (values.size() != d.columns.size())
    throw BadOptions(fmt::format("a row for this model has {} values, not {}.", d.columns.size(), values.size()));
  Prediction prediction;
  for (std::size_t j = 0; j < values.size(); ++j)
    if (std::isnan(values[j])) {
      prediction.missing = d.columns[j];
      return prediction;
    }
  std::vector<double> x;
  x.reserve(d.descriptors.size());
  for (std::size_t j = 0; j < d.descriptors.size(); ++j) {
    x.push_back(preparedValue(d.descriptors[j], d.factors[j], values));
    if (std::abs(x.back()) <= kMostSize) continue;
    prediction.missing = d.descriptors[j].name;  // outside the domain of its transform, or out of the model's reach
    return prediction;
  }
  switch (d.kind) {
    case Kind::Regression:
      predictRegression(d, x, prediction);
      break;
    case Kind::Discriminant:
      classify(d, x, prediction);
      break;
    case Kind::PartialLeastSquares:
      placeInPlane(d, x, prediction);
      predictPls(d, x, prediction);
      break;
    case Kind::PrincipalComponents:
      placeInPlane(d, x, prediction);
      break;
  }
  return prediction;
}

std::vector<Prediction> Model::predict(const TableView& table) const {
  std::vector<std::span<const double>> cells;
  for (const std::string& name : columns()) {
    requireNumeric(table, name, "the model's column");
    cells.push_back(table.find(name)->numbers);
  }
  std::vector<Remark> remarks;
  const std::vector<std::string> names = rowNames(table, idColumn(table, {}, {}), remarks);
  std::vector<Prediction> predictions;
  std::vector<double> values(cells.size());
  for (std::size_t i = 0; i < table.rows(); ++i) {
    for (std::size_t j = 0; j < cells.size(); ++j) values[j] = cells[j][i];
    predictions.push_back(predict(values));
    predictions.back().row = names[i];
  }
  return predictions;
}

}  // namespace studystats
