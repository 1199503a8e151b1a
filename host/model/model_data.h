// What a saved model holds. Everything that predicts stands in prepared units; the rest is for people.
#pragma once

#include <studystats/host/model.h>

#include "host/da/canonical.h"

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

namespace studystats {

struct ModelDescriptor {
  std::string name;
  DescriptorRecipe recipe;
  double shift = 0, scale = 1;  // prepared = (value - shift) / scale
};

// How a model was validated, and what came of it.
struct ModelValidation {
  std::string scheme;  // "7 folds, selection in each"
  std::string reason;  // why there is no validation; empty when there is one
};

// The same equation for descriptors that are transformed and derived, but neither shifted nor scaled, and a response in
// its own unit. For people: predictions take the prepared one.
struct TableEquation {
  double constant = 0;
  std::vector<double> coefficients;
};

// An equation, and where a row lies among those it was fitted on.
struct RegressionModel {
  bool stepwise = true;
  double intercept = 0;              // of prepared descriptors
  std::vector<double> coefficients;  // of prepared descriptors
  std::string equation;              // table units
  std::optional<TableEquation> inTableUnits;
  double r2 = 0, s = 0, rmse = 0;
  int dfResidual = 0;
  std::optional<double> q2, crossValidatedRmse;
  std::vector<double> means, sds;  // of the prepared descriptors
  Grid axes;  // descriptors x descriptors: leverage = 1 / n + the squared length of (standardised row * axes)
  double leverageLimit = 0;
};

// Components: a plane among the prepared descriptors.
struct PlaneModel {
  std::vector<double> centre;              // of the prepared descriptors
  Grid rotations;                          // descriptors x components: score = sum of prepared * rotation - offset
  std::vector<double> offsets;             // one a component
  Grid loadings;                           // descriptors x components
  std::vector<double> variances;           // of the scores
  std::vector<double> qMeans, qVariances;  // of the rows' squared residual distances, one a number of components
  std::vector<double> explained;           // cumulative share
};

struct PlsModelResponse {
  double mean = 0, scale = 1;
  Grid coefficients;  // descriptors x components: column a predicts with a + 1 components
  std::vector<double> r2, q2, rmse, crossValidatedRmse;  // one a number of components
  std::optional<TableEquation> inTableUnits;             // by the components kept
};

struct DiscriminantModel {
  std::vector<std::string> classes;
  std::vector<double> priors;
  CanonicalSpace::Parts space;
  double fitted = 0;                     // fraction correct
  std::optional<double> crossValidated;  // fraction correct
  std::optional<CanonicalSpace> placed;  // of `space`
};

struct ModelData {
  Model::Kind kind = Model::Kind::Regression;
  std::string version;  // of the library that made it
  std::string table;
  std::size_t rows = 0;  // it was trained on
  double level = 0.95;
  std::size_t components = 0;  // used in a prediction; 0 where it has no meaning
  std::string rowNameColumn;
  std::vector<std::string> responses;  // or the class column
  std::vector<ModelDescriptor> descriptors;
  ModelValidation validation;
  std::optional<RegressionModel> regression;
  std::optional<PlaneModel> plane;
  std::vector<PlsModelResponse> pls;
  std::optional<DiscriminantModel> discriminant;

  // What follows from the rest, worked out once rather than for every row.
  std::vector<std::string> columns;               // of a table that are needed
  std::vector<std::vector<std::size_t>> factors;  // of each descriptor: positions among the columns
  double tValue = 0;                              // of Student's t at the level; 0 without degrees of freedom
  std::optional<double> t2Limit, qLimit;          // of a plane
  double distanceLimit = 0;                       // squared, to the nearest class
};

void complete(ModelData& data);
std::string jsonOf(const ModelData& data);
ModelData parsedModel(std::string_view json, const std::string& name);  // throws BadTable

}  // namespace studystats
