// Assembles calls from their entries and returns, with the test that they belong to.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "reader/Recording.h"

namespace record {

/// A test of the harness, from its marks.
struct TestMark {
  uint32_t number = 0;
  std::string name;
  uint64_t beginNs = 0;
};

/// One call. The payloads are valid only during the callback that receives it.
struct Call {
  const Function* function;
  unsigned index;  // of the function
  size_t stream;
  uint64_t ordinal;  // of this call in its stream, from 0
  uint64_t beginNs;
  uint64_t endNs;  // 0: the call did not return
  Bytes entry;
  Bytes back;
  const TestMark* test;  // null outside tests
  bool isNested;         // made by a handler, or a handler that was called during a call
};

/// Receives the calls of a recording. Empty functions are not called.
struct CallListener {
  std::function<void(const Call&)> call{};  // when it returned, or at the end if it did not
  std::function<void(size_t stream, const Event&, const MarkText&)> mark{};
};

/// Reads a recording from beginning to end.
void ReadCalls(Recording& recording, const CallListener& listener);

}  // namespace record
