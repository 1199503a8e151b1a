// Principal components as a building block: from the covariances of the variables or, when there are fewer rows than
// columns, from the products of the rows.
//
//   engine::PrincipalComponents components({.table = table, .side = engine::Side::Smaller, .components = 5});
//   if (!components) ...                                            // memory could not be had
//   engine::Status status = components.fit(checkpoint);
//   components.model().loadings ...
//
// Jolliffe, Principal Component Analysis, 2nd ed. (2002).
#pragma once

#include <studystats/engine/basics.h>

#include <cstdint>
#include <memory>
#include <span>

namespace studystats::engine {

// The matrix whose eigenvectors are sought.
enum class Side : std::int32_t {
  Variables,  // covariances of the columns, columns x columns: what PCAnal computes, with its bits and signs
  Smaller,    // when there are fewer rows than columns, products of the centred rows, rows x rows; else Variables
};

struct PrincipalComponentsTask {
  Table table;  // of its own scale: nothing is standardised
  Side side = Side::Variables;
  std::int32_t components = -1;  // loadings of so many, the leading ones; below 0: of all that the side has
  bool scores = true;
  bool covariance = false;  // the whole matrix, columns x columns
  bool explained = false;
};

// Components are in the order of their variances, largest first. k is the number asked for, and no more than there are
// eigenvalues.
//
// Signs. From the variables they are the eigensolver's. From the rows the largest loading of each component, by
// magnitude, is positive; of equal ones the first decides.
struct PrincipalComponentsModel {
  std::int32_t supported = 0;           // components that can have a variance: min(rows - 1, columns)
  std::span<const double> eigenvalues;  // variances along the components: `columns` of them, from the rows `supported`
  Table loadings;                       // columns x k, each of length 1
  Table scores;                         // rows x k: row times loadings, the data not centred; if asked for
  std::span<const double> scoreMeans;   // k, if scores are
  std::span<const double> scoreDeviations;  // k standard deviations, an exact 0 replaced by 1; if scores are
  std::span<const double> means;            // of the columns
  std::span<const double> variances;        // of the columns, divisor rows - 1
  Table covariance;                         // if asked for
  Table explained;  // columns x k: share of each variance explained so far, of data scaled to variance 1; if asked for
};

class STUDYSTATS_API PrincipalComponents {
 public:
  // Obtains all memory. From the variables that is a matrix of columns x columns (two, if the covariance is asked for);
  // from the rows nothing of that size unless the covariance is asked for.
  explicit PrincipalComponents(const PrincipalComponentsTask& task);
  ~PrincipalComponents();
  PrincipalComponents(const PrincipalComponents&) = delete;
  PrincipalComponents& operator=(const PrincipalComponents&) = delete;
  explicit operator bool() const;  // whether the memory was there

  // Done; Singular with fewer than two rows or no column; NotConverged; Stopped; NoMemory. From the rows a component
  // whose variance is nothing but rounding (at most columns * 2^-52 of the first one's) has variance 0 and loadings of
  // 0.
  Status fit(const Checkpoint& checkpoint = {});
  const PrincipalComponentsModel& model() const;  // of a fit that is done; its views last as long as the object

 private:
  struct State;
  std::unique_ptr<State> state_;
};

}  // namespace studystats::engine
