// Wrappers around the HAL's functions. All of them are generated, one line each; this file has what
// they share.
#include <dlfcn.h>

#include <array>
#include <atomic>
#include <cstdio>
#include <cstdlib>

#include "HalInterface.h"
#include "recorder/Session.h"

namespace record {
namespace {

// A board's library may lack functions that the harness does not call.
void* NextSymbol(const char* name) {
  void* const found = dlsym(RTLD_NEXT, name);
  if (found != nullptr) return found;
  std::fprintf(stderr, "cvnrecord: the HAL has no %s\n", name);
  std::abort();
}

template <typename Call>
typename Call::Function Next() {
  static const auto next = reinterpret_cast<typename Call::Function>(NextSymbol(Call::kSymbol));
  return next;
}

// Handlers have no argument that identifies them, so each one gets its own function.
template <typename Call>
class Trampolines {
 public:
  using Function = typename Call::Function;

  /// The function passed to the HAL in place of `function`; `function` itself if all are in use.
  static Function For(Function function) {
    if (function == nullptr || !IsRecording()) return function;
    for (size_t i = 0; i < kCount; ++i) {
      Function taken = nullptr;
      if (targets[i].compare_exchange_strong(taken, function) || taken == function) return kAll[i];
    }
    return function;
  }

 private:
  static constexpr size_t kCount = 32;

  template <typename>
  struct Maker;
  template <typename... Arguments>
  struct Maker<void (*)(Arguments...)> {
    template <size_t index>
    static void Trampoline(Arguments... arguments) {
      const Function target = targets[index].load();
      const uint32_t handler = Context().functions.Of(reinterpret_cast<void*>(target));
      Call call{handler, arguments...};
      RecordCall(call, true, [&] { call.Make(target); });
    }
    template <size_t... indices>
    static constexpr std::array<Function, kCount> All(std::index_sequence<indices...>) {
      return {Trampoline<indices>...};
    }
  };

  static inline std::atomic<Function> targets[kCount];
  static constexpr std::array<Function, kCount> kAll =
      Maker<Function>::All(std::make_index_sequence<kCount>());
};

// What a call passes on: handlers are replaced, everything else is unchanged.
template <typename T>
T Passed(T argument) {
  return argument;
}
#define CVN_FUNCTION(result, name, parameters, call, arguments)
#define CVN_METHOD(result, name, parameters, call, arguments)
#define CVN_LINK_FUNCTION(result, name, parameters, call, arguments)
#define CVN_CALLBACK(result, name, parameters, call, arguments) \
  name Passed(name handler) {                                   \
    return Trampolines<call>::For(handler);                     \
  }
#include "HalCalls.inc"
#undef CVN_FUNCTION
#undef CVN_METHOD
#undef CVN_LINK_FUNCTION
#undef CVN_CALLBACK

template <typename Call, typename... Arguments>
auto Forward(Arguments... arguments) {
  Call call{arguments...};
  RecordCall(call, false, [&] { call.result = Next<Call>()(Passed(arguments)...); });
  return call.result;
}

template <typename Call, typename Method>
class ForwardMethod {
 public:
  ForwardMethod(RLink* shown, RLink* link, Method method)
      : shown_(shown), link_(link), method_(method) {}

  template <typename... Arguments>
  auto operator()(Arguments... arguments) const {
    Call call{shown_, arguments...};
    RecordCall(call, false, [&] { call.result = (link_->*method_)(Passed(arguments)...); });
    return call.result;
  }

 private:
  RLink* shown_;
  RLink* link_;
  Method method_;
};
template <typename Call, typename Method>
ForwardMethod<Call, Method> Through(RLink* shown, RLink* link, Method method) {
  return {shown, link, method};
}

/// A link that wraps the HAL's own.
class RecordingLink : public RLink {
 public:
  explicit RecordingLink(RLink* link) : link_(link) {}
  ~RecordingLink() override;

// NOLINTBEGIN(bugprone-macro-parentheses): the arguments have their own
#define CVN_FUNCTION(result, name, parameters, call, arguments)
#define CVN_CALLBACK(result, name, parameters, call, arguments)
#define CVN_LINK_FUNCTION(result, name, parameters, call, arguments)
#define CVN_METHOD(result, name, parameters, call, arguments)  \
  result name parameters override {                            \
    return Through<call>(this, link_, &RLink::name) arguments; \
  }
// NOLINTEND(bugprone-macro-parentheses)
#include "HalCalls.inc"
#undef CVN_FUNCTION
#undef CVN_METHOD
#undef CVN_LINK_FUNCTION
#undef CVN_CALLBACK

 private:
  RLink* link_;
};

// The destructor of the HAL's link waits until the slave has finished.
RecordingLink::~RecordingLink() {
  Call_RLink_Delete call{this};
  RecordCall(call, false, [this] { delete link_; });
}

}  // namespace
}  // namespace record

using namespace record;

// NOLINTBEGIN(bugprone-macro-parentheses): the arguments have their own
#define CVN_FUNCTION(result, name, parameters, call, arguments) \
  extern "C" result name parameters {                           \
    return Forward<call> arguments;                             \
  }
#define CVN_METHOD(result, name, parameters, call, arguments)
#define CVN_CALLBACK(result, name, parameters, call, arguments)
#define CVN_LINK_FUNCTION(result, name, parameters, call, arguments)
// NOLINTEND(bugprone-macro-parentheses)
#include "HalCalls.inc"

RLink* RLink::Create() {
  Call_RLink_Create call;
  RecordCall(call, false, [&] {
    RLink* const link = Next<Call_RLink_Create>()();
    call.result = link == nullptr || !IsRecording() ? link : new RecordingLink(link);
  });
  return call.result;
}
