// What partial least squares is given, and one call of its entry point: arrays sized and filled beforehand.
#pragma once

#include <studystats/host/partial_least_squares.h>

#include "host/folds.h"
#include "host/preparation/preparation.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace studystats {

struct PreparedPls {
  Prepared data;
  Grid block;                                  // model rows x descriptors, then responses: mean 0, scaled
  std::vector<double> means, scales;           // of the block's columns, table units: prepared = (value - mean) / scale
  std::vector<std::vector<double>> responses;  // of the model's rows, table units
  int components = 0;                          // as rows and columns allow
  RunFolds folds;

  std::size_t descriptors() const { return data.model.columns; }
};

PreparedPls preparePls(const TableView& table, const PartialLeastSquaresOptions& options, Watch& watch);

struct PlsRequest {
  const Grid& block;
  std::size_t descriptors = 0;
  std::vector<double> means{}, scales{};  // empty: the block is taken as it stands, with means 0 and scales 1
  int components = 0;
  bool keepAll = true;  // else by the ratio
  double ratioLimit = 0;
  FoldSettings folds{.method = 1, .groups = 1};  // one group: trains on nothing and costs nothing
};

struct PlsCall {
  std::size_t descriptors = 0, components = 0, responses = 0;
  std::vector<double> coefs, errors;                        // descriptor, component, response; table units
  std::vector<double> ratios, rss, press, tss, intercepts;  // component, response; block units but the intercepts
  std::vector<std::int32_t> order;                          // the rows in validation order, from 1
  std::int32_t status = 0, foldsBegun = 0, foldsPlanned = 0;

  std::size_t at(std::size_t a, std::size_t k) const { return a + k * components; }
  double coefficient(std::size_t j, std::size_t a, std::size_t k) const { return coefs[j + at(a, k) * descriptors]; }
  double error(std::size_t j, std::size_t a, std::size_t k) const { return errors[j + at(a, k) * descriptors]; }
  std::size_t kept() const;       // leading ratios that were written
  std::size_t completed() const;  // components extracted before a failure
};

// Progress goes from `from` to `to` percent. Throws Stopped, OutOfMemory and what the progress callback throws.
PlsCall callPls(const PlsRequest& request, std::int32_t seed, Watch& watch, const std::string& text, double from,
                double to);

}  // namespace studystats
