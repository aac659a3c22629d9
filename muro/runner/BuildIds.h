// Which build of the harness and of the board's HAL is running.
#pragma once

#include <string>

namespace runner {

/// Name and linker's build id of the program and of the HAL's libraries that it loaded, such as
/// "cvntester 3510fb628e76, libcvn_k2vhal.so 77e26327ee15"; without ids only the names.
std::string BuildIds();

}  // namespace runner
