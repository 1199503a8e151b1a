// Fast kernels beside their plain definition, and beside another library where one does the same.
//
// A case is a few lines in a file of its topic:
//
//   const Registration kSquares("squares of 1000", [] {
//     const auto x = std::make_shared<Numbers>(1000, 1.5), fast = ..., plain = ...;
//     return Comparison{.ours = {[=] { Squares(*x, *fast); }},
//                       .definition = {[=] { definition::squares(*x, *plain); }},
//                       .sameBits = [=] { return sameBits(*fast, *plain); }};
//   });
//
// Each contender becomes a Google Benchmark of its own; afterwards a table compares the contenders of each case, timed
// in turns in one process, because a neighbour's work or a change of clock must hit all of them alike.
#pragma once

#include <functional>
#include <iosfwd>
#include <string>
#include <vector>

namespace studystats::bench {

using Numbers = std::vector<double>;

struct Contender {
  std::function<void()> run = {};
  std::function<void()> prepare = {};  // before each run, outside the time
};

struct Comparison {
  Contender ours;
  Contender definition;
  Contender other = {};                 // another library, where one does the same
  std::function<bool()> sameBits = {};  // of ours and definition, after both have run
};

// Names a case, and the other library's routine if it has one, at start-up; its data are made when it is run.
struct Registration {
  Registration(const std::string& name, std::function<Comparison()> make, const std::string& otherName = "");
};

// Hands every contender of every case to Google Benchmark.
void registerBenchmarks();

// Measures the cases whose names match the pattern (a regular expression; empty: all) and prints the table. False when
// any two results differ in a bit.
bool printComparisons(std::ostream& out, const std::string& pattern);

bool sameBits(const Numbers& a, const Numbers& b);

}  // namespace studystats::bench
