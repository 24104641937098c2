// What every fuzz target has: its entry points, and a check that holds in every build.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string_view>

extern "C" int LLVMFuzzerInitialize(int* argumentCount, char*** arguments);
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

namespace tidemark {

// A finding: says what is wrong with the text and stops.
inline void check(bool holds, const char* claim, std::string_view evidence = {}) {
  if (holds) return;
  std::fprintf(stderr, "does not hold: %s\n", claim);
  std::fwrite(evidence.data(), 1, evidence.size(), stderr);
  std::abort();
}

inline std::string_view asText(const std::uint8_t* data, std::size_t size) {
  return {reinterpret_cast<const char*>(data), size};
}

}  // namespace tidemark
