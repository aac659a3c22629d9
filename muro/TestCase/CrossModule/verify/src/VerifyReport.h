// The report of a verified test case, and one stage's outcome in detail.
#pragma once

#include <iosfwd>

class CM_Verify_Result;

/// Prints the outcome of all stages of the current test case on the console and into the report
/// file, and sends the report where the settings say. Returns true when every stage passed.
bool Print_Verify_Result();

/// Prints the first wrong field of each stage, one line a stage, and the first bad stage. Returns
/// true when every stage passed.
bool Print_Simple_Table(std::ostream& out);

/// Prints the wrong frames of the video stages, one line a frame, from the prepared results.
void Print_Video_Integration_Table(std::ostream& out);

/// Prints one stage's verdict with all wrong fields on the console.
void Print_RWA_Verify_Result(const CM_Verify_Result* result);
