// The board's address in its own network.
#pragma once

namespace network {

/// Gives the board its address, as that of "eth0", or removes it; the server's address is in the
/// same network and comes and goes with it. Throws std::system_error.
void SetAddress(bool present);

}  // namespace network
