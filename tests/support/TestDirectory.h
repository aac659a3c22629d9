// A directory of its own for every test, as GoogleTest's temporary directory. Programs that link
// cvn_test_directory have it without a word.
#pragma once

namespace test {

/// Lets this process and its children have `directory`, whose path is fixed, for themselves: an
/// empty file system of their own. Where the system allows none, programs that call this take
/// turns instead. To be called before there are threads. Returns false when neither can be done.
bool HaveAlone(const char* directory);

}  // namespace test
