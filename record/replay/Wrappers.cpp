// The HAL's functions, answered from a recording. All of them are generated, one line each.
#include <cstdint>

#include "HalInterface.h"
#include "replay/Handlers.h"
#include "replay/Session.h"

namespace record {
namespace {

template <bool isReturn, typename Call>
std::vector<uint8_t> Encoded(Call& call, uint32_t handler = 0) {
  CodecContext& context = ReplaySession::Get().Context();
  std::vector<uint8_t> bytes(256);
  for (;;) {
    Encoder<isReturn> encoder(context, bytes.data(), bytes.size());
    encoder.handlerNumber = handler;
    if constexpr (isReturn) {
      call.Return(encoder);
    } else {
      call.Entry(encoder);
    }
    const bool fits = encoder.Fits();
    bytes.resize(encoder.Size());
    if (fits) return bytes;
  }
}

template <typename Result>
void SetDiverged(Result& result) {
  if constexpr (std::is_pointer_v<Result>) {
    result = nullptr;
  } else {
    result = static_cast<Result>(kDiverged);
  }
}

template <typename Call>
bool Answer(Call& call) {
  ReplaySession& session = ReplaySession::Get();
  const std::vector<uint8_t> entry = Encoded<false>(call, session.NextHandler(Call::kIndex));
  const StoredEvent* const back = session.Answer(Call::kIndex, entry);
  if (back == nullptr) return false;
  ReturnDecoder decoder(session.Context(), session.Secrets(), back->payload, session.HalMemory());
  call.Return(decoder);
  return true;
}

template <typename Call, typename... Arguments>
auto Answered(Arguments... arguments) {
  Call call{arguments...};
  if (!Answer(call)) SetDiverged(call.result);
  return call.result;
}

template <typename Call>
class AnsweredMethod {
 public:
  explicit AnsweredMethod(RLink* link) : link_(link) {}

  template <typename... Arguments>
  auto operator()(Arguments... arguments) const {
    return Answered<Call>(link_, arguments...);
  }

 private:
  RLink* link_;
};

class ReplayLink : public RLink {
 public:
  ~ReplayLink() override {
    Call_RLink_Delete call{this};
    Answer(call);
  }

// NOLINTBEGIN(bugprone-macro-parentheses): the arguments have their own
#define CVN_FUNCTION(result, name, parameters, call, arguments)
#define CVN_CALLBACK(result, name, parameters, call, arguments)
#define CVN_LINK_FUNCTION(result, name, parameters, call, arguments)
#define CVN_METHOD(result, name, parameters, call, arguments) \
  result name parameters override {                           \
    return AnsweredMethod<call>(this) arguments;              \
  }
// NOLINTEND(bugprone-macro-parentheses)
#include "HalCalls.inc"
#undef CVN_FUNCTION
#undef CVN_METHOD
#undef CVN_LINK_FUNCTION
#undef CVN_CALLBACK
};

template <typename Call>
void CallHandler(ReplaySession& session, Bytes entry) {
  Arena arena;
  Call call;
  EntryDecoder decoder(session.Context(), entry, arena);
  call.Entry(decoder);
  const auto handler =
      reinterpret_cast<typename Call::Function>(session.Context().functions.Find(call.handler));
  if (handler != nullptr) call.Make(handler);
  session.CheckHandler(Call::kIndex, Encoded<true>(call));
}

__attribute__((constructor)) void Begin() {
  ReplaySession::Get();
}

__attribute__((destructor)) void End() {
  ReplaySession::Get().End();
}

}  // namespace

RLink* NewReplayLink() {
  return new ReplayLink;
}

void CallRecordedHandler(ReplaySession& session, uint16_t call, Bytes entry) {
#define CVN_FUNCTION(result, name, parameters, Call, arguments)
#define CVN_METHOD(result, name, parameters, Call, arguments)
#define CVN_LINK_FUNCTION(result, name, parameters, Call, arguments)
#define CVN_CALLBACK(result, name, parameters, Call, arguments) \
  if (call == Call::kIndex) CallHandler<Call>(session, entry);
#include "HalCalls.inc"
#undef CVN_FUNCTION
#undef CVN_METHOD
#undef CVN_LINK_FUNCTION
#undef CVN_CALLBACK
}

}  // namespace record

using namespace record;

// NOLINTBEGIN(bugprone-macro-parentheses): the arguments have their own
#define CVN_FUNCTION(result, name, parameters, call, arguments) \
  extern "C" result name parameters {                           \
    return Answered<call> arguments;                            \
  }
#define CVN_METHOD(result, name, parameters, call, arguments)
#define CVN_CALLBACK(result, name, parameters, call, arguments)
#define CVN_LINK_FUNCTION(result, name, parameters, call, arguments)
// NOLINTEND(bugprone-macro-parentheses)
#include "HalCalls.inc"

RLink* RLink::Create() {
  return Answered<Call_RLink_Create>();
}

extern "C" {

void cvn_mark_test_begins(uint32_t number, const char* name) {
  ReplaySession::Get().BeginTest(number, name);
}

void cvn_mark_test_ends(uint32_t, const char*, const char* verdict) {
  ReplaySession::Get().EndTest(verdict);
}

}  // extern "C"
