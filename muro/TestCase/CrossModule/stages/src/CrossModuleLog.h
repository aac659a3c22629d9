// The coloured tag that the cross-module test's console lines begin with.
#pragma once

#include <ostream>

/// Writes the tag of a message of `function` to standard output and returns the stream for the
/// rest.
std::ostream& CmLog(const char* function);

/// The same on another stream.
std::ostream& CmLog(const char* function, std::ostream& out);
