// What all HAL functions have in common. A new function is one line:
//
//   int K2V_RHAL_VSC_Open(__K2V_VIDEO_WID_T wid) { return Call(__func__, OpenWindow, wid); }
//
// where OpenWindow(Board&, __K2V_VIDEO_WID_T) simulates the function.
#pragma once

#include <type_traits>

#include "RecordTexts.h"
#include "core/Failures.h"
#include "core/Misbehaviours.h"
#include "core/SharedBoard.h"
#include "core/Trace.h"

namespace sim {

/// The result of a call that was programmed to return `code`; null for a pointer.
template <typename Result>
Result ProgrammedResult(int32_t code) {
  if constexpr (std::is_pointer_v<Result>) {
    return nullptr;
  } else {
    return static_cast<Result>(code);
  }
}

/// Serves one HAL call: returns a programmed failure or calls `simulate(board, arguments…)`, and
/// writes the call with its decoded arguments and its result to the trace.
template <typename Simulate, typename... Arguments>
auto Call(const char* function, Simulate simulate, Arguments... arguments) {
  MisbehaveIfProgrammed(function);  // without the lock: a call that hangs blocks nobody else
  BoardLock board;
  using Result = std::invoke_result_t<Simulate, Board&, Arguments...>;
  const auto programmed = TakeFailure(*board, function);
  const Result result =
      programmed ? ProgrammedResult<Result>(*programmed) : simulate(*board, arguments...);
  Note(FormatCall(function, result, arguments...));
  return result;
}

/// Like Call, for long operations: `work(arguments…)` locks the board itself when it needs it.
template <typename Work, typename... Arguments>
auto CallAtLength(const char* function, Work work, Arguments... arguments) {
  MisbehaveIfProgrammed(function);
  const auto programmed = TakeFailure(*BoardLock(), function);
  using Result = std::invoke_result_t<Work, Arguments...>;
  const Result result = programmed ? ProgrammedResult<Result>(*programmed) : work(arguments...);
  const BoardLock board;
  Note(FormatCall(function, result, arguments...));
  return result;
}

}  // namespace sim
