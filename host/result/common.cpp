#include "host/result/common.h"

#include "host/folds.h"
#include "host/preparation/preparation.h"

#include <algorithm>

namespace studystats {
namespace {

ResultPart droppedPart(const char* name, const char* meaning, const std::vector<Dropped>& dropped) {
  const auto of = each(dropped);
  return listPart(name, meaning, dropped.size(),
                  {{"name", kText, of(&Dropped::name), "Its name."},
                   {"reason", kText, of(&Dropped::reason), "Why it was not used."}});
}

ResultPart countsPart(const char* name, const char* meaning, const ExtractionCounts& counts) {
  const auto of = only(&counts);
  return objectPart(name, meaning,
                    {{"requested", kWhole, of(&ExtractionCounts::requested), "Asked for."},
                     {"extracted", kWhole, of(&ExtractionCounts::extracted), "Used."},
                     {"missing", kWhole, of(&ExtractionCounts::missing), "Asked for, not in the table."},
                     {"eliminated", kWhole, of(&ExtractionCounts::eliminated), "In the table, left out."}});
}

ResultPart setAsidePart(const std::vector<SameInformation>& same) {
  const auto of = each(same);
  return listPart("set_aside", "Columns that repeat another: set_aside = shift + scale * kept.", same.size(),
                  {{"kept", kText, of(&SameInformation::kept), "The column that stays."},
                   {"set_aside", kText, of(&SameInformation::setAside), "The column that repeats it."},
                   {"scale", figures(6), of(&SameInformation::scale), "Factor of the column that stays."},
                   {"shift", figures(6), of(&SameInformation::shift), "What is added to it."}});
}

}  // namespace

ResultPart document(const char* schema, std::vector<Field> fields, std::vector<ResultPart> parts) {
  ResultPart result = objectPart("", "", {}, std::move(parts));
  result.fields = {{"schema", kText, [schema](std::size_t) { return schema; }, "What kind of document this is."},
                   {"version", kText, [](std::size_t) { return version(); }, "Of the program that wrote it."}};
  result.fields.insert(result.fields.end(), fields.begin(), fields.end());
  return result;
}

ResultPart usedPart(const UsedData& used) {
  const auto of = only(&used);
  return objectPart(
      "used", "What was taken from the table.",
      {{"table", kText, of(&UsedData::table), "The table, as it was named."},
       {"table_rows", kWhole, of(&UsedData::tableRows), "Its rows."},
       {"table_columns", kWhole, of(&UsedData::tableColumns), "Its columns."},
       {"id_column", kText, [&used](std::size_t) { return used.idColumn.empty() ? Cell() : Cell(used.idColumn); },
        "The column that names the rows.", "Rows are numbered."},
       {"rows", listOf(kText), of(&UsedData::rows), "Names of the rows that the model was made from."},
       {"predicted_rows", listOf(kText), of(&UsedData::predictedRows), "Names of the rows kept out of it."},
       {"descriptors", listOf(kText), of(&UsedData::descriptors), "Names of the descriptors analysed."},
       {"cells_filled", kWhole, of(&UsedData::cellsFilled), "Missing cells that were filled."},
       {"cells_eliminated", kWhole, of(&UsedData::cellsEliminated), "Missing cells of rows and columns left out."},
       {"formulas", listOf(kText), of(&UsedData::formulas), "Columns made from others, and how."},
       {"scaling", kText, [&used](std::size_t) { return nameOf(used.scaling); }, "How descriptors were prepared."}},
      {droppedPart("dropped_rows", "Rows that were not used.", used.droppedRows),
       droppedPart("dropped_columns", "Columns that were not used.", used.droppedColumns), setAsidePart(used.setAside),
       countsPart("row_counts", "Rows asked for and used.", used.rowCounts),
       countsPart("column_counts", "Descriptors asked for and used.", used.columnCounts)});
}

ResultPart preparationPart(const UsedData& used) {
  return listPart("preparation", "How each descriptor was prepared: (value - shift) / scale.", used.shift.size(),
                  {{"descriptor", kText, each(used.descriptors)(std::identity()), "The descriptor."},
                   {"shift", figures(6), each(used.shift)(std::identity()), "What was subtracted from it."},
                   {"scale", figures(6), each(used.scale)(std::identity()), "What the difference was divided by."}});
}

ResultPart remarksPart(const std::vector<Remark>& remarks) {
  const auto of = each(remarks);
  return listPart("remarks", "What is worth knowing about the result.", remarks.size(),
                  {{"severity", kText,
                    of([](const Remark& remark) { return remark.severity == Severity::Warning ? "warning" : "note"; }),
                    "warning where it can change a decision, else note."},
                   {"code", kText, of(&Remark::code), "The kind of remark, a word that stays the same."},
                   {"text", kText, of(&Remark::text), "The remark as a sentence."},
                   {"names", listOf(kText), of(&Remark::names), "The rows or columns that it is about."}});
}

std::vector<Field> planFields(const FoldPlan& plan) {
  const auto of = only(&plan);
  return {{"folds", kWhole, of(&FoldPlan::folds), "How many folds were run."},
          {"scheme", kText, [&plan](std::size_t) { return describedFolds(plan); }, "The folds in words."},
          {"held_out_least", kWhole, of(&FoldPlan::smallest), "Rows held out in the smallest fold."},
          {"held_out_most", kWhole, of(&FoldPlan::largest), "Rows held out in the largest fold."},
          {"seed", kWhole, of(&FoldPlan::seed), "Of random draws; without meaning for other folds."}};
}

ResultPart selectionFrequencyPart(std::vector<Choice> choices, std::size_t folds) {
  std::stable_sort(choices.begin(), choices.end(), [](const Choice& a, const Choice& b) { return a.folds > b.folds; });
  const std::size_t rows = choices.size();
  const auto of = eachOf(std::move(choices));
  return listPart("selection_frequency", "How often the folds' own selections chose each descriptor.", rows,
                  {{"descriptor", kText, of(&Choice::name), "In the model, or chosen in at least one fold."},
                   {"in_model", "in the model", kFlag, of(&Choice::inModel), "Whether the model has it."},
                   {"folds_chosen", "chosen", outOf(folds), of(&Choice::folds), "Folds that chose it."}});
}

std::string headingOfRows(const UsedData& used) { return used.idColumn.empty() ? "row" : used.idColumn; }

const char* nameOf(Role role) { return role == Role::Model ? "model" : "predicted"; }

}  // namespace studystats
