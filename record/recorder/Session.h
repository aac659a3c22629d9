// The recording that this process takes part in.
#pragma once

#include "interface/Codec.h"
#include "recorder/Stream.h"

namespace record {

/// Per-thread state. Calls that the HAL itself makes while it serves a call are not recorded; calls
/// made by a handler are.
struct ThreadState {
  Stream* stream = nullptr;
  bool isInHal = false;
};

extern constinit thread_local ThreadState threadState __attribute__((tls_model("initial-exec")));

/// True while this process records. An error, such as a full disk, ends the recording for good.
bool IsRecording();

/// The source of the numbers and digests in this recording.
CodecContext& Context();

/// This thread's stream.
Stream& ThreadStream();

/// Ends the recording with one line on standard error.
void StopRecording(int error);

/// Writes one event of this thread unless the recording has ended.
template <typename Encode>
void WriteEvent(uint16_t event, Encode encode) {
  if (!IsRecording()) return;
  Stream& stream = threadState.stream != nullptr ? *threadState.stream : ThreadStream();
  if (const int error = stream.Write(event, MonotonicNs(), encode)) StopRecording(error);
}

/// Records a call: its arguments, `make()`, and its results. `isCallback`: the HAL calls a handler.
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
