// What each command is and does; the option table lists them.
#pragma once

#include "cli/option_table.h"

namespace studystats::cli {

Command describeCommand();
Command pcaCommand();
Command mlrCommand();
Command plsCommand();
Command daCommand();
Command clusterCommand();
Command predictCommand();

}  // namespace studystats::cli
