// Tables of tests whose records are numbered consecutively.
#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <iterator>

#include "Case.h"

/// Gives each record its position as id, and `prefix` with the position as name.
template <std::size_t count>
consteval std::array<ST_THAL_TEST_CASE_T, count> NumberedRecords(
    const char* prefix, const ST_THAL_TEST_CASE_T (&records)[count]) {
  std::array<ST_THAL_TEST_CASE_T, count> numbered{};
  for (std::size_t i = 0; i < count; ++i) {
    numbered[i] = records[i];
    numbered[i].id = static_cast<int>(i);
    char* name = std::begin(numbered[i].name);
    for (const char* p = prefix; *p != '\0'; ++p) *name++ = *p;
    char digits[20] = {};
    std::size_t length = 0;
    for (std::size_t rest = i; length == 0 || rest != 0; rest /= 10) {
      digits[length++] = static_cast<char>('0' + rest % 10);
    }
    std::reverse_copy(digits, digits + length, name);
  }
  return numbered;
}
