// Shared by the tests of the link, device and thermal tests.
#pragma once

#include <string>

#include "Scripted.h"

namespace test {

inline scripted::Run PlayTest(int (*function)(char*)) {
  return scripted::Play("", [function] { return function(nullptr); });
}

/// Number of occurrences of `part` in `text`.
inline int Count(const std::string& text, const std::string& part) {
  int count = 0;
  for (auto at = text.find(part); at != std::string::npos; at = text.find(part, at + 1)) ++count;
  return count;
}

}  // namespace test
