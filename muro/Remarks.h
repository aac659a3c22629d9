// What a test has to remark beside its verdict, and what it finds for other tools.
#pragma once

#include <string>

/// Remarks something, in one line, that the verdict of the running test does not say, such as the
/// code of a call that the test is not to judge. It is shown with the result of an unattended run;
/// at the console it is not.
void Remark(const std::string& text);

/// Hears the remarks from now on; null, as at the start, when nobody does.
void SetRemarkListener(void (*listener)(const std::string& text));

/// Tells a finding of the running test to the result files of an unattended run that take such: a
/// JSON object in one line.
void Finding(const std::string& json);

/// Whether anybody hears findings, so that looking for them is worth the time.
bool IsFindingHeard();

/// Hears the findings from now on; null, as at the start, when nobody does.
void SetFindingListener(void (*listener)(const std::string& json));

/// Gives an unattended run a file that people look at, such as a picture of what was found; it is
/// kept beside the log of the running test. `name` is a file name without a directory.
void Attach(const std::string& name, const std::string& content);

/// Takes such files from now on; null, as at the start, when nobody does.
void SetAttachmentListener(void (*listener)(const std::string& name, const std::string& content));
