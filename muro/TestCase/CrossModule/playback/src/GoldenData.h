// The dumps that are kept of a run and the golden data they are compared with.
#pragma once

/// Lets the next `Backup_Dump_File` copy again: a new run begins.
void Expect_New_Dumps();

/// Copies the dumps of all stages to where they are kept for the current test case, once a run.
/// Returns 0, or -1 when the test case is unknown or the board is not prepared.
int Backup_Dump_File();

/// Unpacks the golden data that the board came with over all that are there. Returns 0.
int Restore_Local_Golden();

/// Makes the kept dumps of the current test case its golden data. Returns 0, or -1 when the case is
/// unknown or a dump is missing; then nothing is replaced.
int Overwrite_Local_Golden();
