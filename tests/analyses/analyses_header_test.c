/* Compiled as C: the entry points are called by their plain names, with the argument types of the header. */
#include <stdio.h>
#include <studystats/analyses.h>

/* Two variables whose deviations are (-1, 0, 1) and (-2, 0, 2): one component of variance 1 + 4. */
static int principalComponents(void) {
  const double data[6] = {0, 1, 2, 5, 7, 9};
  double values[2], vectors[4], covariance[4], explained[4], scores[6], means[2], deviations[2];
  int32_t nComponents = -1, status = -1;
  PCAnal(data, 3, 2, &nComponents, values, vectors, covariance, explained, scores, means, deviations, &status);
  return status == 0 && nComponents == 2 && covariance[1] == 2 && values[0] > 4.9999999 && values[0] < 5.0000001;
}

static int randomNumbers(void) { return Nmrrst() == 0 && Nmrand(0) == 533923850.0F * 1e-9F; }

int main(void) {
  if (!principalComponents()) return puts("principal components differ"), 1;
  if (!randomNumbers()) return puts("random numbers differ"), 1;
  return 0;
}
