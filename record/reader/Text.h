// Calls as text, as the simulated board's trace shows them.
#pragma once

#include <string>

#include "reader/Value.h"

namespace record {

/// A value: a number, {field=value, …} or what the record's template says. Long buffers are shown
/// by their number of bytes and CRC-32.
std::string ValueText(const Value& value);

/// A value with all its fields, for comparisons of two recordings: without what is another one in
/// every run, and of secrets their length.
std::string ComparedText(const Value& value);

/// An argument, as it came back where the call wrote it. `back`: null when it did not return.
std::string ArgumentText(const Argument& argument, const ArgumentValue& entered,
                         const ArgumentValue* back, bool succeeded);

std::string ResultText(const Function& function, const ArgumentValue& result);

/// True when what the call had to write counts.
bool HasSucceeded(const Function& function, const ArgumentValue& result);

/// NAME(arguments) = result; without `back` NAME(arguments).
std::string CallText(const Function& function, const CallValues& entered, const CallValues* back);

}  // namespace record
