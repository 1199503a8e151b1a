// The friendly interface: a table in, one result struct out.
//
//   const studystats::Table table = studystats::readTable("wine.csv");
//   const studystats::PrincipalComponents pca = studystats::principalComponents(table, {.components = 3});
//   std::cout << studystats::summary(pca);
//
// Columns and rows go by name, and where a number is needed it counts from 0. Results are values: they own what they
// hold and never point into a table. Not-a-number stands only where a cell truly is none; what can be absent is
// std::optional. Nothing here writes to a stream: what is worth saying stands in `remarks`, what went wrong is thrown
// as an Error. Options take designated initialisers: what has a default may be left out (members of class type carry {}
// so that g++ -Wextra agrees). Functions may be called from any thread, side by side: nothing is shared between them,
// nor with analyses.h. An application that has an ISBProgressMonitor takes host/host_monitor.h besides.
#pragma once

#include <studystats/host/clusters.h>
#include <studystats/host/data.h>
#include <studystats/host/describe.h>
#include <studystats/host/discriminant.h>
#include <studystats/host/errors.h>
#include <studystats/host/model.h>
#include <studystats/host/output.h>
#include <studystats/host/partial_least_squares.h>
#include <studystats/host/predict.h>
#include <studystats/host/principal_components.h>
#include <studystats/host/progress.h>
#include <studystats/host/regression.h>
#include <studystats/host/report.h>
#include <studystats/host/table.h>
#include <studystats/host/validation.h>
