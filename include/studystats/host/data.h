// From a table to the block that is analysed: what is taken, prepared, set aside, and the data card that says so.
#pragma once

#include <studystats/host/table.h>

#include <cstddef>
#include <span>
#include <string>
#include <vector>

namespace studystats {

enum class Scaling {
  Autoscale,  // mean 0, standard deviation 1
  Pareto,     // mean 0, divided by the square root of the standard deviation
  Range,      // -1 ... 1 over the model's rows
  Centre,     // mean 0
  None,
};

// What is done about missing descriptor cells. Whatever is dropped or filled is reported.
struct Missing {
  enum class Rule { DropRows, DropColumns, FillMean, FillMedian, FillValue, Fail };
  Rule rule = Rule::DropRows;
  double value = 0;  // of FillValue
};

// A column replaced by a function of (value + shift); a value outside the function's domain becomes missing.
struct Transform {
  enum class Kind { Ln, Log10, Sqrt, Square, Cube, Exp, Reciprocal };
  std::string column{};
  Kind kind = Kind::Ln;
  double shift = 0;
};

// Columns derived from others; an empty list means every descriptor.
struct Derivation {
  enum class Kind { CrossProducts, Squares, Quadratic, Cubes, Cubic };
  Kind kind = Kind::Squares;
  std::vector<std::string> columns{};  // patterns as in DataOptions
};

// Rows kept out of the model and only predicted.
struct TestRows {
  std::vector<std::size_t> rows{};   // of the table, from 0
  std::string column{};              // or the rows whose cell of this column ...
  std::string value{};               // ... has this value
  const TableView* table = nullptr;  // or the rows of another table, columns by name
};

// What is taken from the table. A column pattern is a literal name first, then a glob ("vsa_*", "x?"), or a range in
// table order ("A..B"); one that matches nothing is an error with the nearest name.
struct DataOptions {
  std::vector<std::string> columns{};  // descriptors; empty: every numeric column with no other use
  std::vector<std::string> exclude{};
  std::string id{};  // the column that names the rows; empty: the first text column without repeats
  Missing missing{};
  Scaling scaling = Scaling::Autoscale;
  std::vector<Transform> transforms{};
  std::vector<Derivation> derivations{};
  TestRows test{};
};

// A row or a column that was not used.
struct Dropped {
  std::string name;
  std::string reason;  // "missing cell in Ozone", "constant (all 3.5)", "text", ...
};

// Two columns that say the same: setAside = shift + scale * kept.
struct SameInformation {
  std::string kept;
  std::string setAside;
  double scale = 1;
  double shift = 0;
};

// What was asked of the table and what came of it. requested = extracted + missing + eliminated.
struct ExtractionCounts {
  std::size_t requested = 0;
  std::size_t extracted = 0;
  std::size_t missing = 0;     // asked for, not there
  std::size_t eliminated = 0;  // there, left out
};

// How a descriptor is made of table columns: the product of its factors, from left to right, each a column with its
// transforms applied one after the other.
struct DescriptorRecipe {
  struct Factor {
    std::string column;
    std::vector<Transform> transforms;
  };
  std::vector<Factor> factors;
};

// The data card of an analysis.
struct UsedData {
  std::string table;
  std::size_t tableRows = 0;
  std::size_t tableColumns = 0;
  std::string idColumn;           // empty: rows are numbered
  std::vector<std::string> rows;  // the model's
  std::vector<std::string> predictedRows;
  std::vector<std::string> descriptors;  // in the order of the analysis
  std::vector<Dropped> droppedRows;
  std::vector<Dropped> droppedColumns;  // descriptors that were asked for and not used, and columns with no use
  std::vector<SameInformation> setAside;
  std::size_t cellsFilled = 0;
  std::size_t cellsEliminated = 0;  // cells of dropped rows and columns that were missing
  ExtractionCounts rowCounts;
  ExtractionCounts columnCounts;
  std::vector<std::string> formulas;  // of columns made here: "x -> log ( x )", "x * z"
  Scaling scaling = Scaling::Autoscale;
  std::vector<DescriptorRecipe> recipes;  // per descriptor
  std::vector<double> shift;              // per descriptor: prepared = (value - shift) / scale
  std::vector<double> scale;
};

// A column-major grid of numbers that owns its cells.
struct Grid {
  std::size_t rows = 0;
  std::size_t columns = 0;
  std::vector<double> values;

  double operator()(std::size_t row, std::size_t column) const { return values[row + column * rows]; }
  std::span<const double> column(std::size_t j) const { return std::span(values).subspan(j * rows, rows); }
};

enum class Role {
  Model,      // the model was fitted on it
  Predicted,  // kept out of the model
};

}  // namespace studystats
