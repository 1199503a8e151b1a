// Partial least squares as a page: what each component adds, fitted and cross-validated, and what the model rests on.
#include "host/report/pls_page.h"

#include "host/folds.h"
#include "host/report/data.h"
#include "host/report/page_parts.h"
#include "host/report/predictions.h"
#include "host/text.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <numeric>

namespace studystats {
namespace {

using Pls = PartialLeastSquares;

const PlsFigures& atKept(const Pls& result, const PlsResponse& response) {
  return response.components[kept(result) - 1];
}

std::string errorText(const Pls& result, const PlsResponse& response) {
  return significant(atKept(result, response).crossValidatedRmse, 3);
}

std::string answerOf(const Pls& result) {
  const PlsResponse& first = result.responses.front();
  if (result.responses.size() == 1) {
    const double q2 = atKept(result, first).q2;
    const std::string text =
        fmt::format("{} of rows left out is predicted with an error of about {} (cross-validated RMSE, {})", first.name,
                    errorText(result, first), keptText(result));
    return q2 <= 0 ? text + fmt::format(", no better than by the mean (q² = {}).", explainedText(q2))
                   : text + fmt::format("; the model explains {} of its variation there (q² = {}).", percent(q2, 0),
                                        explainedText(q2));
  }
  std::vector<std::string> parts;
  for (const PlsResponse& response : result.responses)
    parts.push_back(fmt::format("{} {} (q² = {})", response.name, errorText(result, response),
                                explainedText(atKept(result, response).q2)));
  return fmt::format("Rows left out are predicted with these errors (cross-validated RMSE, {}): {}.", keptText(result),
                     listed(parts, 4));
}

ReportFrame frameOf(const Pls& result) {
  const bool known = std::any_of(result.responses.begin(), result.responses.end(),
                                 [](const PlsResponse& response) { return response.predicted.has_value(); });
  ReportFrame frame{{"", "fitted", "cross-validated"}, {}};
  if (known) frame.headings.push_back("kept out");
  for (const PlsResponse& response : result.responses) {
    const PlsFigures& figures = atKept(result, response);
    const std::string whose = result.responses.size() > 1 ? response.name + ": " : std::string();
    frame.rows.push_back({whose + "R² | q²", explainedText(figures.r2), explainedText(figures.q2)});
    frame.rows.push_back({whose.empty() ? fmt::format("RMSE ({})", response.name) : whose + "RMSE",
                          significant(figures.rmse, 3), significant(figures.crossValidatedRmse, 3)});
    if (!known) continue;
    frame.rows.end()[-2].push_back("");
    frame.rows.back().push_back(response.predicted ? fmt::format("{} ({})", significant(response.predicted->rmse, 3),
                                                                 counted(response.predicted->rows, "row", "rows"))
                                                   : "");
  }
  return frame;
}

Table componentsOf(const Pls& result) {
  struct Entry {
    std::size_t response, component;
  };
  std::vector<Entry> all;
  for (std::size_t k = 0; k < result.responses.size(); ++k)
    for (std::size_t a = 0; a < result.responses[k].components.size(); ++a) all.push_back({k, a});
  const auto figures = [&](const Entry& one) -> const PlsFigures& {
    return result.responses[one.response].components[one.component];
  };
  using One = const Entry&;
  ReportData data("components");
  data.texts("response", all, [&](One one) { return result.responses[one.response].name; })
      .numbers("number", all, [](One one) { return one.response; })
      .numbers("component", all, [](One one) { return one.component + 1; })
      .texts("kept", all, [&](One one) { return one.component + 1 == kept(result) ? "chosen" : ""; })
      .numbers("explained", all,
               [&](One one) {
                 return one.component < result.explained.size() ? std::optional(result.explained[one.component])
                                                                : std::nullopt;
               })
      .numbers("r2", all, [&](One one) { return figures(one).r2; })
      .numbers("q2", all, [&](One one) { return figures(one).q2; })
      .numbers("rmse", all, [&](One one) { return figures(one).rmse; })
      .numbers("heldOutRmse", all, [&](One one) { return figures(one).crossValidatedRmse; })
      .numbers("press", all, [&](One one) { return figures(one).press; })
      .numbers("ratio", all, [&](One one) { return figures(one).ratio; });
  if (!result.foldsWithout.empty())
    data.numbers("foldsWithout", all, [&](One one) { return result.foldsWithout[one.component]; });
  return data.take();
}

std::optional<double> heldOutOf(const Pls& result, const PlsRow& row, std::size_t response) {
  if (row.heldOut.size() <= response || row.heldOut[response].size() < kept(result)) return std::nullopt;
  return row.heldOut[response][kept(result) - 1];
}

Table rowsOf(const Pls& result, const ColouringColumns& colours) {
  using Row = const PlsRow*;
  const auto rows = shown(result.rows);
  ReportData data = rowData(result.rows);
  const std::size_t count = result.responses.size();
  for (std::size_t k = 0; k < count; ++k) {
    const auto less = [](const std::optional<double>& a, const std::optional<double>& b) {
      return a && b ? std::optional(*a - *b) : std::nullopt;
    };
    data.numbers(fieldOf("observed", k, count), rows, [k](Row row) { return row->observed[k]; })
        .numbers(fieldOf("held_out", k, count), rows, [&, k](Row row) { return heldOutOf(result, *row, k); })
        .numbers(fieldOf("held_out_residual", k, count), rows,
                 [&, k](Row row) { return less(row->observed[k], heldOutOf(result, *row, k)); })
        .numbers(fieldOf("fitted", k, count), rows, [k](Row row) { return row->fitted[k]; })
        .numbers(fieldOf("residual", k, count), rows,
                 [&, k](Row row) { return less(row->observed[k], row->fitted[k]); });
  }
  data.numbers("fold", rows,
               [](Row row) { return row->fold > 0 ? std::optional(static_cast<double>(row->fold)) : std::nullopt; });
  for (std::size_t a = 0; a < kept(result); ++a)
    data.numbers(fmt::format("score{}", a + 1), rows,
                 [a](Row row) { return a < row->scores.size() ? std::optional(row->scores[a]) : std::nullopt; });
  data.numbers("t2", rows, [](Row row) { return row->t2; }).numbers("q", rows, [](Row row) { return row->q; });
  Table table = data.take();
  table.columns.insert(table.columns.end(), colours.columns.begin(), colours.columns.end());
  return table;
}

// The jackknife error in the unit of the prepared coefficient.
std::optional<double> preparedError(const PlsResponse& response, std::size_t j) {
  if (response.coefficients[j] == 0) return std::nullopt;
  return std::abs(response.coefficientErrors[j] * response.preparedCoefficients[j] / response.coefficients[j]);
}

Table descriptorsOf(const Pls& result) {
  std::vector<std::size_t> numbers(result.used.descriptors.size());
  std::iota(numbers.begin(), numbers.end(), std::size_t{0});
  std::stable_sort(numbers.begin(), numbers.end(),
                   [&](std::size_t a, std::size_t b) { return result.vip[a] > result.vip[b]; });
  const std::vector<double> positions = numbersInNames(result.used.descriptors);
  const std::size_t count = result.responses.size();
  ReportData data("descriptors");
  data.texts("key", numbers, [&](std::size_t j) { return "d:" + result.used.descriptors[j]; })
      .texts("descriptor", numbers, [&](std::size_t j) { return result.used.descriptors[j]; })
      .numbers("vip", numbers, [&](std::size_t j) { return result.vip[j]; });
  for (std::size_t k = 0; k < count; ++k) {
    const PlsResponse& response = result.responses[k];
    const auto end = [&](std::size_t j, double sign) {
      const std::optional<double> error = preparedError(response, j);
      return error ? std::optional(response.preparedCoefficients[j] + sign * *error) : std::nullopt;
    };
    data.numbers(fieldOf("coefficient", k, count), numbers, [&](std::size_t j) { return response.coefficients[j]; })
        .numbers(fieldOf("error", k, count), numbers, [&](std::size_t j) { return response.coefficientErrors[j]; })
        .numbers(fieldOf("prepared", k, count), numbers,
                 [&](std::size_t j) { return response.preparedCoefficients[j]; })
        .numbers(fieldOf("low", k, count), numbers, [&](std::size_t j) { return end(j, -1); })
        .numbers(fieldOf("high", k, count), numbers, [&](std::size_t j) { return end(j, 1); });
  }
  if (!positions.empty()) data.numbers("position", numbers, [&](std::size_t j) { return positions[j]; });
  return data.take();
}

std::vector<ReportTable> tablesOf(const Pls& result) {
  const std::size_t count = result.responses.size();
  ReportTable components{"components", "Components", "", "components", {}};
  if (count > 1) components.columns.push_back({"response", "response"});
  const std::vector<ReportColumn> figures{{"component", "components", CellKind::Whole},
                                          {"kept", "choice"},
                                          {"q2", "q²", CellKind::Fixed, 4},
                                          {"r2", "R²", CellKind::Fixed, 4},
                                          {"heldOutRmse", "RMSE, cross-validated", CellKind::Number, 3},
                                          {"rmse", "RMSE, fitted", CellKind::Number, 3},
                                          {"ratio", "ratio", CellKind::Fixed, 3},
                                          {"explained", "X explained", CellKind::Share}};
  components.columns.insert(components.columns.end(), figures.begin(), figures.end());
  if (std::any_of(result.foldsWithout.begin(), result.foldsWithout.end(), [](std::size_t folds) { return folds > 0; }))
    components.columns.push_back({"foldsWithout", "folds without it", CellKind::Whole});

  ReportTable descriptors{"descriptors",
                          "Descriptors",
                          "",
                          "descriptors",
                          {{"descriptor", "descriptor"}, {"vip", "VIP", CellKind::Fixed, 2}}};
  ReportTable rows{"rows", "Rows", samplingText(result.rows.size()), "rows", {{"name", rowHeading(result.used)}}};
  if (!result.used.predictedRows.empty()) rows.columns.push_back({"role", "role"});
  for (std::size_t k = 0; k < count; ++k) {
    const PlsResponse& response = result.responses[k];
    const std::string whose = count > 1 ? response.name + ", " : std::string();
    descriptors.columns.push_back({fieldOf("coefficient", k, count), whose + "coefficient", CellKind::Number, 6});
    descriptors.columns.push_back({fieldOf("error", k, count), whose + "jackknife error", CellKind::Number, 3});
    descriptors.columns.push_back({fieldOf("prepared", k, count), whose + "prepared", CellKind::Bar, 3});
    rows.columns.push_back({fieldOf("observed", k, count), whose + "observed", CellKind::Value, 8});
    rows.columns.push_back(columnOfSize(fieldOf("held_out", k, count), whose + "held out", response.sd));
    rows.columns.push_back(
        columnOfSize(fieldOf("held_out_residual", k, count), whose + "error, held out", response.sd));
    rows.columns.push_back(columnOfSize(fieldOf("fitted", k, count), whose + "fitted", response.sd));
  }
  rows.columns.push_back({"fold", "fold", CellKind::Whole});
  rows.columns.push_back({"t2", "T²", CellKind::Number, 3});
  rows.columns.push_back({"q", "Q", CellKind::Number, 3});
  return {std::move(components), std::move(descriptors), std::move(rows)};
}

std::string choiceText(const Pls& result) {
  switch (result.choice.kind) {
    case ComponentChoice::Kind::Ratio:
      return fmt::format("as long as √(PRESS(a) / RSS(a − 1)) is at most {}", brief(result.choice.limit, 4));
    case ComponentChoice::Kind::Minimum:
      return "where PRESS is least";
    case ComponentChoice::Kind::Number:
      return "as asked";
  }
  return {};
}

std::vector<ReportEntry> ownCard(const Pls& result) {
  std::vector<ReportEntry> card{
      {"Components", fmt::format("{} kept of {} computed, {}", result.kept, result.computed, choiceText(result))},
      {"Folds", describedFolds(result.plan) + ", refitted in each" +
                    (result.plan.kind == Folds::Kind::Random ? fmt::format("; seed {}", result.plan.seed) : "")}};
  for (const PlsResponse& response : result.responses)
    card.push_back(
        {response.name, fmt::format("mean {}, sd {}; constant of the equation {}", significant(response.mean, 6),
                                    significant(response.sd, 4), significant(response.constant, 6))});
  return card;
}

std::vector<ReportEntry> readingOf(const Pls& result) {
  return {
      {"q² and RMSE, cross-validated",
       "q² = 1 − PRESS / Σ(y − ȳ)², RMSE = √(PRESS / n), where PRESS = Σ(y − ŷ₋)² and "
       "ŷ₋ is the prediction of a row by the fold that left it out."},
      {"R²", "1 − RSS / Σ(y − ȳ)² of the fit. It rises with every component."},
      {"ratio",
       "√(PRESS(a) / RSS(a − 1)): the error of a components on rows left out against that of a − 1 on rows "
       "fitted. Below 1 a component may help."},
      {"coefficients",
       "Of the model as an equation of the descriptors, in the table's units; prepared: for the descriptors "
       "and the response as prepared, so that they can be compared. The jackknife error is their spread over "
       "the folds."},
      {"VIP",
       "√(p Σ SS(a) w(a)² / Σ SS(a)) over the kept components: SS(a) what component a explains of the responses, w "
       "the descriptor's weight in it, p descriptors."},
      {"T²",
       fmt::format("The squared distance within the model plane, Σ t² / variance of t. Limit at {}: Hotelling's, by F.",
                   percent(result.level, 0))},
      {"Q", fmt::format(
                "The squared length of what the components leave of a row. Limit at {}: a scaled χ² with the mean and "
                "variance of the model's rows.",
                percent(result.level, 0))}};
}

}  // namespace

std::vector<std::string> responseNames(const PartialLeastSquares& result) {
  std::vector<std::string> names;
  for (const PlsResponse& response : result.responses) names.push_back(response.name);
  return names;
}

ReportPage reportPage(const PartialLeastSquares& result, const ReportContext& context) {
  std::vector<std::string> names;
  for (const PlsRow* row : shown(result.rows)) names.push_back(row->name);
  const ColouringColumns colours = colouringColumns(context, result.used, names);
  ReportPage page;
  page.analysis = "pls";
  page.title = "Partial least squares of " + listed(responseNames(result), 4);
  page.subtitle = fmt::format("{}, {}", madeFrom(result.used), keptText(result));
  page.answer = answerOf(result);
  page.frame = frameOf(result);
  page.data = {componentsOf(result), rowsOf(result, colours), descriptorsOf(result)};
  page.figures = plsFigures(result, page.data[1], colours);
  page.tables = tablesOf(result);
  page.remarks = anchored(result.remarks, {{"not-predictive", "components"},
                                           {"beyond-rank", "components"},
                                           {"components-exhausted", "components"},
                                           {"whole-table-centring", "reading"},
                                           {"never-held-out", "rows"},
                                           {"outside-domain", "distances"}});
  remarkOnSampling(result.rows.size(), page);
  page.card = dataCard(result.used, ownCard(result), context);
  page.reading = readingOf(result);
  return page;
}

}  // namespace studystats
