// Injected failures of the C library, and answers of the register file.
#pragma once

#include <cstdint>
#include <functional>
#include <string>

namespace faults {

/// Makes the n-th fork or thread start from now on, counted from 1, fail with this error number.
void FailFork(int nth, int error);
void FailThread(int nth, int error);

/// The text that the program reads from `popen` from now on; empty means that no shell can be
/// started.
void AnswerShell(std::function<std::string()> answer);

/// The time of day, in microseconds, that the program sees. Negative (initially) for the real time.
void SetTimeUs(int64_t us);

}  // namespace faults
