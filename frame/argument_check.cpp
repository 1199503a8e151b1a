#include "frame/argument_check.h"

#include <studystats/host_framework.h>

#include <string>

namespace studystats::core {

void invalidArgument(const char* operation) {
  throw Dvo::DvoResult(E_INVALIDARG, std::string("Invalid argument to ") + operation, Dvo::LastDescription::Action(0));
}

}  // namespace studystats::core
