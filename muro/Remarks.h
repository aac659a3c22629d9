// What a test has to remark beside its verdict.
#pragma once

#include <string>

/// Remarks something, in one line, that the verdict of the running test does not say, such as the
/// code of a call that the test is not to judge. It is shown with the result of an unattended run;
/// at the console it is not.
void Remark(const std::string& text);

/// Hears the remarks from now on; null, as at the start, when nobody does.
void SetRemarkListener(void (*listener)(const std::string& text));
