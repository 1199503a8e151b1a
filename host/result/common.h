// The parts that the results of all analyses have: what was used, how it was prepared, folds, remarks.
#pragma once

#include <studystats/host/data.h>
#include <studystats/host/validation.h>

#include "host/result/part.h"

#include <string>
#include <vector>

namespace studystats {

// A result as a whole, with its schema and the version that wrote it.
ResultPart document(const char* schema, std::vector<Field> fields, std::vector<ResultPart> parts);

ResultPart usedPart(const UsedData& used);
ResultPart preparationPart(const UsedData& used);  // shift and scale of each descriptor
ResultPart remarksPart(const std::vector<Remark>& remarks);
std::vector<Field> planFields(const FoldPlan& plan);  // for an object on the validation

// How often the folds' own selections chose a descriptor, the most often first.
struct Choice {
  std::string name;
  std::size_t folds = 0;  // that chose it
  bool inModel = false;
};
ResultPart selectionFrequencyPart(std::vector<Choice> choices, std::size_t folds);

const char* nameOf(Role role);                    // "model", "predicted"
std::string headingOfRows(const UsedData& used);  // the column that names them, or "row"

// What the rows of every result begin with.
template <class Row>
std::vector<Field> rowFields(const UsedData& used, const std::vector<Row>& rows) {
  const auto of = each(rows);
  return {{"name", headingOfRows(used), kText, of(&Row::name), "Name or number of the row."},
          {"role", kText, of([](const Row& row) { return nameOf(row.role); }),
           "model, or predicted for a row that was kept out of it."}};
}

// What they have where rows are held out.
template <class Row>
std::vector<Field> foldFields(const std::vector<Row>& rows) {
  const auto of = each(rows);
  return {{"times_held_out", kWhole, of(&Row::timesHeldOut), "In how many folds the row was held out."},
          {"fold", kWhole, of([](const Row& row) { return row.fold > 0 ? Cell(row.fold) : Cell(); }),
           "The fold that held it out, from 1.", "Held out never or more than once."}};
}

}  // namespace studystats
