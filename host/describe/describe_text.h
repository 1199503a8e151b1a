// What a description's page says below its figures; each part empty when there is nothing to say.
#pragma once

#include <studystats/host/describe.h>

#include <string>

namespace studystats {

std::string missingText(const Description& description);                           // "Missing     44 cells ..."
std::string codesText(const Description& description);                             // "Codes?      Month ..."
std::string lookText(const Description& description, const TextOptions& options);  // repeats, correlations, ...

}  // namespace studystats
