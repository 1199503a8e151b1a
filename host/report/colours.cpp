#include "host/report/colours.h"

#include "host/json_writer.h"

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

std::string colourNames() {
  JsonWriter names;
  names.beginObject();
  for (const Colour& colour : allColours()) names.key(colour.light).text(colour.name);
  return names.endObject().take();
}

}  // namespace studystats
