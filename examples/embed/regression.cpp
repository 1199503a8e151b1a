// A host that fits a regression, shows what its validation says, saves the model and predicts with it.
#include <iostream>

#include <studystats/host.h>
namespace ss = studystats;

int main(int argc, char** argv) try {
  if (argc != 4) {
    std::cerr << "usage: regression TABLE RESPONSE MODEL\n";
    return 2;
  }
  const ss::Table table = ss::readTable(argv[1]);

  ss::RegressionOptions options;
  options.response = argv[2];
  options.folds = ss::Folds::systematic(7);  // or leaveOneOut(), random({.draws = 100, .heldOut = 0.2})
  const ss::Regression fit = ss::regress(table, options);

  for (const ss::Remark& remark : fit.remarks) std::cerr << remark << '\n';
  std::cout << fit.equation.text() << '\n';
  std::cout << "R2 " << fit.fit.r2 << ", s " << fit.fit.s << '\n';
  if (fit.validation)  // no q2 can be printed by accident
    std::cout << "q2 " << fit.validation->q2 << ", cross-validated RMSE " << fit.validation->rmse << '\n';
  else
    std::cout << "not validated: " << fit.validation.error() << '\n';
  for (const ss::RegressionTerm& term : fit.terms)  // the constant first
    if (term.name != "(constant)")
      std::cout << term.name << ": chosen in " << term.foldsChosen << " of " << fit.plan.folds << " folds\n";

  fit.model.save(argv[3]);
  for (const ss::Prediction& row : ss::Model::load(argv[3]).predict(table)) {
    if (row.missing) {  // nothing else of the row is set then
      std::cout << row.row << ": not predicted, no value in " << *row.missing << '\n';
      continue;
    }
    std::cout << row.row << ": " << row.values[0];
    if (row.halfWidths[0]) std::cout << " +- " << *row.halfWidths[0];
    std::cout << (row.inDomain() ? "" : ", outside the domain: " + row.outside) << '\n';
  }
  return 0;
} catch (const ss::Stopped&) {
  return 130;
} catch (const ss::Error& error) {
  std::cerr << error.what() << '\n';
  return error.exitStatus();
}
