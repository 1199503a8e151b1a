// A page for people: the answer first, then figures, tables and the data card, as values and as one HTML file.
//
// reportPage() turns a result into what stands on its page: sentences, Vega-Lite charts, tables and the data that both
// show. reportHtml() makes one self-contained file of it. The same result and context give the same bytes.
#pragma once

#include <studystats/host/clusters.h>
#include <studystats/host/describe.h>
#include <studystats/host/discriminant.h>
#include <studystats/host/output.h>
#include <studystats/host/partial_least_squares.h>
#include <studystats/host/principal_components.h>
#include <studystats/host/regression.h>
#include <studystats/host/table.h>

#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace studystats {

// What a page tells beside the result.
struct ReportContext {
  std::string command{};             // what made the result, a command line for example; empty: not said
  std::string digest{};              // of the table's bytes; empty: not said
  std::string date{};                // of the page; empty: not said
  const TableView* table = nullptr;  // the table of the analysis: its columns colour points, describe draws them
  const DataOptions* preparation = nullptr;  // how the table was prepared, for what a page computes itself
};

struct ReportFigure {
  std::string name;  // its anchor and its file, "observed-predicted"
  std::string title;
  std::string alternative;  // what it shows, for who cannot see it
  std::string caption;      // how it is read
  std::string chart;        // Vega-Lite JSON; its data are the page's, by name
  bool wide = false;        // takes the page's whole width
};

struct ReportColumn {
  std::string field;  // of the data
  std::string heading;
  CellKind kind = CellKind::Text;
  int digits = 4;
};

struct ReportTable {
  std::string name;  // its anchor and its file
  std::string title;
  std::string note;
  std::string data;  // the name of one of the page's data
  std::vector<ReportColumn> columns;
};

struct ReportRemark {
  Remark remark;
  std::string anchor;  // the figure or table where it is seen; empty: none
};

// A name and a text: a line of the data card, a paragraph of "how to read".
struct ReportEntry {
  std::string name;
  std::string text;
};

struct ReportPage {
  std::string analysis;  // "mlr"
  std::string title;     // "Stepwise regression of logBBB"
  std::string subtitle;  // what it was made from
  std::string answer;    // in words, from cross-validated figures alone
  std::string banner;    // why there are none, when the validation was abandoned
  ReportFrame frame;
  std::vector<ReportRemark> remarks;  // warnings first
  std::vector<ReportFigure> figures;  // the first stands beside the answer
  std::vector<ReportTable> tables;    // the first stands below it
  std::vector<Table> data;            // a column named "key" lights the marks and rows of equal keys together
  std::vector<ReportEntry> card;      // used, dropped and why, preparation, folds, command, version, digest
  std::vector<ReportEntry> reading;   // how to read the page, with formulas
};

// Points drawn and rows listed: of more, that many spread evenly, and the page says so.
constexpr std::size_t kMostReportRows = 5000;

STUDYSTATS_API ReportPage reportPage(const Clusters& result, const ReportContext& context = {});
STUDYSTATS_API ReportPage reportPage(const Description& description, const ReportContext& context = {});
STUDYSTATS_API ReportPage reportPage(const Discriminant& result, const ReportContext& context = {});
STUDYSTATS_API ReportPage reportPage(const PartialLeastSquares& result, const ReportContext& context = {});
STUDYSTATS_API ReportPage reportPage(const PrincipalComponents& result, const ReportContext& context = {});
STUDYSTATS_API ReportPage reportPage(const Regression& result, const ReportContext& context = {});

// What draws the charts, as text: the minified builds of three packages that a page carries in itself.
struct ReportScripts {
  std::string_view vega{};       // vega 6
  std::string_view vegaLite{};   // vega-lite 6
  std::string_view vegaEmbed{};  // vega-embed 7
  std::string_view notices{};    // their licences
};

// One HTML file that asks the network for nothing.
STUDYSTATS_API std::string reportHtml(const ReportPage& page, const ReportScripts& scripts);

// Each figure with its data, for restyling: figure-NAME.vl.json.
STUDYSTATS_API std::vector<CsvFile> chartFiles(const ReportPage& page);

// Today's date in UTC, "2026-03-09", or that of the environment's SOURCE_DATE_EPOCH.
STUDYSTATS_API std::string reportDate();

}  // namespace studystats
