// Discriminant analysis: which class a row belongs to, the selection of descriptors repeated in every fold.
#pragma once

#include <studystats/host/data.h>
#include <studystats/host/model.h>
#include <studystats/host/output.h>
#include <studystats/host/validation.h>

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

namespace studystats {

// How descriptors come into the classifier.
struct ClassSelection {
  enum class Kind {
    Auto,    // step by step, as long as the fraction correct or the distances between classes grow
    All,     // every descriptor
    Number,  // step by step up to a number
  };
  Kind kind = Kind::Auto;
  int number = 0;  // of Number
};

// Prior probabilities of the classes. They concern posteriors alone: a row goes to the nearest class.
struct Priors {
  enum class Kind { Equal, Size, Given };
  Kind kind = Kind::Equal;
  std::vector<double> values{};  // of Given, one a class in the order of the classes; made to sum to 1
};

struct DiscriminantOptions {
  std::string classColumn{};
  ClassSelection selection{};
  Priors priors{};
  std::vector<std::string> classOrder{};  // classes that are to come first, in this order; others by first appearance
  Folds folds{};
  double level = 0.95;  // of limits and ellipses
  DataOptions data{};
  ProgressCallback progress{};
  StopSignal stop{};
};

struct DiscriminantClass {
  std::string name;
  std::size_t rows = 0;
  double prior = 0;
  std::size_t fittedCorrect = 0;   // of rows
  std::size_t heldOut = 0;         // how often rows of the class were held out
  std::size_t heldOutCorrect = 0;  // and classified correctly
  std::vector<double> means;       // one a chosen descriptor, table units
  std::vector<double> scores;      // mean of the canonical scores
};

// Counts of true (row) by predicted class (column).
struct STUDYSTATS_API Confusion {
  std::size_t classes = 0;
  std::vector<std::size_t> counts;  // by row
  std::size_t operator()(std::size_t truth, std::size_t predicted) const { return counts[truth * classes + predicted]; }
  std::size_t total() const;
  std::size_t correct() const;
  double fraction() const;  // correct / total; not a number when nothing was counted
};

struct DiscriminantStep {
  std::string descriptor;
  double fraction = 0;                 // correct, fitted, with the descriptors so far
  std::vector<double> classFractions;  // one a class
  double distances = 0;                // sum of the Mahalanobis distances between all pairs of class means
};

struct ChosenDescriptor {
  std::string name;
  bool chosen = false;          // in the classifier of all rows
  std::size_t foldsChosen = 0;  // folds whose own selection chose it
};

struct CanonicalFunction {
  double eigenvalue = 0;             // between-class over within-class sum of squares
  double share = 0;                  // of all eigenvalues
  double constant = 0;               // score = constant + sum of coefficient * value; 0 at the mean of the model's rows
  std::vector<double> coefficients;  // one a chosen descriptor, table units; the pooled variance of the scores is 1
};

struct DiscriminantRow {
  std::string name;
  Role role = Role::Model;
  std::string known;               // its class; empty when the table has none
  std::string predicted;           // the nearest class
  std::string next;                // the second nearest
  std::vector<double> distances;   // Mahalanobis distance to every class mean
  std::vector<double> posteriors;  // prior * exp(-d^2 / 2), normal densities with one covariance
  std::vector<double> scores;      // canonical
  std::string heldOutClass;        // predicted while held out; empty for rows never held out. Held out several times:
                                   // the class most often predicted
  std::vector<double> heldOutDistances;  // to every class mean of the fold's own classifier, to seven figures; held out
                                         // several times: their mean. Not-a-number where a fold trained on none of it
  std::size_t timesHeldOut = 0;
  std::size_t fold = 0;  // from 1, when held out once
};

struct DiscriminantValidation {
  Confusion confusion;
  std::vector<std::size_t> foldsWithout;  // by class: folds whose held-out rows have none of it
};

struct Discriminant {
  UsedData used;
  std::string classColumn;
  ClassSelection selection;
  Priors::Kind priors = Priors::Kind::Equal;
  std::vector<DiscriminantClass> classes;
  std::vector<std::string> chosen;            // descriptors of the classifier, in table order
  std::vector<ChosenDescriptor> descriptors;  // all, with the folds that chose each
  std::vector<DiscriminantStep> steps;        // none when all are taken
  std::string stopReason;
  Confusion fitted;  // resubstitution
  FoldPlan plan;
  Result<DiscriminantValidation> validation;
  std::optional<Confusion> allDescriptors;  // cross-validated with every descriptor, for comparison
  std::vector<CanonicalFunction> functions;
  std::vector<DiscriminantRow> rows;  // the model's in table order, then those only classified
  double level = 0.95;
  Model model;  // predicts new rows; can be saved
  std::vector<Remark> remarks;
};

// Stepwise discriminant analysis by Mahalanobis distance under the pooled covariance. Rows without a class are
// classified. Classes with one row are set aside.
STUDYSTATS_API Discriminant discriminate(const TableView& table, const DiscriminantOptions& options);
STUDYSTATS_API std::string explain(const TableView& table, const DiscriminantOptions& options);

// The command's text: plain ASCII, at most 100 columns, without the remarks.
STUDYSTATS_API std::string summary(const Discriminant& result, const TextOptions& options = {});

// Everything at full precision; "schema" names the form. Not-a-number is null.
STUDYSTATS_API std::string toJson(const Discriminant& result);

// The same as CSV files, one a table.
STUDYSTATS_API std::vector<CsvFile> toTables(const Discriminant& result);

// One line a row: name, role, classes, and what the analysis says of it.
STUDYSTATS_API std::string rowsAsCsv(const Discriminant& result);

}  // namespace studystats
