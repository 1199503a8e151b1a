// The eigensolver and its square root of a sum of squares against tests/data/eigen/golden.txt, bit for bit.
//
// The file's values were computed by the published EISPACK text of August 1983 in IEEE double precision without fused
// multiply-add, with the order of the results reversed afterwards. Words are separated by white space; a number is its
// 64-bit pattern as 16 hexadecimal digits; matrices stand column by column.

#include <gtest/gtest.h>

#include <bit>
#include <fstream>
#include <string>

#include "numeric/eigen.h"
#include "tests/numeric/eigen_cases.h"

namespace studystats::test {
namespace {

class Golden : public testing::Test {
 protected:
  void SetUp() override {
    ASSERT_TRUE(in_.is_open());
    ASSERT_EQ(word(), "golden-eigen");
    ASSERT_EQ(count(), 1);
  }

  std::string word() {
    std::string text;
    in_ >> text;
    return text;
  }
  std::int32_t count() { return std::stoi(word()); }
  double number() { return std::bit_cast<double>(std::stoull(word(), nullptr, 16)); }
  Numbers block(const std::string& key) {
    EXPECT_EQ(word(), key);
    Numbers numbers(static_cast<std::size_t>(count()));
    for (double& x : numbers) x = number();
    return numbers;
  }
  std::int32_t status(const std::string& key) {
    EXPECT_EQ(word(), key);
    return count();
  }

  void matrix();
  void refused();
  void pythag();

 private:
  std::ifstream in_{STUDYSTATS_SOURCE_DIR "/tests/data/eigen/golden.txt"};
};

// What a call must leave behind, made from the call that has not run yet: what is not overwritten stays as it is.
EigenCall valuesOnly(EigenCall call, std::int32_t ierr, const Numbers& w, const Numbers& a, const Numbers& squares) {
  call.ierr = ierr;
  std::size_t next = 0;
  for (std::size_t j = 0; j < call.length(); ++j) {
    call.w[j] = w[j];
    call.work2[j] = squares[j];
    for (std::size_t i = j + 1; i < call.length(); ++i) call.a[call.at(i, j)] = a[next++];
  }
  return call;
}

EigenCall withVectors(EigenCall call, std::int32_t ierr, const Numbers& w, const Numbers& z) {
  call.ierr = ierr;
  std::copy(w.begin(), w.end(), call.w.begin());
  std::copy(z.begin(), z.end(), call.z.begin());
  return call;
}

void expectOutcome(EigenCall call, const EigenCall& expected, const std::string& name) {
  call.solve(core::EigSym);
  SCOPED_TRACE(name + " wantVectors " + std::to_string(call.wantVectors));
  EXPECT_EQ(call.ierr, expected.ierr);
  EXPECT_TRUE(sameBits(call.w, expected.w)) << "w";
  EXPECT_TRUE(sameBits(call.a, expected.a)) << "a";
  EXPECT_TRUE(sameBits(call.z, expected.z)) << "z";
  EXPECT_TRUE(sameBits(call.work2, expected.work2)) << "work2";
}

// Each matrix with and without vectors, each with what the result must not depend on filled once with 0.5 (and the
// upper triangle mirrored), once with not-a-numbers. Rows of z below n hold 1000 column + row + 0.25 in the file.
void Golden::matrix() {
  const std::string name = word();
  const std::int32_t nm = count(), n = count();
  const Numbers lower = block("a");
  const std::int32_t valuesIerr = status("values_ierr");
  const Numbers valuesW = block("values_w"), valuesA = block("values_a"), squares = block("values_squares");
  const std::int32_t vectorsIerr = status("vectors_ierr");
  const Numbers vectorsW = block("vectors_w"), vectorsZ = block("vectors_z");
  ASSERT_EQ(word(), "end") << name;

  for (const std::int32_t want : {0, 1, -3}) {
    const bool junk = want != 1;
    EigenCall call(nm, n, want, junk ? kNaN : 0.5);
    std::size_t next = 0;
    for (std::size_t j = 0; j < call.length(); ++j) {
      for (std::size_t i = call.length(); i < static_cast<std::size_t>(nm); ++i)
        call.z[call.at(i, j)] = 1000.0 * static_cast<double>(j + 1) + static_cast<double>(i + 1) + 0.25;
      for (std::size_t i = j; i < call.length(); ++i) {
        call.a[call.at(i, j)] = lower[next];
        if (!junk) call.a[call.at(j, i)] = lower[next];
        ++next;
      }
    }
    expectOutcome(call,
                  want == 0 ? valuesOnly(call, valuesIerr, valuesW, valuesA, squares)
                            : withVectors(call, vectorsIerr, vectorsW, vectorsZ),
                  name);
    if (want == 0) {  // the upper triangle mirrored
      for (std::size_t j = 0; j < call.length(); ++j)
        for (std::size_t i = j; i < call.length(); ++i) call.a[call.at(j, i)] = call.a[call.at(i, j)];
      expectOutcome(call, valuesOnly(call, valuesIerr, valuesW, valuesA, squares), name + " mirrored");
    }
  }
}

void Golden::refused() {
  const std::int32_t nm = count(), n = count(), ierr = count();
  for (const std::int32_t want : {0, 1}) {
    const EigenCall call(nm, n, want, 1.5);
    EigenCall expected = call;
    expected.ierr = ierr;
    expectOutcome(call, expected, "refused");
  }
}

void Golden::pythag() {
  const double a = number(), b = number(), expected = number();
  EXPECT_TRUE(sameBits(core::Pythag(&a, &b), expected)) << a << ' ' << b;
}

TEST_F(Golden, EveryCaseBitForBit) {
  int matrices = 0, refusals = 0, pairs = 0;
  for (std::string key = word(); key != "golden-end"; key = word()) {
    if (key == "case")
      matrix(), ++matrices;
    else if (key == "refused")
      refused(), ++refusals;
    else if (key == "pythag")
      pythag(), ++pairs;
    else
      FAIL() << "unexpected word '" << key << "'";
    if (HasFatalFailure()) return;
  }
  EXPECT_EQ(matrices, 46);
  EXPECT_EQ(refusals, 1);
  EXPECT_EQ(pairs, 67);
}

}  // namespace
}  // namespace studystats::test
