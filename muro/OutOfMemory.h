// What happens when memory runs out.
#pragma once

/// From now on a failing allocation ends the program: it prints one line on standard error, reports
/// the running test as failed and exits with the status of a failed harness.
void EndWhenOutOfMemory();
