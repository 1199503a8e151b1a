// Which library this is, and how it was built.
#include <studystats/host/output.h>

#include <fmt/format.h>

namespace studystats {

const int hostInterfaceRevision1 = 1;

namespace {

#if defined(__clang__)
constexpr const char* kCompiler = "clang " __clang_version__;
#else
constexpr const char* kCompiler = "g++ " __VERSION__;
#endif

// The version of the library's kernels that the loader took on this machine.
std::string kernels() {
#if defined(__x86_64__) && defined(__GNUC__) && !defined(__clang__) && !defined(STUDYSTATS_ONE_VERSION)
  __builtin_cpu_init();
  const char* here = __builtin_cpu_supports("x86-64-v4")   ? "x86-64-v4"
                     : __builtin_cpu_supports("x86-64-v3") ? "x86-64-v3"
                                                           : "baseline";
  return fmt::format("kernels for x86-64-v4, x86-64-v3 and baseline (here: {})", here);
#else
  return "one version of each kernel";
#endif
}

}  // namespace

std::string version() { return STUDYSTATS_VERSION; }

std::string buildInfo() {
  const std::string type = STUDYSTATS_BUILD_TYPE;
  return fmt::format("{}, {}, {}", kCompiler, type.empty() ? "no build type" : type, kernels());
}

}  // namespace studystats
