// Calls put together from their entries and returns, with the test that they belong to.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "reader/Recording.h"

namespace record {

/// A test of the harness, by its marks.
struct TestMark {
  uint32_t number = 0;
  std::string name;
  uint64_t beginNs = 0;
};

/// One call. The payloads last for as long as the callback that got it.
struct Call {
  const Function* function;
  unsigned index;  // of the function
  size_t stream;
  uint64_t ordinal;  // of this call in its stream, from 0
  uint64_t beginNs;
  uint64_t endNs;  // 0: it did not return
  Bytes entry;
  Bytes back;
  const TestMark* test;  // null outside of tests
  bool isNested;         // made by a handler, or itself a handler inside a call
};

/// Who wants the calls of a recording. An empty function hears nothing.
struct CallListener {
  std::function<void(const Call&)> call{};  // when it returned, or at the end when it did not
  std::function<void(size_t stream, const Event&, const MarkText&)> mark{};
};

/// Reads a recording from one end to the other.
void ReadCalls(Recording& recording, const CallListener& listener);

}  // namespace record
