// How the columns of a table are prepared for a model, by the rows that the model is fitted to and by no others.
#pragma once

#include <cstdint>

namespace studystats::engine {

// What the values of a column are divided by; 1 where they do not spread, or the divisor is not a number.
enum class Scaling : std::int32_t {
  None,
  Autoscale,  // their standard deviation, by rows - 1
  Pareto,     // the root of that
  Range,      // half their range
};

// What stands for missing cells of descriptors, which are not-a-numbers.
enum class Filling : std::int32_t {
  None,
  Mean,    // of the column's other cells; 0 when there are none
  Median,  // the same, between the middle two of an even number
  Value,
};

struct ColumnPreparation {
  bool centre = false;  // subtracts the mean
  Scaling scaling = Scaling::None;
};

// A fold finds fill values, means and divisors in its training rows, filled ones included, and applies them to the rows
// that it holds out; a model of all rows finds them in all of its rows. What comes back of a model, its predictions and
// coefficients, is in the units of the table given. Missing responses are not filled: rows without are for no list of
// training rows.
struct Preparation {
  ColumnPreparation descriptors{};
  ColumnPreparation responses{};
  Filling filling = Filling::None;
  double fillValue = 0;  // of Filling::Value
};

}  // namespace studystats::engine
