// Whatever has been thrown, as one error object.
#pragma once

#include <studystats/host_framework.h>

namespace studystats::core {

// Called inside a catch block. A Dvo::DvoResult stays as it is; a thrown unsigned integer is an HRESULT and gets its
// standard sentence; std::bad_alloc becomes E_OUTOFMEMORY and any other std::exception E_FAIL, both with their own
// text; anything else becomes E_FAIL with "Internal Error".
Dvo::DvoResult translateCurrentException();

}  // namespace studystats::core
