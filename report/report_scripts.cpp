#include "report/report_scripts.h"

namespace studystats {
namespace script_files {

// Undefined in a build without them, which never calls them.
std::string_view vega();
std::string_view vegaLite();
std::string_view vegaEmbed();
std::string_view notices();

}  // namespace script_files

std::string whyNoReport() { return STUDYSTATS_NO_REPORT; }

ReportScripts reportScripts() {
  if constexpr (std::string_view(STUDYSTATS_NO_REPORT).empty())
    return {script_files::vega(), script_files::vegaLite(), script_files::vegaEmbed(), script_files::notices()};
  return {};
}

}  // namespace studystats
