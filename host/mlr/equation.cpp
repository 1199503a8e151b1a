// Equations as text, and their values.
#include <studystats/host/regression.h>
#include <studystats/utilities.h>

#include <algorithm>
#include <cmath>
#include <stdexcept>

namespace studystats {
namespace {

constexpr double kSixDigitsInNineDecimals = 1e-4;  // 0.000100000: the smallest that keeps six significant digits
constexpr double kDigitsOfADouble = 1e15;          // from there on the last ones before the point say nothing

std::string termText(double coefficient, const std::string& name, bool scientific, bool first) {
  return StatsUtils::FormatTerm(coefficient, name, scientific, !first);
}

std::string textOf(const Equation& equation, bool scientific) {
  std::string text = equation.response + " =" + termText(equation.constant, {}, scientific, true);
  for (const Equation::Term& term : equation.terms) text += termText(term.coefficient, term.name, scientific, false);
  return text;
}

}  // namespace

std::string Equation::text() const {
  const auto loses = [](double x) {
    return x != 0 && !(std::abs(x) >= kSixDigitsInNineDecimals && std::abs(x) < kDigitsOfADouble);
  };
  const bool scientific = loses(constant) || std::any_of(terms.begin(), terms.end(),
                                                         [&](const Term& term) { return loses(term.coefficient); });
  return textOf(*this, scientific);
}

std::string Equation::exact() const { return textOf(*this, true); }

double Equation::evaluate(std::span<const double> values) const {
  if (values.size() != terms.size()) throw BadOptions("an equation is evaluated with one value for each of its terms.");
  double sum = 0;
  for (std::size_t a = 0; a < terms.size(); ++a) sum += terms[a].coefficient * values[a];
  return constant + sum;
}

}  // namespace studystats
