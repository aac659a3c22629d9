// The stages by name, for the programs of this benchmark.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>

struct BenchStage {
  std::string_view name;
  std::size_t columnCount;
  std::uint32_t hexadecimal;  // bit n: column n is hexadecimal
  std::uint32_t ignored;      // bit n: column n differs in every run
  const char* separators;
};

inline constexpr BenchStage kBenchStages[] = {
    {"OMXIN", 5, 0, 1U << 1, ", "},
    {"OMXOUT", 7, 0, 1U << 1, ", "},
    {"VDEC", 24, 1U << 3, 1U << 6, ","},
    {"DVO", 5, 0, 0, ", "},
    {"VO", 27, 1U << 2 | 1U << 8 | 1U << 10 | 1U << 26, 1U << 2, ","},
    {"Scaler", 22, 1U << 1 | 0x7FFF0U, 1U << 1, ","},
    {"Audio", 7, 0, 1U << 1, ","},
};

/// The stage with this name, or null.
inline const BenchStage* FindStage(std::string_view name) {
  for (const BenchStage& stage : kBenchStages) {
    if (stage.name == name) return &stage;
  }
  return nullptr;
}

inline bool HasBit(std::uint32_t bits, std::size_t n) {
  return (bits >> n & 1U) != 0;
}
