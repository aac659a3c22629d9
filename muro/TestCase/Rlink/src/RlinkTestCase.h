// The link tests. Each TestFunc returns 1 for success and 0 for failure; its wrapper inverts that
// for the menu.
#pragma once

#include "rlink.h"

#define RLINK_TEST(id, name, description, function, ...) \
  int TestFunc_##function();                             \
  int Wrapper_TestFunc_##function(char*);
#include "RlinkTests.def"

// Handlers of commands that the slave invokes on the host. They run on a thread of the library.

/// Prints the session and all parameters, and fills the first 24 bytes of memory that is sent in
/// both directions with "A".
void Command_Test(RLNK_HOST_SESSION* session, RLNK_CMD_PARAMS* params);
/// Checks the slave's four-letter values and answers with the ones that follow.
void Command_Test_1(RLNK_HOST_SESSION* session, RLNK_CMD_PARAMS* params);
/// Checks the slave's memory and sends it back with its answer.
void Command_Test_2(RLNK_HOST_SESSION* session, RLNK_CMD_PARAMS* params);
