// The friendly interface: a table in, one result struct out.
//
//   const studystats::Table table = studystats::readTable("wine.csv");
//   const studystats::PrincipalComponents pca = studystats::principalComponents(table, {.components = 3});
//   std::cout << studystats::summary(pca);
//
// Columns and rows go by name, and where a number is needed it counts from 0. Results are values: they own what they
// hold and never point into a table. Not-a-number stands only where a cell truly is none; what can be absent is
// std::optional. Nothing here writes to a stream: what is worth saying stands in `remarks`, what went wrong is thrown
// as an Error. Options take designated initialisers: what has a default may be left out (members of class type carry {}
// so that g++ -Wextra agrees). Functions may be called from any thread; an analysis that validates holds a lock of this
// library's while it runs.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <iosfwd>
#include <optional>
#include <span>
#include <stdexcept>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#ifndef STUDYSTATS_API
#define STUDYSTATS_API __attribute__((visibility("default")))
#endif

namespace studystats {

// A program compiled against one revision of this header does not start with a library of another: the loader names the
// symbol that is missing.
STUDYSTATS_API extern const int hostInterfaceRevision1;
[[gnu::used]] inline const int* const hostInterfaceInUse = &hostInterfaceRevision1;

// ---- What went wrong, and what is worth knowing ---------------------------------------------------------------------

// Where in the caller's material an error lies; what does not apply is 0 or empty.
struct Where {
  std::string file{};     // as the caller named it
  std::int64_t line = 0;  // in the file, from 1
  int column = 0;         // of the table, from 1
  std::string cell{};     // its text
  std::string option{};   // as the command spells it, "--columns"
};

// What every failure here is. what() is one clear sentence for the person who reads it, then what to try.
class STUDYSTATS_API Error : public std::runtime_error {
 public:
  enum class Kind {
    BadOptions,   // the request does not fit the table, or contradicts itself
    BadTable,     // the table cannot be read
    NotComputed,  // the analysis could not be done
    OutOfMemory,
  };
  ~Error() override;
  Kind kind() const { return kind_; }
  const Where& where() const { return where_; }
  const std::string& suggestion() const { return suggestion_; }  // the nearest existing name, or empty
  int exitStatus() const;                                        // the command's: 2 for bad options and tables, else 1

 protected:
  Error(Kind kind, const std::string& what, Where where, std::string suggestion);

 private:
  Kind kind_;
  Where where_;
  std::string suggestion_;
};

class STUDYSTATS_API BadOptions : public Error {
 public:
  explicit BadOptions(const std::string& what, Where where = {}, std::string suggestion = {});
};
class STUDYSTATS_API BadTable : public Error {
 public:
  explicit BadTable(const std::string& what, Where where = {}, std::string suggestion = {});
};
class STUDYSTATS_API NotComputed : public Error {
 public:
  explicit NotComputed(const std::string& what, Where where = {});
};
class STUDYSTATS_API OutOfMemory : public Error {
 public:
  explicit OutOfMemory(const std::string& what);
};

// The caller's progress callback or stop token asked to stop. Not an Error: nothing went wrong, and nothing is left
// behind.
class STUDYSTATS_API Stopped : public std::exception {
 public:
  ~Stopped() override;
  const char* what() const noexcept override;
};

enum class Severity {
  Note,     // worth knowing
  Warning,  // can change a decision
};

// Something to tell the user. `code` is stable, so that an application can translate or suppress it.
struct Remark {
  Severity severity = Severity::Note;
  std::string code{};                // "duplicate-columns", "rows-dropped", ...
  std::string text{};                // what was seen, what it means, what to try
  std::vector<std::string> names{};  // columns or rows that it is about
};
STUDYSTATS_API std::ostream& operator<<(std::ostream& out, const Remark& remark);  // "warning: ..." or "note: ..."

// ---- Progress and stopping ------------------------------------------------------------------------------------------

struct Progress {
  double percent = 0;      // of the whole, never less than in the report before
  std::int64_t done = 0;   // of this stage
  std::int64_t total = 0;  // of this stage
  std::string stage;       // "reading", "analysis", ...
  std::string text;        // for people
};

// Called on the caller's thread, at least once before the work and once at 100 percent. False stops at this report;
// what the callback throws passes through unchanged.
using ProgressCallback = std::function<bool(const Progress&)>;

// Another way to stop: anything that answers stop_requested(), such as a std::stop_token. Looked at wherever progress
// is reported, and while a file is read.
class StopSignal {
 public:
  StopSignal() = default;
  template <class Token>
  requires requires(const Token& token) { static_cast<bool>(token.stop_requested()); }
  StopSignal(Token token)  // NOLINT(google-explicit-constructor): options.stop = source.get_token()
      : asked_([token] { return static_cast<bool>(token.stop_requested()); }) {}
  bool stop_requested() const { return asked_ && asked_(); }

 private:
  std::function<bool()> asked_;
};

// ---- Tables ---------------------------------------------------------------------------------------------------------

enum class ColumnKind { Numeric, Text };

// A cell that kept a column from being numeric.
struct StrayCell {
  std::size_t row = 0;    // from 0
  std::int64_t line = 0;  // in the file, from 1
  std::string text{};
};

// A column of a table that was read. Missing cells are not-a-number, or empty text.
struct TableColumn {
  std::string name{};
  ColumnKind kind = ColumnKind::Numeric;
  std::vector<double> numbers{};     // when numeric
  std::vector<std::string> texts{};  // when text: blanks at both ends trimmed, otherwise as written
  std::size_t strayCount = 0;        // text, but at least 90 % of its cells are numbers: how many are not ...
  std::vector<StrayCell> strays{};   // ... and the first few of them
  bool askedAsText = false;          // text because ReadOptions::asText named it
};

// A table in memory: named columns of one length.
class STUDYSTATS_API Table {
 public:
  std::string name{};                  // the file as the caller named it, or whatever messages should call the table
  std::vector<TableColumn> columns{};  // in the file's order, names unique
  char delimiter = ',';                // as found
  char decimal = '.';
  std::vector<Remark> remarks{};  // what the reader noticed

  std::size_t rows() const;
  const TableColumn* find(std::string_view columnName) const;  // null when there is none
};

struct ReadOptions {
  char delimiter = '\0';                 // '\0': detected among comma, semicolon, tab and |
  char decimal = '\0';                   // '\0': detected, point or comma
  std::vector<std::string> missingAs{};  // further texts that mean missing
  std::vector<std::string> asText{};     // columns whose cells are kept as written even if numbers (classes, row names)
  ProgressCallback progress{};
  StopSignal stop{};
};

// Reads a delimited text file; "-" is standard input. First row headings, RFC 4180 quoting, any line ends, a UTF-8
// byte-order mark. Empty cells and NA, N/A, NaN, ?, ., null (in any case) are missing. A column whose present cells are
// all numbers is numeric. Throws BadTable with file, line, column and cell; Stopped.
STUDYSTATS_API Table readTable(const std::string& path, const ReadOptions& options = {});

// The same from text that is already in memory; `name` is what messages call it.
STUDYSTATS_API Table parseTable(std::string_view text, const std::string& name, const ReadOptions& options = {});

// A table whose cells stay where they are: the view must not outlive them.
class STUDYSTATS_API TableView {
 public:
  struct Column {
    std::string name{};
    ColumnKind kind = ColumnKind::Numeric;
    std::span<const double> numbers{};
    std::span<const std::string> texts{};
    std::size_t strayCount = 0;
    std::span<const StrayCell> strays{};
    bool askedAsText = false;

    bool missing(std::size_t row) const;
  };

  TableView() = default;
  TableView(const Table& table);  // NOLINT(google-explicit-constructor): a table is viewed wherever a view is wanted
  void add(std::string name, std::span<const double> numbers);     // not-a-number: missing
  void add(std::string name, std::span<const std::string> texts);  // empty: missing
  void setRowNames(std::vector<std::string> names) { rowNames_ = std::move(names); }
  void setName(std::string name) { name_ = std::move(name); }

  const std::string& name() const { return name_; }  // "table" unless set
  std::size_t rows() const { return rows_; }
  const std::vector<Column>& columns() const { return columns_; }
  const Column* find(std::string_view columnName) const;
  const std::vector<std::string>& rowNames() const { return rowNames_; }  // empty: taken from a column
  char delimiter() const { return delimiter_; }                           // '\0' when the table came from no file
  char decimal() const { return decimal_; }

 private:
  void add(Column column, std::size_t length);

  std::string name_ = "table";
  std::vector<Column> columns_;
  std::vector<std::string> rowNames_;
  std::size_t rows_ = 0;
  char delimiter_ = '\0';
  char decimal_ = '.';
};

// ---- Preparation: from a table to the block that is analysed --------------------------------------------------------

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
  std::vector<double> shift;  // per descriptor: prepared = (value - shift) / scale
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

// ---- Describing a table ---------------------------------------------------------------------------------------------

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

// ---- Principal components -------------------------------------------------------------------------------------------

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
      qLimit;  // g * chi^2(level; h), g and h from the rows' mean and variance; absent without residuals
  std::vector<Remark> remarks;
};

STUDYSTATS_API PrincipalComponents principalComponents(const TableView& table,
                                                       const PrincipalComponentsOptions& options = {});

// What would be analysed: rows, columns, what is dropped and why. Nothing is analysed.
STUDYSTATS_API std::string explain(const TableView& table, const PrincipalComponentsOptions& options = {});

// ---- Validation -----------------------------------------------------------------------------------------------------

// A value, or the sentence that says why there is none.
template <class T>
class Result {
 public:
  Result() = default;
  Result(T value) : value_(std::move(value)) {}  // NOLINT(google-explicit-constructor)
  static Result failure(std::string why) {
    Result result;
    result.error_ = std::move(why);
    return result;
  }
  explicit operator bool() const { return value_.has_value(); }
  const T& operator*() const { return value_.value(); }
  const T* operator->() const { return &value_.value(); }
  const std::string& error() const { return error_; }

 private:
  std::optional<T> value_;
  std::string error_;
};

// How rows are held out. Systematic groups are dealt along the ascending response, so that each spans its range.
struct Folds {
  enum class Kind { LeaveOneOut, Systematic, Random };
  struct Draws {
    int draws = 100;       // how often a training set is drawn
    double heldOut = 0.2;  // share of the rows that each draw holds out
  };
  Kind kind = Kind::Systematic;
  int groups = 7;         // of Systematic; 2 or more
  Draws draws{};          // of Random
  std::int32_t seed = 1;  // of Random: 0 ... 161803398; the same seed draws the same rows

  static Folds leaveOneOut() { return {.kind = Kind::LeaveOneOut}; }
  static Folds systematic(int groups) { return {.kind = Kind::Systematic, .groups = groups}; }
  static Folds random(Draws draws, std::int32_t seed = 1) {
    return {.kind = Kind::Random, .draws = draws, .seed = seed};
  }
};

// The folds as they were run.
struct FoldPlan {
  Folds::Kind kind = Folds::Kind::Systematic;
  std::size_t folds = 0;
  std::size_t smallest = 0;  // rows held out in the smallest and in the largest fold
  std::size_t largest = 0;
  std::int32_t seed = 1;
};

// ---- Stepwise regression --------------------------------------------------------------------------------------------

enum class Selection {
  Stepwise,  // forward selection with backward elimination
  All,       // every descriptor that the correlation limit leaves
};

struct RegressionOptions {
  std::string response{};
  Selection selection = Selection::Stepwise;
  double fEnter = 4.0;               // F-to-enter
  double fRemove = 3.9;              // F-to-remove
  double corrLimit = 0.99;           // largest absolute correlation between descriptors of the model
  int maxSteps = -1;                 // most selection steps; -1: the larger of 10 and a fifth of the rows
  std::vector<std::string> start{};  // patterns: descriptors that are in the model at the start
  Folds folds{};
  double level = 0.95;  // of intervals and limits
  DataOptions data{};
  ProgressCallback progress{};
  StopSignal stop{};
};

// An equation: response = constant + sum of coefficient * name.
struct Equation {
  struct Term {
    std::string name;
    double coefficient = 0;
  };
  std::string response;
  double constant = 0;
  std::vector<Term> terms;

  // Nine decimals, or the scientific form with 17 digits as soon as a term would keep fewer than six significant
  // digits.
  std::string text() const;
  std::string exact() const;                              // the scientific form: read back, it gives the same numbers
  double evaluate(std::span<const double> values) const;  // values of the terms' descriptors, in their order
};

struct RegressionTerm {
  std::string name;                     // "(constant)" for the first
  double coefficient = 0;               // table units
  double preparedCoefficient = 0;       // of the prepared descriptors
  std::optional<double> standardError;  // of the coefficient, table units
  std::optional<double> halfWidth;  // of its interval at the options' level, Student's t; too narrow where descriptors
                                    // were chosen on the same rows
  std::optional<double> t;
  std::optional<double> p;           // two-sided; absent when it could not be computed
  std::optional<double> foldSpread;  // jackknife spread over the folds, table units
  std::optional<double> perSd;       // response per standard deviation of the descriptor
  std::optional<double> vif;         // variance inflation
  std::size_t foldsChosen = 0;       // folds whose own selection chose it
  std::vector<std::string> sameAs;   // descriptors set aside because they carry the same information
};

struct SelectionStep {
  std::string descriptor;
  bool entered = true;             // else removed
  std::optional<double> partialF;  // absent for an entry at the step limit, which was not tested
  double f = 0;                    // of the model after the step
  double s = 0;                    // its standard error of estimate
};

struct RegressionFit {
  double r2 = 0, adjustedR2 = 0, multipleR = 0;
  double s = 0;     // standard error of estimate, in the response's unit
  double rmse = 0;  // root of the residual sum of squares over the rows
  double f = 0;
  std::optional<double> fProbability;
  int dfModel = 0, dfResidual = 0;
  double sumSqModel = 0, sumSqResidual = 0, sumSqTotal = 0;
};

struct RegressionValidation {
  double q2 = 0;
  double press = 0;
  double rmse = 0;                     // root of press over the rows
  double constantSpread = 0;           // jackknife spread of the constant
  std::optional<double> fixedSetQ2{};  // with the chosen descriptors kept in every fold, as other tools print it
};

struct RegressionRow {
  std::string name{};
  Role role = Role::Model;
  std::optional<double> observed{};
  double fitted = 0;
  std::optional<double> residual{};
  std::optional<double> standardised{};  // residual over s * root(1 - leverage)
  double leverage = 0;
};

struct SelectedDescriptor {
  std::string name;
  std::size_t folds = 0;
};

struct Regression {
  UsedData used;
  std::string response;
  double responseMean = 0, responseSd = 0;
  Selection selection = Selection::Stepwise;
  double fEnter = 0, fRemove = 0, corrLimit = 0;
  int maxSteps = 0;
  RegressionFit fit;
  FoldPlan plan;
  Result<RegressionValidation> validation;
  std::vector<RegressionTerm> terms;  // the constant first
  std::vector<SelectionStep> steps;
  std::string stopReason;                     // why the selection ended
  std::vector<SelectedDescriptor> runnersUp;  // not in the model, chosen in at least one fold; the most often first
  std::optional<double> conditionNumber;  // root of the ratio of extreme eigenvalues of the descriptors' correlations
  Equation equation;                      // table units
  Equation preparedEquation;              // of the prepared descriptors
  std::vector<RegressionRow> rows;        // the model's in table order, then those only predicted
  double level = 0.95;
  double leverageLimit = 0;  // 3 (k + 1) / n
  std::vector<Remark> remarks;
};

// Stepwise multiple linear regression, the whole selection repeated in every fold. Rows without a response are
// predicted.
STUDYSTATS_API Regression regress(const TableView& table, const RegressionOptions& options);
STUDYSTATS_API std::string explain(const TableView& table, const RegressionOptions& options);

// ---- Results as text and files --------------------------------------------------------------------------------------

struct TextOptions {
  int digits = 6;    // significant
  bool all = false;  // long tables in full
};

// The command's text: plain ASCII, at most 100 columns, without the remarks.
STUDYSTATS_API std::string summary(const Description& description, const TextOptions& options = {});
STUDYSTATS_API std::string summary(const PrincipalComponents& result, const TextOptions& options = {});
STUDYSTATS_API std::string summary(const Regression& result, const TextOptions& options = {});

// Everything at full precision; "schema" names the form. Not-a-number is null.
STUDYSTATS_API std::string toJson(const Description& description);
STUDYSTATS_API std::string toJson(const PrincipalComponents& result);
STUDYSTATS_API std::string toJson(const Regression& result);

struct CsvFile {
  std::string name;     // "loadings.csv"
  std::string content;  // RFC 4180, full precision
};

// The same as CSV files, one a table.
STUDYSTATS_API std::vector<CsvFile> toTables(const Description& description);
STUDYSTATS_API std::vector<CsvFile> toTables(const PrincipalComponents& result);
STUDYSTATS_API std::vector<CsvFile> toTables(const Regression& result);

// One line a row: name, role, and what the analysis says of it.
STUDYSTATS_API std::string rowsAsCsv(const PrincipalComponents& result);
STUDYSTATS_API std::string rowsAsCsv(const Regression& result);

// Writes a file whole or not at all: a temporary file beside it, then a rename. Throws BadOptions naming the file.
STUDYSTATS_API void writeFile(const std::string& path, std::string_view content);

STUDYSTATS_API std::string version();    // "0.1.0"
STUDYSTATS_API std::string buildInfo();  // compiler, build type, instruction sets of the kernels

}  // namespace studystats
