// The part of a principal component analysis before the analysis: what would be analysed.
#pragma once

#include <studystats/host/principal_components.h>

#include "host/preparation/preparation.h"

namespace studystats {

Prepared preparePrincipalComponents(const TableView& table, const PrincipalComponentsOptions& options, Watch& watch);

}  // namespace studystats
