# What the scripts of this folder share; sourced, not run. Leaves the shell at the top of the checkout.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."
export DEBIAN_FRONTEND=noninteractive

# Debian's names of what the command and the libraries are built with, and what the tests need besides. Report pages take
# npm, and chromium for their tests.
BUILD_PACKAGES=(cmake g++ ninja-build libboost-math-dev libcli11-dev libcsv-dev libfmt-dev nlohmann-json3-dev)
TEST_PACKAGES=(libgtest-dev pkg-config)

say() { printf '== %s\n' "$*"; }
die() { printf '%s: %s\n' "$0" "$*" >&2; exit 1; }

installed() { [ "$(dpkg-query -W -f='${db:Status-Status}' "$1" 2>/dev/null)" = installed ]; }

# need PACKAGE...: installs those that are missing; asks the network for nothing when none is.
need() {
  if ! command -v dpkg-query >/dev/null; then
    say "This is no Debian: taking for granted what it calls $*"
    return
  fi
  local package missing=() root=()
  for package in "$@"; do installed "$package" || missing+=("$package"); done
  if [ ${#missing[@]} -eq 0 ]; then return; fi
  if [ "$(id -u)" -ne 0 ]; then
    command -v sudo >/dev/null || die "missing ${missing[*]}; install them as root (there is no sudo here)"
    root=(sudo)
  fi
  say "Installing with apt: ${missing[*]}"
  "${root[@]}" apt-get update -qq
  "${root[@]}" env DEBIAN_FRONTEND=noninteractive apt-get install -y -qq --no-install-recommends "${missing[@]}" \
    >build-apt.log 2>&1 || { tail -n 20 build-apt.log >&2; die "apt could not install them"; }
  rm -f build-apt.log
}

# want_command NAME...: the same for commands whose packages have their name, wherever they came from. Without them report
# pages, or their tests, are left out, which the build says.
want_command() {
  local name
  for name in "$@"; do
    command -v "$name" >/dev/null || (need "$name") || say "Going on without $name"
  done
}

# configure PRESET [OPTION...]
configure() {
  local preset=$1 launcher=()
  shift
  if command -v ccache >/dev/null; then launcher=(-DCMAKE_CXX_COMPILER_LAUNCHER=ccache); fi
  say "Configuring ($preset)"
  cmake --log-level=NOTICE --preset "$preset" "${launcher[@]}" "$@"
}

# build PRESET [TARGET]
build() {
  say "Building ($1)"
  cmake --build --preset "$1" ${2:+--target "$2"}
}

# run_tests PRESET: all tests of a built tree; what the runner said stays in build/tests-PRESET.log.
run_tests() {
  say "Testing ($1)"
  mkdir -p build
  ctest --preset "$1" -j "$(nproc)" --no-tests=error 2>&1 | tee "build/tests-$1.log"
}

# Sources must look as .clang-format says. Another version of the formatter has other ideas, so only that one is asked.
check_format() {
  local formatter
  formatter=$(command -v clang-format-14 || command -v clang-format || true)
  if [ -z "$formatter" ] || ! "$formatter" --version | grep -q 'version 14\.'; then
    say "Format not checked: clang-format 14 is not installed"
    return
  fi
  say "Checking the format"
  git ls-files -z -co --exclude-standard -- '*.cpp' '*.h' '*.c' | xargs -0 "$formatter" --dry-run -Werror
}
