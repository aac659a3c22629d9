// The test case that the operator adds.
#pragma once

/// Lists the content, asks for a file, a name and the kind of picture and keeps them as the user's
/// test case, which joins the catalogue at the next start. Messages are those of `function`.
void AddUserTestCase(const char* function);
