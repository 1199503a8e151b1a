// Values to 18 digits: mpmath 1.3 (loggamma, betainc) with 50 digits.
#include "numeric/probability.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "tests/definition/probability.h"

namespace studystats::core {
namespace {

constexpr double kNan = std::numeric_limits<double>::quiet_NaN();

double logGamma(double x) { return LogGam(&x); }

struct Answer {
  double value = -7.25;
  std::int32_t status = -7;
};

Answer incompleteBeta(double a, double b, double x) {
  Answer answer;
  IncBet(&a, &b, &x, &answer.value, &answer.status);
  return answer;
}

Answer tProbability(double t, std::int32_t df) {
  Answer answer;
  TProb(&t, &df, &answer.value, &answer.status);
  return answer;
}

// The constants are single-precision values, so the error is 1e-7 and not 2e-10.
TEST(Probability, LogGammaIsRightToTheAccuracyOfItsConstants) {
  const double rows[][2] = {{0.1, 2.25271265173420596},
                            {0.5, 0.572364942924700087},
                            {1, 0.0},
                            {1.5, -0.120782237635245222},
                            {2, 0.0},
                            {3.25, 0.935801931108725358},
                            {10, 12.8018274800814696},
                            {42.5, 115.90007047041453},
                            {100, 359.134205369575399}};
  for (const auto& row : rows) EXPECT_NEAR(logGamma(row[0]), row[1], 1.3e-7) << row[0];
  // Stated figures of these very constants.
  EXPECT_NEAR(logGamma(1), 4.2067758e-08, 5e-16);
  EXPECT_NEAR(logGamma(2), 7.302823e-08, 5e-15);
  EXPECT_NEAR(logGamma(0.5), 0.57236496566, 5e-12);
}

TEST(Probability, IncompleteBetaIsRightInBothBranchesAndTails) {
  struct Row {
    double a, b, x, value, relative;
  };
  // A probability above 1/2 is 1 minus a small one; far tails amplify the error of ln gamma.
  const Row rows[] = {{0.5, 0.5, 0.25, 0.333333333333333333, 3e-7},
                      {0.5, 5, 0.0625, 0.566763967275619507, 3e-7},
                      {1, 1, 0.375, 0.375, 3e-7},
                      {2, 3, 0.125, 0.078857421875, 3e-7},
                      {2.5, 0.5, 0.875, 0.436588061020381806, 3e-7},
                      {5, 0.5, 0.03125, 7.4316254893338554e-9, 3e-7},
                      {10, 10, 0.5, 0.5, 3e-7},
                      {10, 3, 0.9375, 0.964925327140431222, 3e-7},
                      {30, 40, 0.4375, 0.564223451957139214, 3e-7},
                      {100, 2, 0.96875, 0.172423121955989211, 3e-7},
                      {200, 300, 0.375, 0.126477259194051552, 3e-7},
                      {4.5, 3, 0.0009765625, 5.072265409067616e-13, 3e-7},
                      {50, 0.5, 0.5, 9.90168898459413918e-17, 3e-7}};
  for (const Row& row : rows) {
    const Answer answer = incompleteBeta(row.a, row.b, row.x);
    EXPECT_EQ(answer.status, 0) << row.a << ' ' << row.b << ' ' << row.x;
    EXPECT_NEAR(answer.value, row.value, row.relative * row.value) << row.a << ' ' << row.b << ' ' << row.x;
  }
  EXPECT_NEAR(incompleteBeta(1e4, 1e4, 0.5).value, 0.50000006, 5e-9);  // stated
}

TEST(Probability, IncompleteBetaSaysWhatItCannotDo) {
  for (const double end : {0.0, 1.0}) {
    EXPECT_EQ(incompleteBeta(2, 3, end).value, end);
    EXPECT_EQ(incompleteBeta(2, 3, end).status, 0);
  }
  for (const double outside : {-0.1, 1.5}) {
    EXPECT_EQ(incompleteBeta(2, 3, outside).value, -7.25) << "not written";
    EXPECT_EQ(incompleteBeta(2, 3, outside).status, 1);
  }
  EXPECT_EQ(incompleteBeta(1e6, 1e6, 0.5).status, 2);
  EXPECT_EQ(incompleteBeta(1e6, 1e6, 0.5).value, 1.0);
  EXPECT_EQ(incompleteBeta(2, 3, kNan).status, 2);
}

TEST(Probability, StudentsTIsRightAndHasNoSign) {
  struct Row {
    double t;
    std::int32_t df;
    double value;
  };
  const Row rows[] = {{0.5, 1, 0.295167235300866548},  {1, 7, 0.649383337179792473},      {2, 3, 0.860674031441156823},
                      {2.5, 30, 0.981884350931933306}, {-2.5, 30, 0.981884350931933306},  {10, 5, 0.999829052424257036},
                      {4, 200, 0.999910869047814066},  {1.96, 1000, 0.949726815044251282}};
  for (const Row& row : rows) {
    EXPECT_NEAR(tProbability(row.t, row.df).value, row.value, 2e-7) << row.t << ' ' << row.df;
    EXPECT_EQ(tProbability(row.t, row.df).value, tProbability(-row.t, row.df).value);
  }
  EXPECT_EQ(tProbability(0, 9).value, 0.0);
  EXPECT_NEAR(tProbability(1, 1).value, 0.5, 1e-8);  // the Cauchy distribution
  EXPECT_NEAR(tProbability(-10, 5).value, 0.99982905, 5e-9);
  EXPECT_EQ(tProbability(kNan, 5).status, 2);
}

TEST(Probability, EqualsThePlainTranscriptionBitForBit) {
  for (double a : {0.5, 1.0, 7.5, 60.0})
    for (double b : {0.5, 2.0, 33.5})
      for (double x = 0; x <= 1; x += 0.03125) {
        Answer plain;
        definition::incompleteBeta(a, b, x, plain.value, plain.status);
        EXPECT_EQ(incompleteBeta(a, b, x).value, plain.value) << a << ' ' << b << ' ' << x;
        EXPECT_EQ(incompleteBeta(a, b, x).status, plain.status) << a << ' ' << b << ' ' << x;
      }
}

}  // namespace
}  // namespace studystats::core
