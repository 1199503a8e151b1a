// The least-squares line of one column on another:
//
//   slope = sum (x - mean x) y / sum (x - mean x)^2,  intercept = mean y - slope * mean x
//
// Deviations of x alone suffice, since they sum to zero; columns are compared, not their spread with a tolerance, to
// find the flat case.
#include <studystats/utilities.h>

namespace StatsCalcUtils {
namespace {

struct Line {
  double slope, intercept, xMinimum, xMaximum;
};

// Sum and extremes of a column that is not empty.
struct Summary {
  double sum = 0.0, minimum, maximum;

  explicit Summary(const std::vector<double>& values) : minimum(values[0]), maximum(values[0]) {
    for (const double v : values) {
      sum += v;
      if (v < minimum) minimum = v;
      if (v > maximum) maximum = v;
    }
  }
  bool flat() const { return maximum - minimum == 0.0; }  // exactly: a tiny spread still has a slope
};

Line RawCalculateBestFit(const std::vector<double>& x, const std::vector<double>& y) {
  if (x.size() != y.size() || x.empty())
    throw Dvo::DvoResult(E_UNEXPECTED, "Data inconsistency in RawCalculateBestFit.", Dvo::LastDescription::Action(0));
  const auto n = double(x.size());
  const Summary ofX(x), ofY(y);
  const double xMean = ofX.sum / n, yMean = ofY.sum / n;
  if (ofX.flat() || ofY.flat()) return {0.0, yMean, ofX.minimum, ofX.maximum};

  double sxx = 0.0, sxy = 0.0;
  for (std::size_t i = 0; i < x.size(); ++i) {
    sxx += (x[i] - xMean) * (x[i] - xMean);
    sxy += (x[i] - xMean) * y[i];
  }
  const double slope = sxy / sxx;
  return {slope, yMean - slope * xMean, ofX.minimum, ofX.maximum};
}

}  // namespace

void CalculateBestFit(const std::vector<double>& x, const std::vector<double>& y, double& slope, double& intercept) {
  const Line line = RawCalculateBestFit(x, y);
  slope = line.slope;
  intercept = line.intercept;
}

void CalculateBestFit(const std::vector<double>& x, const std::vector<double>& y, double& xStart, double& yStart,
                      double& xEnd, double& yEnd) {
  const Line line = RawCalculateBestFit(x, y);
  xStart = line.xMinimum;
  yStart = line.slope * line.xMinimum + line.intercept;
  xEnd = line.xMaximum;
  yEnd = line.slope * line.xMaximum + line.intercept;
}

}  // namespace StatsCalcUtils
