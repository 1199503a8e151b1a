// Principal components of a table.
#pragma once

#include <studystats/host/data.h>
#include <studystats/host/model.h>
#include <studystats/host/output.h>

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

namespace studystats {

struct PrincipalComponentsOptions {
  int components = 0;   // kept in output and limits; 0: the smallest number with 80 % explained, 2 ... 10
  double level = 0.95;  // of the limits
  std::vector<std::string> responses{};  // kept out of the analysis and carried along
  std::string classColumn{};             // kept out of the analysis and carried along
  DataOptions data{};
  ProgressCallback progress{};
  StopSignal stop{};
};

struct Component {
  double eigenvalue = 0;  // variance of the scores
  double explained = 0;   // fraction of the total variance
  double cumulative = 0;
};

struct ComponentRow {
  std::string name;
  Role role = Role::Model;
  std::string label;           // its class, when a class column was named
  std::vector<double> scores;  // centred on the model's rows, one a kept component
  double t2 = 0;  // Hotelling's T2: squared distance within the model plane, in units of the scores' variances
  double q = 0;   // squared distance from the model plane, in prepared units
};

// The model's rows of one class.
struct ComponentGroup {
  std::string label;
  std::size_t rows = 0;
  std::vector<double> meanScores;  // one a kept component
};

struct PrincipalComponents {
  UsedData used;
  int supported = 0;  // components that rows and columns can support
  int kept = 0;
  std::vector<Component> components;  // one a descriptor, largest first
  std::optional<int> aboveOne;        // eigenvalues above 1, when autoscaled
  int aboveBrokenStick = 0;           // leading components that explain more than a stick broken at random
  Grid loadings;                      // descriptors x kept, signs as the analysis returns them
  Grid explained;                     // descriptors x kept: cumulative fraction of the descriptor's variance, 0 ... 1
  std::vector<ComponentRow> rows;     // the model's in table order, then those only predicted
  std::string classColumn;
  std::vector<ComponentGroup> groups;  // in the order of first appearance, when a class column was named
  double level = 0.95;
  std::optional<double> t2Limit;  // k (n^2 - 1) / (n (n - k)) * F(level; k, n - k); absent when n <= k
  std::optional<double>
      qLimit;   // g * chi^2(level; h), g and h from the rows' mean and variance; absent without residuals
  Model model;  // predicts new rows; can be saved
  std::vector<Remark> remarks;
};

STUDYSTATS_API PrincipalComponents principalComponents(const TableView& table,
                                                       const PrincipalComponentsOptions& options = {});

// What would be analysed: rows, columns, what is dropped and why. Nothing is analysed.
STUDYSTATS_API std::string explain(const TableView& table, const PrincipalComponentsOptions& options = {});

// The command's text: plain ASCII, at most 100 columns, without the remarks.
STUDYSTATS_API std::string summary(const PrincipalComponents& result, const TextOptions& options = {});

// Everything at full precision; "schema" names the form. Not-a-number is null.
STUDYSTATS_API std::string toJson(const PrincipalComponents& result);

// The same as CSV files, one a table.
STUDYSTATS_API std::vector<CsvFile> toTables(const PrincipalComponents& result);

// One line a row: name, role, and what the analysis says of it.
STUDYSTATS_API std::string rowsAsCsv(const PrincipalComponents& result);

}  // namespace studystats
