// The part of a principal component analysis before the analysis: what would be analysed.
#pragma once

#include <studystats/host.h>

#include "host/preparation.h"

namespace studystats {

Prepared preparePrincipalComponents(const TableView& table, const PrincipalComponentsOptions& options, Watch& watch);

}  // namespace studystats
