// The packages that draw the charts of a report page, when this build has them.
#pragma once

#include <studystats/host/report.h>

#include <string>

namespace studystats {

// Why there are none, as the end of a sentence: "npm is not installed"; empty when there are.
std::string whyNoReport();

ReportScripts reportScripts();

}  // namespace studystats
