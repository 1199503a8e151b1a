// A result's parts as JSON, as CSV files and as tables of text.
#pragma once

#include "host/result/part.h"

#include <string>
#include <vector>

namespace studystats {

class JsonWriter;

// A document: an object a line for each member, lists a line for each record; a line end at the end.
std::string jsonOf(const ResultPart& document);

void writeCell(const Cell& cell, JsonWriter& json);

// RFC 4180 with full precision. Absent values are empty; the elements of a list that has no columns share a cell.
std::string csvOf(const ResultPart& list);

// Every list of a document, "rows.csv" and so on.
std::vector<CsvFile> csvFiles(const ResultPart& document);

// The fields of these names as a table of text, for all rows.
std::string textTable(const ResultPart& list, const std::vector<std::string>& fields, const TextOptions& options);

// The same for these rows alone: all of them where the options say so, else the first `most` and how many follow.
std::string textTable(const ResultPart& list, const std::vector<std::string>& fields, const TextOptions& options,
                      const std::vector<std::size_t>& rows, std::size_t most);

// A frame in plain ASCII; `folds` stands behind the heading "cross-validated".
std::string textFrame(const ReportFrame& frame, const std::string& folds);

}  // namespace studystats
