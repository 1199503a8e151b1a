// Describing a table before anything is modelled.
#pragma once

#include <studystats/host/data.h>
#include <studystats/host/output.h>

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

namespace studystats {

struct DescribeOptions {
  std::vector<std::string> columns{};  // patterns; empty: all
  std::vector<std::string> exclude{};
  std::string id{};
  ProgressCallback progress{};
  StopSignal stop{};
};

struct ColumnSummary {
  std::string name;
  ColumnKind kind = ColumnKind::Numeric;
  std::size_t count = 0;  // cells present
  std::size_t missing = 0;
  std::size_t different = 0;   // different values or texts
  std::size_t mostCommon = 0;  // how often the most frequent one stands
  // Numeric columns with at least one cell. sd has divisor n - 1; skewness and excess kurtosis are moments over n,
  // divided by sd^3 and sd^4.
  std::optional<double> mean, sd, minimum, median, maximum, skewness, kurtosis;
  std::size_t strayCount = 0;  // almost numeric: how many cells are not, and the first of them
  std::vector<StrayCell> strays;
};

struct RelatedColumns {
  std::string first, second;
  double r = 0;  // over the rows in which both are present
};

struct Description {
  std::string table;
  std::size_t rows = 0;
  std::size_t tableColumns = 0;
  char delimiter = '\0';
  char decimal = '.';
  std::string idColumn;
  std::size_t idDifferent = 0;
  std::vector<ColumnSummary> columns;
  std::size_t rowsWithMissing = 0;
  std::size_t cellsMissing = 0;
  // What leaving a column out would keep, the largest gain first: a few at most.
  struct WithoutColumn {
    std::string column;
    std::size_t rowsKept = 0;
  };
  std::vector<WithoutColumn> withoutColumn;
  struct MissingTogether {
    std::string first, second;
    std::size_t rows = 0;
  };
  std::vector<MissingTogether> missingTogether;
  std::vector<std::string> codes;       // numeric, but few different whole numbers: perhaps labels
  std::vector<std::string> constant;    // all present cells equal
  std::vector<std::string> hardlyVary;  // at least 95 % of the rows equal
  std::vector<SameInformation> same;    // equal up to scale, sign and shift
  std::vector<RelatedColumns> related;  // |r| > 0.90, the strongest first
  std::vector<Remark> remarks;
};

STUDYSTATS_API Description describe(const TableView& table, const DescribeOptions& options = {});

// The command's text: plain ASCII, at most 100 columns, without the remarks.
STUDYSTATS_API std::string summary(const Description& description, const TextOptions& options = {});

// Everything at full precision; "schema" names the form. Not-a-number is null.
STUDYSTATS_API std::string toJson(const Description& description);

// The same as CSV files, one a table.
STUDYSTATS_API std::vector<CsvFile> toTables(const Description& description);

}  // namespace studystats
