// What the calls of the analyses share: outputs compared by their bits, nasty cases, and a host that stops.
#pragma once

#include <studystats/frame.h>

#include <cmath>
#include <cstdint>
#include <functional>
#include <random>
#include <string>
#include <type_traits>
#include <vector>

namespace studystats {

template <class Number>
bool sameBits(const std::vector<Number>& a, const std::vector<Number>& b) {
  bool same = a.size() == b.size();
  for (std::size_t i = 0; same && i < a.size(); ++i)
    same = (a[i] == b[i] && std::signbit(a[i]) == std::signbit(b[i])) || (std::isnan(a[i]) && std::isnan(b[i]));
  return same;
}

// The names of those outputs that differ.
class Differences {
 public:
  template <class Number>
  Differences& compare(const char* name, const std::vector<Number>& a, const std::vector<Number>& b) {
    if (!sameBits(a, b)) names_ += std::string(name) + ' ';
    return *this;
  }
  const std::string& names() const { return names_; }

 private:
  std::string names_;
};

// A call made from a seed to break something.
template <class Call>
struct NastyCase {
  Call call;
  std::int32_t seed;
  std::int32_t stopAt;  // report that the host answers with a stop; 0: none
};

// One of some values, each as likely as it stands there often.
class Pick {
 public:
  explicit Pick(std::mt19937_64& random) : random_(random) {}
  template <class... Choices>
  auto operator()(Choices... choices) const {
    const std::common_type_t<Choices...> list[] = {choices...};
    return list[random_() % sizeof...(choices)];
  }

 private:
  std::mt19937_64& random_;
};

// Answers its k-th report with a stop; 0: never. What it does besides at each report is `meanwhile`.
class StoppingHost {
 public:
  explicit StoppingHost(std::int32_t stopAt) : stopAt_(stopAt) {
    monitor.monitor = &host_;
    host_.AddRef();
  }
  ISBProgressMonitor* window() { return &host_; }
  ProgressMonitor monitor;
  std::vector<std::int32_t> percentages;  // of the reports, one after the other
  std::function<void(std::size_t report)> meanwhile;

 private:
  struct Host final : ISBProgressMonitor {
    explicit Host(StoppingHost* owner) : owner_(owner) {}
    HRESULT QueryInterface(const GUID&, void**) override { return 0; }
    std::uint32_t AddRef() override { return 1; }
    std::uint32_t Release() override { return 1; }
    HRESULT HostMethod4() override { return 0; }
    HRESULT HostMethod5() override { return 0; }
    HRESULT HostMethod6() override { return 0; }
    HRESULT HostMethod7() override { return 0; }
    HRESULT ReportProgress(std::int32_t percent, std::int32_t, VARIANT, VARIANT_BOOL* answer) override {
      owner_->percentages.push_back(percent);
      const auto report = static_cast<std::int32_t>(owner_->percentages.size());
      if (owner_->meanwhile) owner_->meanwhile(owner_->percentages.size());
      *answer = report == owner_->stopAt_ ? VARIANT_BOOL{0} : VARIANT_TRUE;
      return 0;
    }
    StoppingHost* owner_;
  };
  std::int32_t stopAt_;
  Host host_{this};
};

}  // namespace studystats
