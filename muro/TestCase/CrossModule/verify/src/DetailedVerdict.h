// One stage's outcome in detail.
#pragma once

class CM_Verify_Result;

/// Prints one stage's verdict with all wrong fields on the console. Where there is no wrong field
/// and the stage has not passed all the same, a second line says why.
void Print_RWA_Verify_Result(const CM_Verify_Result* result);
