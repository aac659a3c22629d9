// A stub HAL with all functions, which return 0 and write nothing. The call with the number
// STUB_FAIL returns -1, the first call takes STUB_MS milliseconds. K2V_RHAL_VSC_DM_Open calls the
// thermal handler on a separate thread.
#include <atomic>
#include <chrono>
#include <cstdlib>
#include <string_view>
#include <thread>

#include "HalInterface.h"

namespace {

template <typename Result>
Result Answer() {
  static std::atomic<int> calls{0};
  static const char* const fails = std::getenv("STUB_FAIL");
  static const char* const takes = std::getenv("STUB_MS");
  if (takes != nullptr && calls == 0) {
    std::this_thread::sleep_for(std::chrono::milliseconds(std::atoi(takes)));
  }
  static const int failing = fails == nullptr ? -1 : std::atoi(fails);
  if constexpr (std::is_pointer_v<Result>) {
    return nullptr;
  } else {
    return static_cast<Result>(calls++ == failing ? -1 : 0);
  }
}

K2V_THERMAL_CALLBACK handler = nullptr;

struct Serve {
  const char* function;

  void operator()() const {
    if (handler == nullptr || std::string_view(function) != "K2V_RHAL_VSC_DM_Open") return;
    std::thread([] { handler(50); }).join();
  }
  void operator()(K2V_THERMAL_CALLBACK callback) const { handler = callback; }
  template <typename... Arguments>
  void operator()(Arguments...) const {}
};

}  // namespace

#pragma GCC diagnostic ignored "-Wunused-parameter"
// NOLINTBEGIN(bugprone-macro-parentheses): the arguments have their own
#define CVN_FUNCTION(result, name, parameters, call, arguments) \
  extern "C" result name parameters {                           \
    Serve{#name} arguments;                                     \
    return Answer<result>();                                    \
  }
#define CVN_METHOD(result, name, parameters, call, arguments)
#define CVN_CALLBACK(result, name, parameters, call, arguments)
#define CVN_LINK_FUNCTION(result, name, parameters, call, arguments)
// NOLINTEND(bugprone-macro-parentheses)
#include "HalCalls.inc"

RLink* RLink::Create() {
  return nullptr;
}
