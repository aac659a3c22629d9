// What happens when memory runs out.
#pragma once

/// From now on an allocation that fails ends the program: one line on standard error, the running
/// test is reported as failed, and the exit status is that of a failed harness.
void EndWhenOutOfMemory();
