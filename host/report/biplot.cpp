#include "host/report/biplot.h"

#include "host/report/charts.h"
#include "host/report/components.h"
#include "host/report/data.h"
#include "host/text.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <numeric>

namespace studystats {
namespace {

constexpr std::size_t kArrows = 25;         // descriptors drawn beside the scores: the longest ...
constexpr std::size_t kArrowsOfCurve = 12;  // ... or, of those with an order of their own, so many along it
constexpr int kBiplotHeight = 360;
constexpr int kLabelWidth = 110;
constexpr double kLineHeight = 13;  // pixels

struct Arrow {
  std::size_t descriptor;
  double x, y, labelY;
};

// Descriptors that the biplot draws.
std::vector<std::size_t> arrowNumbers(const PrincipalComponents& result) {
  std::vector<std::size_t> numbers(result.used.descriptors.size());
  std::iota(numbers.begin(), numbers.end(), std::size_t{0});
  if (!numbersInNames(result.used.descriptors).empty()) {
    std::vector<std::size_t> along;
    for (std::size_t k = 0; k < kArrowsOfCurve; ++k) along.push_back(k * (numbers.size() - 1) / (kArrowsOfCurve - 1));
    return along;
  }
  const auto length = [&](std::size_t j) { return std::hypot(result.loadings(j, 0), result.loadings(j, 1)); };
  std::stable_sort(numbers.begin(), numbers.end(), [&](auto i, auto j) { return length(i) > length(j); });
  numbers.resize(std::min(numbers.size(), kArrows));
  return numbers;
}

}  // namespace

std::vector<double> spreadOut(const std::vector<double>& places, double gap) {
  std::vector<std::size_t> order(places.size());
  std::iota(order.begin(), order.end(), std::size_t{0});
  std::stable_sort(order.begin(), order.end(), [&](auto i, auto j) { return places[i] < places[j]; });
  struct Block {
    double sum, count;
    double mean() const { return sum / count; }
  };
  std::vector<Block> blocks;
  for (std::size_t k = 0; k < order.size(); ++k) {
    blocks.push_back({places[order[k]] - gap * static_cast<double>(k), 1});
    while (blocks.size() > 1 && blocks.end()[-2].mean() > blocks.back().mean()) {
      blocks.end()[-2].sum += blocks.back().sum;
      blocks.end()[-2].count += blocks.back().count;
      blocks.pop_back();
    }
  }
  std::vector<double> moved(places.size());
  std::size_t k = 0;
  for (const Block& block : blocks)
    for (double n = 0; n < block.count; ++n, ++k) moved[order[k]] = block.mean() + gap * static_cast<double>(k);
  return moved;
}

Table arrowsOf(const PrincipalComponents& result) {
  double largest = 0, reach = 0, low = 0, high = 0;
  for (std::size_t j = 0; j < result.loadings.rows; ++j)
    for (std::size_t a = 0; a < 2; ++a) largest = std::max(largest, std::abs(result.loadings(j, a)));
  for (const ComponentRow& row : result.rows) {
    for (std::size_t a = 0; a < 2; ++a) reach = std::max(reach, std::abs(row.scores[a]));
    low = std::min(low, row.scores[1]);
    high = std::max(high, row.scores[1]);
  }
  const double scale = largest > 0 ? 0.8 * reach / largest : 1;
  std::vector<Arrow> arrows;
  for (const std::size_t j : arrowNumbers(result)) {
    arrows.push_back({j, scale * result.loadings(j, 0), scale * result.loadings(j, 1), 0});
    low = std::min(low, arrows.back().y);
    high = std::max(high, arrows.back().y);
  }
  const double gap = (high - low) * kLineHeight / kBiplotHeight;
  for (const bool right : {false, true}) {
    std::vector<Arrow*> side;
    std::vector<double> heights;
    for (Arrow& arrow : arrows)
      if ((arrow.x >= 0) == right) {
        side.push_back(&arrow);
        heights.push_back(arrow.y);
      }
    heights = spreadOut(heights, gap);
    for (std::size_t k = 0; k < side.size(); ++k) side[k]->labelY = heights[k];
  }
  using One = const Arrow&;
  const auto& names = result.used.descriptors;
  return ReportData("arrows")
      .texts("key", arrows, [&](One one) { return "d:" + names[one.descriptor]; })
      .texts("descriptor", arrows, [&](One one) { return names[one.descriptor]; })
      .numbers("PC1", arrows, [&](One one) { return result.loadings(one.descriptor, 0); })
      .numbers("PC2", arrows, [&](One one) { return result.loadings(one.descriptor, 1); })
      .numbers("origin", arrows, [](One) { return 0.0; })
      .numbers("x", arrows, [](One one) { return one.x; })
      .numbers("y", arrows, [](One one) { return one.y; })
      .numbers("labelY", arrows, [](One one) { return one.labelY; })
      .texts("side", arrows, [](One one) { return one.x < 0 ? "left" : "right"; })
      .take();
}

ReportFigure biplot(const PrincipalComponents& result, const Table& table) {
  const std::size_t drawn = table.rows();
  const auto axis = [&](const char* field, std::size_t a) {
    return quantitative(field, fmt::format("PC{} ({})", a + 1, percent(result.components[a].explained)));
  };
  Json marks{{"data", {{"name", "rows"}}},
             {"mark", {{"type", "point"}, {"color", kPale.light}, {"size", 30}}},
             {"encoding", {{"x", axis("PC1", 0)}, {"y", axis("PC2", 1)}, {"tooltip", tips({{"name", "row", false}})}}}};
  const auto line = [&](const char* x, const char* y, Json mark) {  // from there to the tip
    return Json{{"mark", std::move(mark)},
                {"encoding",
                 {{"x", {{"field", x}, {"type", "quantitative"}}},
                  {"y", {{"field", y}, {"type", "quantitative"}}},
                  {"x2", {{"field", "x"}}},
                  {"y2", {{"field", "y"}}}}}};
  };
  // Names stand outwards of the tips.
  const auto bySide = [](const char* left, const char* right) {
    return Json{{"expr", fmt::format("datum.side == 'left' ? {} : {}", left, right)}};
  };
  Json label{{"mark",
              {{"type", "text"},
               {"fontSize", 11},
               {"baseline", "middle"},
               {"limit", kLabelWidth},
               {"align", bySide("'right'", "'left'")},
               {"dx", bySide("-3", "3")}}},
             {"encoding",
              {{"x", with(axis("x", 0), "scale", {{"zero", false}, {"padding", kLabelWidth * 2 / 3}})},
               {"y", axis("labelY", 1)},
               {"text", {{"field", "descriptor"}, {"type", "nominal"}}},
               {"tooltip", tips({{"descriptor", "descriptor", false}, {"PC1", "PC1"}, {"PC2", "PC2"}})}}}};
  Json arrows{{"data", {{"name", "arrows"}}},
              {"layer",
               Json::array({line("x", "labelY", {{"type", "rule"}, {"strokeWidth", 0.6}}),
                            line("origin", "origin", {{"type", "rule"}, {"color", kOther.light}, {"strokeWidth", 1.4}}),
                            std::move(label)})}};
  Json chart{
      {"width", "container"}, {"height", kBiplotHeight}, {"layer", Json::array({std::move(marks), std::move(arrows)})}};
  return {
      "biplot", "Scores and loadings together",
      fmt::format("The scores on the first two components as points, and {} descriptors as lines from the origin.",
                  drawn),
      fmt::format("Rows that lie where a line points are high in that descriptor; lines in one direction are related, "
                  "opposite ones inversely.{}",
                  drawn == result.loadings.rows ? std::string()
                                                : fmt::format(" {} of {} descriptors.", drawn, result.loadings.rows)),
      finished(chart)};
}

}  // namespace studystats
