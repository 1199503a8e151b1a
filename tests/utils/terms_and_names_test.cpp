#include <gtest/gtest.h>
#include <studystats/analyses.h>
#include <studystats/utilities.h>

#include <cfloat>
#include <climits>
#include <cmath>
#include <cstdlib>
#include <limits>

namespace {

using namespace StatsUtils;

const double kNaN = std::numeric_limits<double>::quiet_NaN();
const double kInf = std::numeric_limits<double>::infinity();

TEST(Transforms, ComputeWithinTheirDomainAndRefuseOutsideIt) {
  const struct {
    double value;
    int type;
    double shift;
    bool valid;
    double result;
  } kRows[] = {
      {3, 2, -2, true, 0},
      {1, 2, -1, false, 0},
      {-1, 2, 0, false, 0},
      {kNaN, 2, 0, false, 0},
      {std::exp(1.0), 2, 0, true, 1},
      {-4, 3, 0, false, 0},
      {-0.0, 3, 0, true, 0},
      {kNaN, 3, 0, false, 0},
      {9, 3, 7, true, 4},
      {2, 1, -2, false, 0},
      {2, 1, 2, true, 0.25},
      {kNaN, 1, 0, true, kNaN},
      {-3, 4, 0, true, 9},
      {2, 5, 1, true, 27},
      {0, 6, 0, true, 1},
      {1000, 6, 0, true, kInf},
      {5, 9, 1, true, 6},
      {5, 0, 1, true, 6},
      {5, INT_MIN, 1, true, 6},
  };
  for (const auto& row : kRows) {
    double result = 77;
    EXPECT_EQ(TransformValue(row.value, STATS_TRANSFORM_TYPE(row.type), row.shift, result), row.valid);
    EXPECT_TRUE(result == row.result || (std::isnan(result) && std::isnan(row.result)))
        << row.value << ", type " << row.type << ", shift " << row.shift << ": " << result;
  }
}

TEST(Transforms, HeadingsSayWhatIsComputed) {
  const struct {
    int type;
    double shift;
    const char* heading;
  } kRows[] = {
      {2, 0, "log ( X )"},
      {2, 1, "log ( ( X ) + 1 )"},
      {4, -2.25, "( ( X ) - 2.25 )^2"},
      {0, -0.0, "( X )"},
      {99, 0, "( X )"},
      {1, 0, "1.0 / ( X )"},
      {3, 1234567, "sqrt ( ( X ) + 1.23457e+06 )"},
      {5, 0, "( X )^3"},
      {6, 0.5, "exp ( ( X ) + 0.5 )"},
      {6, kNaN, "exp ( ( X ) + nan )"},
  };
  for (const auto& row : kRows) {
    std::string text = "X";
    TransformHeading(text, STATS_TRANSFORM_TYPE(row.type), row.shift, text);
    EXPECT_EQ(text, row.heading);
  }
}

TEST(Terms, ShowSignMagnitudeAndName) {
  const struct {
    double coefficient;
    const char* name;
    bool scientific, signedTerm;
    const char* text;
  } kRows[] = {
      {2.5, "a", false, true, " + 2.500000000 * a"},
      {-0.25, "", false, false, " - 0.250000000"},
      {3, "b", false, false, " 3.000000000 * b"},
      {1234.5, "", true, true, " + 1.2345000000000000e+03"},
      {-1234.5, "x", true, true, " - 1.2345000000000000e+03 * x"},
      {-0.0, "", false, true, " + 0.000000000"},
      {1, "50 %2 conc", false, true, " + 1.000000000 * 50 %2 conc"},
      {kInf, "", false, false, " inf"},
  };
  for (const auto& row : kRows)
    EXPECT_EQ(FormatTerm(row.coefficient, row.name, row.scientific, row.signedTerm), row.text);

  // Seventeen significant digits: a reader gets the same number back.
  for (const double x : {0.1, 1.0 / 3, DBL_MAX, DBL_MIN, DBL_TRUE_MIN, 9007199254740993.0})
    EXPECT_EQ(std::strtod(FormatTerm(x, "", true, false).c_str(), nullptr), x);
}

TEST(RandomDouble, ContinuesTheGeneratorAndLiesBetweenItsEnds) {
  // Seeded with 1, the generator's table is stated to begin 298227348, 715119168, 33021107, in units of 1e-9.
  Nmrrst();
  EXPECT_FLOAT_EQ(float(GenerateRandomDouble(0, 1)), 0.298227348f);
  EXPECT_NEAR(GenerateRandomDouble(5, 2), 2 + 3 * 0.715119168, 1e-6);
  EXPECT_EQ(GenerateRandomDouble(3, 3), 3);
  EXPECT_LT(Nmrand(0), 1.0f);
  for (int i = 0; i < 1000; ++i) {
    const double x = GenerateRandomDouble(-1, 4);
    ASSERT_TRUE(x >= -1 && x <= 4) << x;
  }
}

TEST(UniqueNames, CountUpPastEverythingThatIsTaken) {
  UniqueNameGenerator names;
  const struct {
    const char *base, *name;
  } kRequests[] = {
      {"A", "A"},     {"A", "A (2)"}, {"A (3)", "A (3)"}, {"A", "A (4)"},   {"a", "a"},         {"A (2)", "A (2) (2)"},
      {"", ""},       {"", " (2)"},   {"%2", "%2"},       {"%2", "%2 (2)"}, {"B (2)", "B (2)"}, {"B", "B"},
      {"B", "B (3)"}, {"A", "A (5)"}, {"A ", "A "},
  };
  for (const auto& request : kRequests) EXPECT_EQ(names.UniqueName(request.base), request.name);

  UniqueNameGenerator copy(names);
  EXPECT_EQ(copy.UniqueName("A"), "A (6)");
  EXPECT_EQ(names.UniqueName("A"), "A (6)");
  const UniqueNameGenerator& itself = names;
  names = itself;
  EXPECT_EQ(names.UniqueName("A"), "A (7)");
  UniqueNameGenerator seeded = kel::set<std::string>{"A", "A (2)"};
  EXPECT_EQ(seeded.UniqueName("A"), "A (3)");
  for (int i = 0; i < 20000; ++i) copy.UniqueName("many of one name");  // in linear time
  EXPECT_EQ(copy.UniqueName("many of one name"), "many of one name (20001)");
}

}  // namespace
