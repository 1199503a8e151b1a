#include <string>
#include <vector>

#include "cli/dispatch.h"

int main(int argc, char** argv) { return studystats::cli::dispatch({argv + (argc > 0 ? 1 : 0), argv + argc}); }
