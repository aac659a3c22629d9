// The recording that this process takes part in.
#pragma once

#include "interface/Codec.h"
#include "recorder/Stream.h"

namespace record {

/// What depends on the thread. A call that the HAL makes of its own, while it serves one, is not
/// recorded; a call of a handler is.
struct ThreadState {
  Stream* stream = nullptr;
  bool isInHal = false;
};

extern constinit thread_local ThreadState threadState __attribute__((tls_model("initial-exec")));

/// True while this process records. It stops for good when there is no room.
bool IsRecording();

/// What the numbers and digests of this recording come from.
CodecContext& Context();

/// This thread's stream.
Stream& ThreadStream();

/// Ends the recording with one line on standard error.
void StopRecording(int error);

/// Writes one event of this thread, while the recording goes on.
template <typename Encode>
void WriteEvent(uint16_t event, Encode encode) {
  if (!IsRecording()) return;
  Stream& stream = threadState.stream != nullptr ? *threadState.stream : ThreadStream();
  if (const int error = stream.Write(event, MonotonicNs(), encode)) StopRecording(error);
}

/// Records a call: its arguments, `make()`, and what came back. `isCallback`: of the HAL to us.
template <typename Call, typename Make>
void RecordCall(Call& call, bool isCallback, Make make) {
  if (!IsRecording() || (threadState.isInHal && !isCallback)) {
    make();
    return;
  }
  const auto encode = [&call, isCallback](uint8_t* memory, size_t room) {
    Encoder<false> encoder(Context(), memory, room);
    encoder.keepsAddresses = isCallback;
    call.Entry(encoder);
    return encoder.Size();
  };
  WriteEvent(EntryEvent(Call::kIndex), encode);
  const bool wasInHal = std::exchange(threadState.isInHal, !isCallback);
  make();
  threadState.isInHal = wasInHal;
  if constexpr (Call::kMakesObject) Context().objects.Enter(call.result);
  WriteEvent(ReturnEvent(Call::kIndex), [&call](uint8_t* memory, size_t room) {
    Encoder<true> encoder(Context(), memory, room);
    call.Return(encoder);
    return encoder.Size();
  });
}

}  // namespace record
