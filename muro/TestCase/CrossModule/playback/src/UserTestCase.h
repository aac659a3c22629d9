// The user's own test case.
#pragma once

/// Lists the content, prompts for a file, a name and the kind of picture and stores them as the
/// user's test case, which is added to the catalogue at the next start. Prints its messages in the
/// name of `function`.
void AddUserTestCase(const char* function);
