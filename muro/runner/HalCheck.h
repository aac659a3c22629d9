// Whether a HAL library has all functions that this program calls.
#pragma once

#include <string>

namespace runner {

/// The symbols that this program needs of the HAL, sorted, with a null pointer at the end. Written
/// by the build from what the program's objects leave undefined.
extern const char* const kNeededHalSymbols[];

/// True when the HAL library that this program was loaded with has all of them. Otherwise prints
/// the missing functions on standard error.
bool HalIsComplete();

/// Checks `library`, a path or a name that the loader finds, or the library in use when it is
/// empty. Prints the result and every missing function on standard output. Loading a library runs
/// its initialisation. Returns an `ExitStatus`: all passed, some failed (also when the library
/// cannot be loaded), or usage when there is no such file.
int CheckHal(const std::string& library);

}  // namespace runner
