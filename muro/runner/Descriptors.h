// Ownership of open files: tests must not inherit those of the runner.
#pragma once

#include <initializer_list>

namespace runner {

/// Opens /dev/null for standard streams that are closed, so that no file opened later receives
/// output meant for the console. To be called before libraries are initialised, so it uses system
/// calls only.
void OpenStandardStreams();

/// Notes the descriptors that are open now: the HAL and its libraries opened them, and tests
/// inherit them. Those opened later belong to the runner.
void NoteForeignDescriptors();

/// In a process for a test: closes the runner's files except `kept` and the standard streams.
/// Closes nothing if `NoteForeignDescriptors` was not called.
void CloseDescriptorsOfRunner(std::initializer_list<int> kept);

}  // namespace runner
