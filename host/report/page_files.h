// The files of the folder report/, as they are.
#pragma once

#include <string_view>

namespace studystats::page_files {

std::string_view page();  // the template: {{name}} stands for what a page puts in
std::string_view style();
std::string_view config();  // the look that all charts share
std::string_view tables();
std::string_view figures();
std::string_view script();

}  // namespace studystats::page_files

namespace studystats::chart_files {

std::string_view named(std::string_view name);  // report/charts/NAME.vl.json; empty when there is none

}  // namespace studystats::chart_files
