// Validation plan and subsets: systematic groups dealt along an order, or random subsets.
#include "numeric/validation.h"

#include <studystats/analyses.h>

#include <algorithm>
#include <cstddef>
#include <limits>

#include "numeric/folds.h"
#include "numeric/matrix_view.h"

namespace studystats::core {

std::int32_t cvMethod = 0;
std::int32_t cvGroups = 0;
float cvFraction = 0;
std::int32_t cvFolds = 0;
std::int32_t cvLeaveOut = 0;
double cvPressWeight = 0;

namespace {

// Cut toward zero; negative and not-a-number give 0, what is too large the largest integer.
std::int32_t truncated(float value) {
  constexpr float kTooLarge = 2147483648.0F;
  if (!(value > 0)) return 0;
  return value < kTooLarge ? static_cast<std::int32_t>(value) : std::numeric_limits<std::int32_t>::max();
}

ValidationPlan randomPlan(std::int32_t n, std::int32_t groups, float fraction) {
  ValidationPlan plan{};
  if (groups > 0 && groups < n) {
    plan.folds = std::max(2, truncated(fraction * static_cast<float>(groups)));
    plan.leaveOut = truncated(static_cast<float>(std::int64_t{n} + groups - 1) / static_cast<float>(groups));
  } else {
    plan.folds = std::max(1, truncated(static_cast<float>(n) * fraction));
    plan.leaveOut = 1;
  }
  plan.pressWeight = n / static_cast<double>(std::int64_t{plan.folds} * plan.leaveOut);
  return plan;
}

// The subset of one fold, filled row by row from the top.
struct Subset {
  const double* source;
  const std::int32_t* sourceTags;
  double* rows;
  std::int32_t* tags;
  std::int32_t n;
  std::int32_t m;
  std::int32_t count = 0;

  void clear() const {
    for (std::int32_t j = 0; j < m; ++j) std::fill_n(Matrix{rows, n}.column(j), n, 0.0);
    std::fill_n(tags, 2 * std::ptrdiff_t{n}, 0);
  }

  void append(std::int32_t row) {
    const ConstMatrix from{source, n};
    const Matrix to{rows, n};
    for (std::int32_t j = 0; j < m; ++j) to(count, j) = from(row, j);
    tags[count++] = sourceTags[row];
  }

  // A column at a time: the data are read and written in the order in which they lie.
  void appendMarked(const std::int32_t* heldOut, std::int32_t mark) {
    for (std::int32_t j = 0; j < m; ++j) {
      const double* from = ConstMatrix{source, n}.column(j);
      double* to = Matrix{rows, n}.column(j);
      for (std::int32_t row = 0; row < n; ++row)
        if (heldOut[row] == mark) *to++ = from[row];
    }
    for (std::int32_t row = 0; row < n; ++row)
      if (heldOut[row] == mark) tags[count++] = sourceTags[row];
  }
};

}  // namespace

ValidationPlan planValidation(const ValidationSettings& settings, std::int32_t n) {
  if (n < 1) return {.folds = 0, .leaveOut = 0, .pressWeight = 1.0};
  if (settings.method != kSystematicGroups) return randomPlan(n, settings.groups, settings.fraction);
  const std::int32_t folds = settings.groups < 1 ? n : std::min(n, settings.groups);
  return {.folds = folds, .leaveOut = n / folds, .pressWeight = 1.0};
}

void VldPln(const std::int32_t* n) {
  const ValidationPlan plan = planValidation({cvMethod, cvGroups, cvFraction}, *n);
  cvFolds = plan.folds;
  cvLeaveOut = plan.leaveOut;
  cvPressWeight = plan.pressWeight;
}

void VldGrp(const double* source, const std::int32_t* sourceTags, double* subset, std::int32_t* subsetTags,
            const std::int32_t* order, std::int32_t* heldOut, const std::int32_t* usable, const std::int32_t* n,
            const std::int32_t* m, std::int32_t* count, std::int32_t* columnsOut, const std::int32_t* group,
            const std::int32_t* code) {
  if (*code == 5)
    VldTrn(source, sourceTags, subset, subsetTags, order, heldOut, usable, n, m, count, group);
  else if (*code == 6)
    VldOut(source, sourceTags, subset, subsetTags, heldOut, n, m, count, columnsOut);
}

void VldTrn(const double* source, const std::int32_t* sourceTags, double* subset, std::int32_t* subsetTags,
            const std::int32_t* order, std::int32_t* heldOut, const std::int32_t* usable, const std::int32_t* n,
            const std::int32_t* m, std::int32_t* count, const std::int32_t* group) {
  Subset training{source, sourceTags, subset, subsetTags, std::max(*n, 0), *m};
  training.clear();
  std::fill_n(heldOut, training.n, 1);
  if (cvMethod == kSystematicGroups) {
    markOtherGroups(order, usable, training.n, std::max(cvFolds, 1), *group - 1, heldOut);
    training.appendMarked(heldOut, 0);
  } else {
    drawTraining(
        training.n, cvLeaveOut, usable, heldOut, [] { return Nmrand(0); },
        [&](std::int32_t row) { training.append(row); });
  }
  *count = training.count;
}

void VldOut(const double* source, const std::int32_t* sourceTags, double* subset, std::int32_t* subsetTags,
            const std::int32_t* heldOut, const std::int32_t* n, const std::int32_t* m, std::int32_t* count,
            std::int32_t* columnsOut) {
  Subset left{source, sourceTags, subset, subsetTags, std::max(*n, 0), *m};
  left.clear();
  *columnsOut = *m;
  left.appendMarked(heldOut, 1);
  *count = left.count;
}

}  // namespace studystats::core
