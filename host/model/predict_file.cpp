// The columns that a model needs are found in the headings by name; every record becomes one prediction and is gone.
#include <studystats/host/predict.h>

#include "host/names.h"
#include "host/preparation/magnitude.h"
#include "host/reading/reader_cells.h"
#include "host/reading/reader_columns.h"
#include "host/reading/reader_dialect.h"
#include "host/reading/reader_records.h"
#include "host/reading/reader_source.h"
#include "host/text.h"
#include "host/watch.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <limits>

namespace studystats {
namespace {

constexpr double kMissing = std::numeric_limits<double>::quiet_NaN();
constexpr std::size_t kNowhere = static_cast<std::size_t>(-1);

// The first pieces of a file, enough to see how it is written, and then the others one by one.
class SampledPieces {
 public:
  explicit SampledPieces(const std::string& path) : pieces_(path) {
    constexpr std::size_t kSample = std::size_t{1} << 20;
    for (std::string_view piece = pieces_.next(); !piece.empty(); piece = pieces_.next()) {
      sample_ += piece;
      if (sample_.size() >= kSample) break;
    }
  }
  std::string_view sample() const { return sample_; }
  std::int64_t size() const { return pieces_.size(); }
  std::string_view rest() { return pieces_.next(); }

 private:
  FilePieces pieces_;
  std::string sample_;
};

// Where the cells of a row are wanted.
struct Columns {
  std::size_t count = 0;
  std::vector<std::size_t> input;     // by table column: the model's column, or nowhere
  std::vector<std::size_t> observed;  // by table column: the response, or nowhere
  std::size_t known = kNowhere;       // the class
  std::size_t id = kNowhere;
};

class Accumulated {
 public:
  explicit Accumulated(const Model& model) : model_(model), sums_(model.responses().size()) {}

  void add(const PredictedRow& row, Predictions& result) {
    const Prediction& prediction = row.prediction;
    if (prediction.missing) {
      ++result.missing;
      return;
    }
    ++(prediction.inDomain() ? result.inside : result.outside);
    if (model_.kind() == Model::Kind::Discriminant) {
      addClass(row, result);
      return;
    }
    for (std::size_t k = 0; k < row.observed.size() && k < prediction.values.size(); ++k)
      if (row.observed[k]) addError(sums_[k], prediction, k, *row.observed[k]);
  }

  void finish(Predictions& result) const {
    for (std::size_t k = 0; k < sums_.size(); ++k) {
      const Sums& sums = sums_[k];
      if (sums.rows == 0) continue;
      const auto n = static_cast<double>(sums.rows);
      PredictionErrors errors{
          model_.responses()[k], sums.rows, std::sqrt(sums.squares / n), sums.sum / n, {}, {}, {}, {}};
      if (sums.inside > 0) errors.rmseInside = std::sqrt(sums.squaresInside / static_cast<double>(sums.inside));
      if (sums.rows > sums.inside)
        errors.rmseOutside =
            std::sqrt((sums.squares - sums.squaresInside) / static_cast<double>(sums.rows - sums.inside));
      if (sums.intervals) errors.withinInterval = sums.within;
      if (sums.intervals && sums.fittedIntervals) errors.withinFittedInterval = sums.withinFitted;
      result.errors.push_back(std::move(errors));
    }
  }

 private:
  struct Sums {
    std::size_t rows = 0, inside = 0, within = 0, withinFitted = 0;
    double squares = 0, squaresInside = 0, sum = 0;
    bool intervals = false, fittedIntervals = false;
  };

  void addClass(const PredictedRow& row, Predictions& result) const {
    const std::vector<std::string>& classes = model_.classes();
    const auto at = std::find(classes.begin(), classes.end(), row.prediction.predictedClass) - classes.begin();
    ++result.classRows[static_cast<std::size_t>(at)];
    if (row.known.empty()) return;
    if (!result.correct) result.correct = {0, 0};
    ++result.correct->second;
    if (row.known == row.prediction.predictedClass) ++result.correct->first;
  }

  void addError(Sums& sums, const Prediction& prediction, std::size_t k, double observed) const {
    const double error = prediction.values[k] - observed;
    ++sums.rows;
    sums.squares += error * error;
    sums.sum += error;
    if (prediction.inDomain()) {
      ++sums.inside;
      sums.squaresInside += error * error;
    }
    if (!prediction.halfWidths[k]) return;
    sums.intervals = true;
    if (std::abs(error) <= *prediction.halfWidths[k]) ++sums.within;
    const std::optional<double> fitted = model_.fittedHalfWidth(prediction);
    if (!fitted) return;
    sums.fittedIntervals = true;
    if (std::abs(error) <= *fitted) ++sums.withinFitted;
  }

  const Model& model_;
  std::vector<Sums> sums_;
};

// Which text column names the rows: tried on the sample.
class NamingSink : public RecordSink {
 public:
  explicit NamingSink(const CellReader& reader) : reader_(reader) {}
  void cell(std::string_view text) override {
    if (headed_ && cells_ < candidates_.size() && candidates_[cells_]) {
      const CellMeaning kind = reader_.read(trimmed(text)).kind;
      if (kind != CellMeaning::Text) candidates_[cells_] = false;
    }
    ++cells_;
  }
  bool record() override {
    if (!headed_) candidates_.assign(cells_, true);
    headed_ = true;
    cells_ = 0;
    return ++records_ < 100;
  }
  std::size_t firstText() const {
    const auto it = std::find(candidates_.begin(), candidates_.end(), true);
    return it == candidates_.end() || records_ < 2 ? kNowhere : static_cast<std::size_t>(it - candidates_.begin());
  }

 private:
  const CellReader& reader_;
  std::vector<bool> candidates_;
  std::size_t cells_ = 0, records_ = 0;
  bool headed_ = false;
};

class PredictionSink : public RecordSink {
 public:
  PredictionSink(const Model& model, const std::string& file, char decimal, const PredictOptions& options,
                 std::size_t namingColumn, const std::function<void(const PredictedRow&)>& each, Predictions& result)
      : model_(model),
        file_(file),
        options_(options),
        reader_(decimal, options.read.missingAs),
        namingColumn_(namingColumn),
        each_(each),
        result_(result),
        accumulated_(model) {
    result_.classRows.assign(model.classes().size(), 0);
  }

  void cell(std::string_view text) override {
    text = trimmed(text);
    if (!headed_)
      headings_.emplace_back(text);
    else if (cells_ < columns_.count)
      take(text);
    ++cells_;
  }

  bool record() override {
    if (!headed_) {
      findColumns();
      headed_ = true;
    } else {
      if (cells_ != columns_.count)
        throw BadTable(fmt::format("{}, line {}: {} where the heading has {}.", file_, line, counted(cells_, "cell"),
                                   columns_.count),
                       {.file = file_, .line = line});
      predict();
    }
    cells_ = 0;
    return true;
  }

  void finish() {
    accumulated_.finish(result_);
    if (!headed_ || result_.rows == 0)
      throw BadTable(fmt::format("{} has a heading but no rows.", file_), {.file = file_, .line = 1});
  }
  std::size_t rows() const { return result_.rows; }

 private:
  std::size_t positionOf(const std::string& name) const {
    const auto it = std::find(names_.begin(), names_.end(), name);
    return it == names_.end() ? kNowhere : static_cast<std::size_t>(it - names_.begin());
  }

  void findColumns() {
    names_ = columnNames(headings_, result_.remarks);
    columns_.count = names_.size();
    columns_.input.assign(names_.size(), kNowhere);
    columns_.observed.assign(names_.size(), kNowhere);
    const std::vector<std::string>& needed = model_.columns();
    std::vector<std::string> absent;
    for (std::size_t j = 0; j < needed.size(); ++j) {
      const std::size_t at = positionOf(needed[j]);
      if (at == kNowhere)
        absent.push_back(needed[j]);
      else
        columns_.input[at] = j;
    }
    if (!absent.empty()) refuseAbsent(absent);
    findKnown();
    const std::string& trained = model_.rowNameColumn();
    columns_.id = !options_.id.empty() ? positionOf(options_.id) : trained.empty() ? kNowhere : positionOf(trained);
    if (!options_.id.empty() && columns_.id == kNowhere) refuseOption("--id", options_.id);
    if (columns_.id == kNowhere && namingColumn_ != columns_.known) columns_.id = namingColumn_;
    values_.assign(needed.size(), kMissing);
    row_.observed.assign(model_.responses().size(), std::nullopt);
  }

  void findKnown() {
    const std::vector<std::string>& responses = model_.responses();
    if (!options_.observed.empty() && responses.size() != 1)
      throw BadOptions("--observed names the one response of a model; this one has another number of them.",
                       {.option = "--observed"});
    for (std::size_t k = 0; k < responses.size(); ++k) {
      const std::string& name = options_.observed.empty() ? responses[k] : options_.observed;
      const std::size_t at = positionOf(name);
      if (at == kNowhere && !options_.observed.empty()) refuseOption("--observed", name);
      if (at == kNowhere) continue;
      if (model_.kind() == Model::Kind::Discriminant)
        columns_.known = at;
      else
        columns_.observed[at] = k;
    }
  }

  [[noreturn]] void refuseAbsent(const std::vector<std::string>& absent) const {
    const std::string near = nearestName(absent.front(), names_);
    throw BadTable(
        fmt::format("{} has no column \"{}\"; the model needs it.{}{}", file_, absent.front(),
                    near.empty() ? std::string() : fmt::format(" Did you mean \"{}\"?", near),
                    absent.size() > 1 ? fmt::format(" Missing too: {}.", listed({absent.begin() + 1, absent.end()}, 8))
                                      : std::string()),
        {.file = file_}, near);
  }

  [[noreturn]] void refuseOption(const std::string& option, const std::string& name) const {
    const std::string near = nearestName(name, names_);
    throw BadOptions(fmt::format("{} has no column \"{}\".{}", file_, name,
                                 near.empty() ? std::string() : fmt::format(" Did you mean \"{}\"?", near)),
                     {.file = file_, .option = option}, near);
  }

  void take(std::string_view text) {
    if (cells_ == columns_.id) row_.prediction.row = text;
    if (cells_ == columns_.known) row_.known = reader_.read(text).kind == CellMeaning::Missing ? "" : std::string(text);
    if (columns_.input[cells_] != kNowhere) values_[columns_.input[cells_]] = numberOf(text);
    if (columns_.observed[cells_] != kNowhere) {
      const double observed = numberOf(text, kMostSize);  // its errors are squared
      row_.observed[columns_.observed[cells_]] = std::isnan(observed) ? std::nullopt : std::optional(observed);
    }
  }

  double numberOf(std::string_view text, double most = std::numeric_limits<double>::max()) const {
    const Cell cell = reader_.read(text);
    if (cell.kind == CellMeaning::Text || cell.kind == CellMeaning::OutOfRange || std::abs(cell.number) > most)
      throw BadTable(fmt::format("{}, line {}, column {} ({}): {} {}. Correct the cell, or --missing-as to treat it as "
                                 "missing.",
                                 file_, line, cells_ + 1, names_[cells_], quotedCell(text),
                                 cell.kind == CellMeaning::Text ? "is not a number" : "is out of range"),
                     {.file = file_, .line = line, .column = static_cast<int>(cells_ + 1), .cell = std::string(text)});
    return cell.number;
  }

  void predict() {
    ++result_.rows;
    std::string name = columns_.id == kNowhere ? std::to_string(result_.rows) : std::move(row_.prediction.row);
    row_.prediction = model_.predict(values_);
    row_.prediction.row = std::move(name);
    accumulated_.add(row_, result_);
    if (each_) each_(row_);
    if (result_.first.size() < options_.shown) result_.first.push_back(row_);
  }

  const Model& model_;
  const std::string& file_;
  const PredictOptions& options_;
  CellReader reader_;
  std::size_t namingColumn_;
  const std::function<void(const PredictedRow&)>& each_;
  Predictions& result_;
  Accumulated accumulated_;
  std::vector<std::string> headings_, names_;
  Columns columns_;
  std::vector<double> values_;
  PredictedRow row_;
  std::size_t cells_ = 0;
  bool headed_ = false;
};

}  // namespace

Predictions predictFile(const Model& model, const std::string& modelName, const std::string& path,
                        const PredictOptions& options, const std::function<void(const PredictedRow&)>& each) {
  Watch watch(options.read.progress, options.read.stop);
  const std::string file = shownFile(path);
  const std::string what = fmt::format("predicting {}", file);
  watch.report("predicting", what, 0, 100, 0, 1);
  SampledPieces pieces(path);
  const std::string_view sample = tableText(pieces.sample(), file);
  const Dialect dialect = dialectOf(sample, file, options.read);
  const CellReader reader(dialect.decimal, options.read.missingAs);
  NamingSink naming(reader);
  const std::size_t lastLine = sample.find_last_of('\n');
  readRecords(sample.substr(0, lastLine == sample.npos ? sample.size() : lastLine + 1), file, dialect.delimiter,
              naming);

  Predictions result;
  result.model = modelName;
  result.table = file;
  result.used = model;
  PredictionSink sink(model, file, dialect.decimal, options, naming.firstText(), each, result);
  std::int64_t done = 0;
  bool sampled = false;
  readRecordsInPieces(
      [&]() -> std::string_view {
        const std::string_view piece = sampled ? pieces.rest() : sample;
        sampled = true;
        if (piece.find('\0') != piece.npos)
          throw BadTable(fmt::format("{}: a byte of 0 behind row {}. This is no table of text.", file, sink.rows()),
                         {.file = file});
        watch.report("predicting", what, 0, 99, pieces.size() > 0 ? done : 0, std::max<std::int64_t>(pieces.size(), 1));
        done += static_cast<std::int64_t>(piece.size());
        return piece;
      },
      file, dialect.delimiter, sink);
  sink.finish();
  watch.report("predicting", what, 0, 100, 1, 1);
  return result;
}

}  // namespace studystats
