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

/* One variable whose classes lie at 0, 1, 2 and at 10, 11, 12: nobody is classified wrongly, and the first sample lies
 * 1 from its own class mean and 11 from the other's. */
static int discrimination(void) {
  const double data[6] = {0, 10, 1, 11, 2, 12};
  const int32_t classOf[12] = {1, 2, 1, 2, 1, 2}, inModel[6] = {1, 1, 1, 1, 1, 1};
  int32_t rows[6], selected, folds, order, confusion[4], held[4], nSteps = -1, nCanonical = -1, status = -1, goOn = -1;
  double vector, value;
  float step, stepClass[2], correct, classCorrect[2], distances[12];
  DisAnl(data, classOf, rows, inModel, 6, 1, 2, 0, 0, 1, 0, 1, &vector, &value, &step, stepClass, &correct,
         classCorrect, distances, &selected, &folds, &order, confusion, held, &nSteps, &nCanonical, &status, 0, &goOn);
  return status == 0 && correct == 1 && folds == 6 && rows[3] == 2 && held[3] == 3 && distances[0] == 1 &&
         distances[6] == 11;
}

/* The response is twice the descriptor: one component, found in every fold. */
static int partialLeastSquares(void) {
  const double data[8] = {-2, -1, 1, 2, -4, -2, 2, 4}, means[2] = {5, 7};
  const int32_t tags[8] = {0}, rowUse[4] = {1, 1, 1, 1};
  int32_t rows[4], status = -1, goOn = -1;
  double scales[2] = {1, 1}, coef, error, ratio, q2, r2, rss, tss, intercept, fitted[4], press;
  PlsAnl(data, tags, rows, rowUse, 4, 2, 0, scales, means, 0, 1, 1, 0, 0.9F, 1, 0, 1, 0, 1, &coef, &error, &ratio, &q2,
         &r2, &rss, &tss, &intercept, fitted, &press, &status, 0, &goOn);
  return status == 0 && coef > 1.9999999 && coef < 2.0000001 && tss == 40 && q2 > 0.9999999 && rows[3] == 4 &&
         fitted[3] > 10.9999999 && fitted[3] < 11.0000001 && intercept > -3.0000001 && intercept < -2.9999999;
}

static int randomNumbers(void) { return Nmrrst() == 0 && Nmrand(0) == 533923850.0F * 1e-9F; }

int main(void) {
  if (!principalComponents()) return puts("principal components differ"), 1;
  if (!discrimination()) return puts("discriminant analysis differs"), 1;
  if (!partialLeastSquares()) return puts("partial least squares differs"), 1;
  if (!randomNumbers()) return puts("random numbers differ"), 1;
  return 0;
}
