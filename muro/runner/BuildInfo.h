// Which sources, compiler and HAL headers this program was built of.
#pragma once

#include <string>

namespace runner {

// Written by the build: the commit in hexadecimal, with "-dirty" where files differ from it, and a
// digest of the declarations in the HAL's headers; "unknown" where the build cannot find out.
extern const char kCommit[];
extern const char kHalFingerprint[];

/// What --version prints: version, commit, build and the fingerprint of the HAL interface, a line
/// each.
std::string VersionText();

}  // namespace runner
