#include "docs/json_doc.h"

#include "host/mlr/regression_parts.h"
#include "host/result/common.h"

#include <fmt/format.h>

#include <algorithm>

namespace studystats {
namespace {

constexpr const char* kIntroduction =
    R"(# The JSON of each command

`--json FILE` writes one document with everything at full precision. What follows is written from the descriptions that
the program itself writes by (the target `json_doc`), so the two agree.

A path names the keys on the way to a value: `fit.r2`; `[]` stands for each record of a list: `rows[].leverage`. A value
that is not there is null, or its key is left out, for the reason in the last column. A list at the top of a document is
a CSV file of `--tables`, too: `rows` is `rows.csv`, with the same names as headings.

| kind | in JSON | in CSV |
|---|---|---|
| text | a string | as it is |
| number | the shortest text that reads back as the same number; not-a-number is null | the same; empty |
| whole number | without a point | the same |
| share, probability | a number from 0 to 1 | the same |
| flag | true or false | yes or no |
| list of ... | a list | a column for each element that has a name, else in one cell with "; " between |
)";

const char* kindOf(CellKind kind) {
  switch (kind) {
    case CellKind::Text:
      return "text";
    case CellKind::Flag:
      return "flag";
    case CellKind::Whole:
    case CellKind::Count:
      return "whole number";
    case CellKind::Probability:
      return "probability";
    case CellKind::Share:
      return "share";
    default:
      return "number";
  }
}

std::string fieldLines(const ResultPart& part, const std::string& path) {
  std::string text = "\n| key | kind | unit | what | null or absent |\n|---|---|---|---|---|\n";
  for (const Field& field : part.fields)
    text += fmt::format("| `{}{}` | {}{} | {} | {} | {} |\n", path, field.name, field.format.list ? "list of " : "",
                        kindOf(field.format.kind), field.unit, field.meaning, field.absent);
  return text;
}

// A part and those within it; `path` leads to it.
std::string partText(const ResultPart& part, const std::string& path) {
  const std::string own = path + part.name;
  std::string text = fmt::format("\n### {}\n\n{}{}\n", own, part.meaning, part.list ? " A list." : "");
  text += fieldLines(part, own + (part.list ? "[]." : "."));
  for (const ResultPart& inner : part.parts) text += partText(inner, own + ".");
  return text;
}

std::string commandText(const char* command, const ResultPart& document, const std::vector<std::string>& common) {
  std::string text = fmt::format("\n## {}\n", command) + fieldLines(document, "");
  std::vector<std::string> elsewhere;
  for (const ResultPart& part : document.parts) {
    if (std::find(common.begin(), common.end(), part.name) != common.end())
      elsewhere.push_back(fmt::format("`{}`", part.name));
    else
      text += partText(part, "");
  }
  return elsewhere.empty() ? text : text + fmt::format("\nAnd {}, as above.\n", fmt::join(elsewhere, ", "));
}

}  // namespace

std::string jsonDocument() {
  static const UsedData used;
  static const std::vector<Remark> remarks;
  const std::vector<ResultPart> common{usedPart(used), preparationPart(used), remarksPart(remarks)};
  std::string text = kIntroduction + std::string("\n## several commands\n");
  std::vector<std::string> names;
  for (const ResultPart& part : common) {
    text += partText(part, "");
    names.push_back(part.name);
  }
  static const Regression regression;
  for (const auto& [command, document] : {
           std::pair{"mlr", regressionParts(regression)},
       })
    text += commandText(command, document, names);
  return text;
}

}  // namespace studystats
