// One stage's outcome in detail.
#pragma once

class CM_Verify_Result;

/// Prints one stage's verdict with all wrong fields on the console. If there is no wrong field but
/// the stage has not passed, a second line gives the reason.
void Print_RWA_Verify_Result(const CM_Verify_Result* result);
