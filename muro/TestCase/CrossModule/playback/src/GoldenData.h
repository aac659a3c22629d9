// The stored dumps of a run, and the golden data that they are compared with.
#pragma once

/// Called when a new run begins: enables the next `Backup_Dump_File` to copy again.
void Expect_New_Dumps();

/// Copies the dumps of all stages to the storage directory of the current test case, once per run.
/// Returns 0, or -1 if the test case is unknown or the board is not prepared.
int Backup_Dump_File();

/// Unpacks the golden data delivered with the board over all existing ones. Returns 0.
int Restore_Local_Golden();

/// Makes the stored dumps of the current test case its golden data. Returns 0, or -1 if the case is
/// unknown or a dump is missing; then nothing is replaced.
int Overwrite_Local_Golden();
