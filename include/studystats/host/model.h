// A model that travels: saved to a file, and applied to rows it has never seen.
#pragma once

#include <studystats/host/data.h>
#include <studystats/host/output.h>

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace studystats {

struct ModelData;  // the library's own

// What a model says of one row. What the kind of model does not have is empty.
struct Prediction {
  std::string row{};
  std::optional<std::string> missing{};             // why there is none: a needed column whose cell is missing, or a
                                                    // descriptor out of reach of the model; nothing below is set then
  std::vector<double> values{};                     // one a response (regression, partial least squares)
  std::vector<std::optional<double>> halfWidths{};  // of the intervals about them; absent without a validation
  std::string predictedClass{};                     // discriminant analysis: the nearest class, ...
  std::string nextClass{};                          // ... the second nearest,
  std::vector<double> distances{};                  // the Mahalanobis distance to each class mean
  std::vector<double> posteriors{};                 // and prior * exp(-d^2 / 2), made to sum to 1
  std::vector<double> scores{};                     // of components or canonical functions
  std::optional<double> leverage{};                 // regression
  std::optional<double> t2{};                       // components: squared distance within the model plane
  std::optional<double> q{};                        // components: squared distance from it
  std::string outside{};  // the descriptor that carries the row farthest out of the domain; empty inside it

  bool inDomain() const { return !missing && outside.empty(); }
};

class STUDYSTATS_API Model {
 public:
  enum class Kind { PrincipalComponents, Regression, PartialLeastSquares, Discriminant };

  Model() = default;  // of no analysis: every other member throws NotComputed
  explicit Model(std::shared_ptr<const ModelData> data) : data_(std::move(data)) {}  // the library's own way

  // Throws BadTable, with the place in the file, for what is no model, is damaged, or was written by a later version.
  static Model load(const std::string& path);
  static Model parse(std::string_view json, const std::string& name);
  std::string json() const;                  // numbers in their shortest exact form
  void save(const std::string& path) const;  // whole or not at all

  Kind kind() const;
  std::string description() const;   // "stepwise regression of logBBB, 10 descriptors, trained on 180 rows"
  std::string honesty() const;       // "fitted R2 0.600, s 0.473; cross-validated q2 0.331, ..."
  std::string domainLimits() const;  // "leverage above 0.183"
  std::string intervalText() const;  // how half widths are made, empty where there are none
  const std::vector<std::string>& columns() const;    // of a table that are needed
  const std::vector<std::string>& responses() const;  // their names, or that of the class column; none for components
  const std::vector<std::string>& classes() const;
  std::size_t components() const;            // that a prediction uses; 0 where it has no meaning
  std::size_t scores() const;                // how many a prediction has
  double level() const;                      // of the intervals
  const std::string& rowNameColumn() const;  // that named the training rows; empty: they were numbered
  // The half widths about the first response with the fitted error in place of the cross-validated one; regression
  // only.
  std::optional<double> fittedHalfWidth(const Prediction& prediction) const;

  // The same model with another number of components (partial least squares) or level. Throws BadOptions.
  Model withComponents(int components) const;
  Model withLevel(double level) const;

  // Values in the order of columns(), not-a-number where missing.
  Prediction predict(std::span<const double> values) const;
  // All rows of a table, its columns in any order. Throws BadOptions for a column that is not there or is text.
  std::vector<Prediction> predict(const TableView& table) const;

 private:
  const ModelData& data() const;
  std::shared_ptr<const ModelData> data_;
};

}  // namespace studystats
