// A host in forty lines: reads a table, asks for its principal components, shows what came back.
#include <algorithm>
#include <iostream>

#include <studystats/host.h>
namespace ss = studystats;

int main(int argc, char** argv) try {
  if (argc != 2) {
    std::cerr << "usage: embed TABLE\n";
    return 2;
  }
  const ss::Table table = ss::readTable(argv[1]);  // delimiter and decimal sign are detected

  ss::PrincipalComponentsOptions options;  // the command's defaults, unless said otherwise
  options.components = 3;
  options.progress = [](const ss::Progress& progress) {  // on this thread
    std::cerr << progress.text << ' ' << progress.percent << " %\n";
    return true;  // false stops at this report
  };
  const ss::PrincipalComponents pca = ss::principalComponents(table, options);

  for (const ss::Remark& remark : pca.remarks) std::cerr << remark << '\n';  // "warning: ...", "note: ..."

  std::cout << pca.used.rows.size() << " rows, " << pca.used.descriptors.size() << " descriptors\n";
  for (int a = 0; a < pca.kept; ++a) {
    const ss::Component& component = pca.components[a];
    std::cout << "component " << a + 1 << ": eigenvalue " << component.eigenvalue << ", " << 100 * component.explained
              << " % explained\n";
  }
  const auto extreme =
      std::ranges::max_element(pca.rows, {}, &ss::ComponentRow::t2);  // farthest from the middle of the model
  std::cout << "most extreme row: " << extreme->name << ", T2 " << extreme->t2 << '\n';
  return 0;
} catch (const ss::Stopped&) {
  return 130;
} catch (const ss::Error& error) {  // one sentence for the person who reads it
  std::cerr << error.what() << '\n';
  return error.exitStatus();
}
