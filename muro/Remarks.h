// Remarks that a test makes in addition to its verdict, and findings for other tools.
#pragma once

#include <string>

/// Adds a one-line remark that the verdict of the running test does not express, such as the return
/// code of a call that the test does not judge. It is shown with the result of an unattended run,
/// but not on the console.
void Remark(const std::string& text);

/// Sets the function that receives the remarks; null, the default, for none.
void SetRemarkListener(void (*listener)(const std::string& text));

/// Passes a finding of the running test, a one-line JSON object, to the result files of an
/// unattended run that store findings.
void Finding(const std::string& json);

/// True if findings have a listener, so that it is worth the time to produce them.
bool IsFindingHeard();

/// Sets the function that receives the findings; null, the default, for none.
void SetFindingListener(void (*listener)(const std::string& json));

/// Gives an unattended run a file for people to look at, such as a picture of the findings; it is
/// stored next to the log of the running test. `name` is a file name without a directory.
void Attach(const std::string& name, const std::string& content);

/// Sets the function that receives such files; null, the default, for none.
void SetAttachmentListener(void (*listener)(const std::string& name, const std::string& content));
