// What fails in the C library while a test runs, and the register file's answers.
#pragma once

#include <cstdint>
#include <functional>
#include <string>

namespace faults {

/// The n-th fork or start of a thread from now, counted from 1, fails with that error number.
void FailFork(int nth, int error);
void FailThread(int nth, int error);

/// What `popen` lets the program read from now on; an empty answer is a shell that cannot start.
void AnswerShell(std::function<std::string()> answer);

/// The time of day, in microseconds, that the program sees. Negative (the start): the real one.
void SetTimeUs(int64_t us);

}  // namespace faults
