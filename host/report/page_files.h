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
