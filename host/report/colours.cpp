#include "host/report/colours.h"

#include <fmt/format.h>

#include <array>

namespace studystats {
namespace {

constexpr Colour kGroups[] = {
    kStrong, {"group-2", "#e69f00", "#e6a817"}, {"group-3", "#009e73", "#22c196"}, {"group-4", "#cc79a7", "#e39cc2"},
    kOther,  {"group-6", "#4db1e6", "#a9dcf7"}, {"group-7", "#7d7a10", "#cfcb57"}, {"group-8", "#6a4c9c", "#b49be2"},
};
constexpr const char* kShapes[] = {"circle", "square", "triangle-up", "diamond", "cross", "triangle-down"};

constexpr Colour kPlain[] = {kPaper, kPanel, kInk,     kMuted,        kLine,  kGrid,      kStrong,
                             kPale,  kOther, kWarning, kWarningPanel, kAlarm, kAlarmPanel};

std::vector<Colour> allColours() {
  std::vector<Colour> all(std::begin(kPlain), std::end(kPlain));
  for (const Colour& group : kGroups)
    if (std::string_view(group.name).starts_with("group")) all.push_back(group);
  return all;
}

std::string properties(bool dark) {
  std::string text;
  for (const Colour& colour : allColours())
    text += fmt::format("--{}:{};", colour.name, dark ? colour.dark : colour.light);
  return text + fmt::format("color-scheme:{}", dark ? "dark" : "light");
}

}  // namespace

const Colour& groupColour(std::size_t i) { return kGroups[i % std::size(kGroups)]; }

const char* groupShape(std::size_t i) { return kShapes[i % std::size(kShapes)]; }

std::string colourRules() {
  const std::string light = properties(false), dark = properties(true);
  return fmt::format(
      ":root{{{}}}\n@media (prefers-color-scheme:dark){{:root{{{}}}}}\n:root[data-theme=light]{{{}}}\n"
      ":root[data-theme=dark]{{{}}}\n@media print{{:root:root{{{}}}}}\n",
      light, dark, light, dark, light);
}

Json colourNames() {
  Json names = Json::object();
  for (const Colour& colour : allColours()) names[colour.light] = colour.name;
  return names;
}

Json chartConfig() {
  constexpr const char* kFont = "system-ui, -apple-system, 'Segoe UI', Roboto, 'DejaVu Sans', sans-serif";
  return {
      {"background", "transparent"},
      {"font", kFont},
      {"aria", false},  // the page gives each figure one text
      {"padding", 4},
      {"view", {{"stroke", nullptr}, {"continuousHeight", 320}}},
      {"axis",
       {{"labelColor", kMuted.light},
        {"titleColor", kInk.light},
        {"titleFontWeight", "normal"},
        {"titleFontSize", 12},
        {"labelFontSize", 11},
        {"labelLimit", 150},
        {"domainColor", kLine.light},
        {"tickColor", kLine.light},
        {"gridColor", kGrid.light}}},
      {"legend",
       {{"labelColor", kInk.light},
        {"titleColor", kInk.light},
        {"titleFontWeight", "normal"},
        {"labelFontSize", 12},
        {"orient", "top"},
        {"symbolStrokeWidth", 1.5},
        {"labelLimit", 220}}},
      {"title", {{"color", kInk.light}, {"fontSize", 12}, {"fontWeight", "normal"}, {"frame", "group"}, {"offset", 6}}},
      {"header", {{"labelColor", kInk.light}, {"titleColor", kInk.light}, {"labelFontSize", 12}}},
      {"text", {{"color", kInk.light}}},
      {"rule", {{"color", kLine.light}}},
      {"point", {{"filled", true}, {"size", 46}, {"opacity", 0.88}}},
      {"bar", {{"color", kStrong.light}}},
      {"line", {{"color", kStrong.light}, {"strokeWidth", 1.8}}}};
}

}  // namespace studystats
