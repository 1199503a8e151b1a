// What a call raised as a host sees it: the HRESULT and the sentence.
#pragma once

#include <studystats/host_framework.h>

#include <cstdio>
#include <string>

namespace studystats::test {

template <class Call>
std::string refusal(Call call) {
  try {
    call();
  } catch (const Dvo::DvoResult& error) {
    char code[16];
    std::snprintf(code, sizeof code, "%08X ", error.Code());
    return std::string(code).append(error.what());
  }
  return "nothing raised";
}

inline std::string invalid(const std::string& operation) { return "80070057 Invalid argument to " + operation; }

}  // namespace studystats::test
