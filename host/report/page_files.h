// The files of the folder report/, as they are.
#pragma once

#include <string_view>

namespace studystats::page_files {

std::string_view page();  // the template: {{name}} stands for what a page puts in
std::string_view style();
std::string_view tables();
std::string_view figures();
std::string_view script();

}  // namespace studystats::page_files

// The charts of report/charts/, "-" in a name as "_".
namespace studystats::chart_files {

std::string_view coefficient_spread();
std::string_view observed_predicted();
std::string_view residuals();
std::string_view selection_frequency();
std::string_view selection_path();
std::string_view williams();

}  // namespace studystats::chart_files
