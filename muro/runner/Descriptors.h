// Which open files belong to whom: those of the runner are no business of a test.
#pragma once

#include <initializer_list>

namespace runner {

/// Puts /dev/null in the place of standard streams that are closed, so that no file opened later
/// gets what is meant for the console. To be called before libraries are initialised, so it uses
/// nothing of them but system calls.
void OpenStandardStreams();

/// What is open now was opened by the HAL and its libraries, and tests inherit it. What is opened
/// later is the runner's.
void NoteForeignDescriptors();

/// In a process for a test: closes what the runner opened, but for `kept` and the standard streams.
/// Closes nothing where `NoteForeignDescriptors` was not called.
void CloseDescriptorsOfRunner(std::initializer_list<int> kept);

}  // namespace runner
