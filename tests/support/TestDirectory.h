// A separate directory for every test, as GoogleTest's temporary directory. Linking with
// cvn_test_directory is all that is needed.
#pragma once

namespace test {

/// Gives this process and its children exclusive use of `directory`, whose path is fixed, as a
/// private empty file system. If the system does not permit that, programs that call this run one
/// at a time. Must be called before threads are started. Returns false if neither works.
bool HaveAlone(const char* directory);

}  // namespace test
