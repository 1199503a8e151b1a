// Compiled with nothing but the public headers on the include path: what a host needs is there.
#include <studystats/analyses.h>
#include <studystats/tables.h>
#include <studystats/utilities.h>

#include "counting_host.h"

static_assert(!std::is_abstract_v<CountingHost>);
static_assert(!std::has_virtual_destructor_v<ISBProgressMonitor>);
static_assert(sizeof(VARIANT) == 8 + 2 * sizeof(void*));
