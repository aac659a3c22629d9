// The coloured tag at the beginning of the cross-module test's console lines.
#pragma once

#include <ostream>
#include <string>
#include <string_view>

/// Writes the tag of a message of `function` to standard output and returns the stream for the rest
/// of the message.
std::ostream& CmLog(const char* function);

/// The same on another stream.
std::ostream& CmLog(const char* function, std::ostream& out);

/// A dump's text for the console and for reports: bytes that are not printable ASCII characters are
/// written as "\\xNN", so that they never reach a terminal.
std::string Printable(std::string_view text);
