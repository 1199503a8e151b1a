#include <studystats/utilities.h>

#include <cmath>
#include <iomanip>

std::string StatsUtils::FormatTerm(double coefficient, std::string name, bool scientific, bool signedTerm) {
  std::string sign = signedTerm ? " + " : " ";
  if (coefficient < 0.0) sign = " - ";

  Dvo::DvoFormat format(name.empty() ? "%1%2" : "%1%2 * %3");
  if (scientific)
    format.Stream() << std::scientific << std::setprecision(16);
  else
    format.Stream() << std::fixed << std::setprecision(9);
  format << sign << std::fabs(coefficient);
  if (!name.empty()) format << name;
  return format;
}
