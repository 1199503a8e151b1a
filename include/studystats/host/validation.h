// How rows are held out, and a value that may be absent with its reason.
#pragma once

#include <studystats/host/errors.h>

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <utility>

namespace studystats {

// A value, or the sentence that says why there is none.
template <class T>
class Result {
 public:
  Result() = default;
  Result(T value) : value_(std::move(value)) {}  // NOLINT(google-explicit-constructor)
  static Result failure(std::string why) {
    Result result;
    result.error_ = std::move(why);
    return result;
  }
  explicit operator bool() const { return value_.has_value(); }
  const T& operator*() const { return value_.value(); }
  const T* operator->() const { return &value_.value(); }
  const std::string& error() const { return error_; }

 private:
  std::optional<T> value_;
  std::string error_;
};

// How rows are held out. Systematic groups are dealt along the ascending response, so that each spans its range.
struct Folds {
  enum class Kind { LeaveOneOut, Systematic, Random, Column };
  struct Draws {
    int draws = 100;       // how often a training set is drawn
    double heldOut = 0.2;  // share of the rows that each draw holds out
  };
  Kind kind = Kind::Systematic;
  int groups = 7;         // of Systematic; 2 or more
  Draws draws{};          // of Random
  std::int32_t seed = 1;  // of Random: 0 ... 161803398; the same seed draws the same rows

  std::string column{};  // of Column: rows with the same text in it are held out together

  static Folds leaveOneOut() { return {.kind = Kind::LeaveOneOut}; }
  static Folds systematic(int groups) { return {.kind = Kind::Systematic, .groups = groups}; }
  static Folds random(Draws draws, std::int32_t seed = 1) {
    return {.kind = Kind::Random, .draws = draws, .seed = seed};
  }
  static Folds byColumn(std::string name) { return {.kind = Kind::Column, .column = std::move(name)}; }
};

// The folds as they were run.
struct FoldPlan {
  Folds::Kind kind = Folds::Kind::Systematic;
  std::size_t folds = 0;
  std::size_t smallest = 0;  // rows held out in the smallest and in the largest fold
  std::size_t largest = 0;
  std::int32_t seed = 1;
  std::string column{};  // that said which rows go together; else empty
};

}  // namespace studystats
