// Calls as text, as the simulated board's trace shows them.
#pragma once

#include <string>

#include "reader/Value.h"

namespace record {

/// A value: a number, {field=value, …} or the text of the record's template. Long buffers are shown
/// as their number of bytes and CRC-32.
std::string ValueText(const Value& value);

/// A value with all its fields, for comparing two recordings: without fields that differ in every
/// run, and with only the length of secrets.
std::string ComparedText(const Value& value);

/// An argument, with its returned value if the call wrote it. `back`: null if it did not return.
std::string ArgumentText(const Argument& argument, const ArgumentValue& entered,
                         const ArgumentValue* back, bool succeeded);

std::string ResultText(const Function& function, const ArgumentValue& result);

/// True if the outputs of the call are valid.
bool HasSucceeded(const Function& function, const ArgumentValue& result);

/// NAME(arguments) = result; without `back` NAME(arguments).
std::string CallText(const Function& function, const CallValues& entered, const CallValues* back);

}  // namespace record
