// Expected texts in tests/expected: whole transcripts and reports reviewed by a person.
#pragma once

#include <gtest/gtest.h>

#include <string>

namespace test {

/// True if `text` equals tests/expected/`name`; otherwise shows the differences. With
/// CVN_APPROVE=1 in the environment the file is updated instead.
testing::AssertionResult IsAsExpected(const std::string& name, const std::string& text);

/// `text` with every match of `regex` (ECMAScript) replaced by `mask`: for dates and other texts
/// that differ from run to run.
std::string Masked(const std::string& text, const std::string& regex, const std::string& mask);

}  // namespace test
