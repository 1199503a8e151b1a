// Writes docs/json.md, or what was named instead.
#include <studystats/host/output.h>

#include "docs/json_doc.h"

int main(int argc, char** argv) {
  if (argc != 2) return 2;
  studystats::writeFile(argv[1], studystats::jsonDocument());
}
