// Value transforms and the headings that say what they compute.
#include <studystats/utilities.h>

#include <cmath>
#include <ios>

namespace StatsUtils {
namespace {

struct HeadingParts {
  const char* prefix;
  const char* suffix;
};

HeadingParts partsFor(STATS_TRANSFORM_TYPE type) {
  switch (type) {
    case STATS_TRANSFORM_RECIPROCAL:
      return {"1.0 / ( ", " )"};
    case STATS_TRANSFORM_LOG:
      return {"log ( ", " )"};
    case STATS_TRANSFORM_SQRT:
      return {"sqrt ( ", " )"};
    case STATS_TRANSFORM_SQUARE:
      return {"( ", " )^2"};
    case STATS_TRANSFORM_CUBE:
      return {"( ", " )^3"};
    case STATS_TRANSFORM_EXP:
      return {"exp ( ", " )"};
    default:
      return {"( ", " )"};
  }
}

// "+ 1", "- 2.25": the sign apart, six significant digits.
std::string shiftText(double shift) {
  Dvo::DvoFormat format("%1");
  format.Stream() << std::showpos;
  std::string text = format << shift;
  return text.insert(1, 1, ' ');
}

}  // namespace

// Arithmetic on two doubles: nothing here can raise.
bool TransformValue(double value, STATS_TRANSFORM_TYPE type, double shift, double& result) {
  result = 0.0;
  const double x = value + shift;
  switch (type) {
    case STATS_TRANSFORM_RECIPROCAL:
      if (x == 0.0) return false;
      result = 1.0 / x;
      break;
    case STATS_TRANSFORM_LOG:
      if (!(x > 0.0)) return false;
      result = std::log(x);
      break;
    case STATS_TRANSFORM_SQRT:
      if (!(x >= 0.0)) return false;
      result = std::sqrt(x);
      break;
    case STATS_TRANSFORM_SQUARE:
      result = x * x;
      break;
    case STATS_TRANSFORM_CUBE:
      result = x * x * x;
      break;
    case STATS_TRANSFORM_EXP:
      result = std::exp(x);
      break;
    default:
      result = x;
  }
  return true;
}

void TransformHeading(const std::string& heading, STATS_TRANSFORM_TYPE type, double shift, std::string& result) {
  const auto [prefix, suffix] = partsFor(type);
  if (shift == 0.0)
    result = prefix + heading + suffix;
  else
    result = std::string(prefix) + "( " + heading + " ) " + shiftText(shift) + suffix;
}

}  // namespace StatsUtils
