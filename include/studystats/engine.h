// The analyses for C++ programs that want more than one call gives: typed, re-entrant, validated over folds of the
// caller's own.
//
// Nothing is process-wide: folds, random numbers and settings are values, so analyses run side by side on as many
// threads as the caller likes. Memory is obtained when an object is made. A fold is a function of what all folds share
// and of a place of its own, and folds are added up in their order: the bits do not depend on where they ran. The plain
// entry points (studystats/analyses.h) are adapters over the same methods. Rows, columns, classes and folds count from
// 0.
#pragma once

#include <studystats/engine/basics.h>
#include <studystats/engine/discriminant.h>
#include <studystats/engine/folds.h>
#include <studystats/engine/partial_least_squares.h>
#include <studystats/engine/preparation.h>
#include <studystats/engine/principal_components.h>
#include <studystats/engine/regression.h>
