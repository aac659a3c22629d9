// Identifies the running build of the harness and of the board's HAL.
#pragma once

#include <string>

namespace runner {

/// Name and linker build id of the program and of the HAL libraries that it loaded, such as
/// "cvntester 3510fb628e76, libcvn_k2vhal.so 77e26327ee15"; names only where there are no ids.
std::string BuildIds();

}  // namespace runner
