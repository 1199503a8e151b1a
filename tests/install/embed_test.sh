#!/usr/bin/env bash
# embed_test.sh SOURCE BUILD LIBDIR: installs BUILD into a temporary prefix, moves it, and uses what is there: the command, each
# header alone, and the programs of examples/embed linked with the shared libraries and with the archives, by find_package and by
# pkg-config. Each of the two kinds of linking sees a tree without the other's files.
set -euo pipefail
source=$1 build=$2 libdir=$3
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

fail() { echo "FAILED: $*" >&2; exit 1; }

# The largest eigenvalue of the wine table's correlation matrix: R, prcomp(wine, scale. = TRUE)$sdev[1]^2 = 4.7058503.
check_figure() {
  "$1" "$source/examples/wine.csv" >"$work/out" 2>"$work/err" || { cat "$work/err"; fail "$2: status $?"; }
  grep -q 'component 1: eigenvalue 4\.70585,' "$work/out" || { cat "$work/out"; fail "$2: another eigenvalue"; }
  echo "ok: $2"
}

# Cement by stepwise selection: x1 and x2, with R's coefficients of lm(y ~ x1 + x2); leave-one-out PRESS 149.10 of 2715.76.
check_regression() {  # FOLDER LABEL
  local equation='52\.577348882 + 1\.468305742 \* x1 + 0\.662250491 \* x2'
  "$1/regression" "$source/examples/cement.csv" y "$work/model.json" >"$work/out" 2>"$work/err" ||
    { cat "$work/err"; fail "$2: status $?"; }
  "$1/raw_mulreg" >>"$work/out" || fail "$2, raw: status $?"
  [ "$(grep -c "$equation" "$work/out")" -eq 2 ] && grep -q '^q2 0\.945' "$work/out" && grep -q '^mix 13: 112\.' "$work/out" ||
    { cat "$work/out"; fail "$2: another regression"; }
  echo "ok: $2, regression"
}

# A table with gaps: 42 of its 153 rows have one, 7 of them in Solar.R, which the regression takes. Each program tells of every row
# that it has and of each that it has not, and the equation is R's lm(Ozone ~ Solar.R + Wind + Temp).
check_gaps() {  # FOLDER LABEL
  local table=$source/examples/airquality.csv
  { "$1/embed" "$table" && "$1/regression" "$table" Ozone "$work/model.json"; } >"$work/out" 2>"$work/err" ||
    { tail "$work/out" "$work/err"; fail "$2, gaps: status $?"; }
  grep -q '^111 rows' "$work/out" && [ "$(grep -cE '^[0-9]+: ' "$work/out")" -eq 153 ] &&
    [ "$(grep -cE '^[0-9]+: not predicted, no value in Solar\.R$' "$work/out")" -eq 7 ] &&
    [ "$(grep -cE '^[0-9]+: -?[0-9.]+ \+- [0-9.]+(, outside the domain: [A-Z].*)?$' "$work/out")" -eq 146 ] &&
    grep -q 'Ozone = - 64\.34207[5-9].* 1\.65209[0-9]* \* Temp' "$work/out" || { cat "$work/out"; fail "$2: gaps"; }
  echo "ok: $2, a table with gaps"
}

with_find_package() {  # PREFIX STATIC
  cmake -S "$source/examples/embed" -B "$1-build" -G Ninja --log-level=NOTICE -DCMAKE_PREFIX_PATH="$1" -DEMBED_STATIC="$2"
  cmake --build "$1-build" >"$work/log" || { cat "$work/log"; fail "find_package, static $2"; }
  check_figure "$1-build/embed" "find_package, static $2"
  check_regression "$1-build" "find_package, static $2"
  check_gaps "$1-build" "find_package, static $2"
}

with_pkg_config() {  # PREFIX FLAG...
  local prefix=$1 flags
  shift
  flags=$(PKG_CONFIG_PATH="$prefix/$libdir/pkgconfig" pkg-config "$@" --cflags --libs studystats_host)
  # shellcheck disable=SC2086
  $CXX -std=c++20 $CXXFLAGS "$source/examples/embed/main.cpp" -o "$prefix-embed" $flags -Wl,-rpath,"$prefix/$libdir"
  check_figure "$prefix-embed" "pkg-config $*"
}

cmake --install "$build" --prefix "$work/first" >"$work/log"
mv "$work/first" "$work/shared"
cp -a "$work/shared" "$work/static"
rm "$work/shared/$libdir"/*.a "$work/static/$libdir"/*.so*

"$work/shared/bin/studystats" --version | grep -q '[0-9]\.[0-9]' || fail "the installed command does not run"
[ -s "$work/shared/share/man/man1/studystats.1" ] || fail "no manual page"
for header in "$work"/shared/include/studystats/*.h; do
  echo "#include <studystats/${header##*/}>" | $CXX -std=c++20 -fsyntax-only -x c++ -I"$work/shared/include" -Wall -Werror - ||
    fail "$header does not stand alone"
done
echo '#include <studystats/analyses.h>' | $CC -std=c99 -pedantic-errors -fsyntax-only -x c -I"$work/shared/include" - ||
  fail "analyses.h is not C"
echo "ok: headers"

with_find_package "$work/shared" OFF
with_find_package "$work/static" ON
with_pkg_config "$work/shared"
with_pkg_config "$work/static" --static
