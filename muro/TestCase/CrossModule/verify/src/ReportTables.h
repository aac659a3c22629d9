// The tables of a test case's report, printed from the results of its stages.
#pragma once

#include <iosfwd>
#include <string>
#include <vector>

class CM_Verify_Result;

/// The results of a test case's stages, in the order of the stages' table.
using StageResults = std::vector<const CM_Verify_Result*>;

/// Prints the first wrong field of each stage, one line per stage, and the first bad stage. Returns
/// true if every stage passed.
bool PrintSummary(std::ostream& out, const std::string& testCaseName, const StageResults& results);

/// Prints the wrong frames of the video drivers' stages, one line per frame.
void PrintVideoIntegration(std::ostream& out, const StageResults& results);

/// Prints the column names of every stage, one line per stage.
void PrintColumnNames(std::ostream& out, const StageResults& results);

/// True if every stage passed.
bool AllPassed(const StageResults& results);

/// The first bad stage of a case and its fault, such as "[VDEC]   frame 300, crc = 1/2": the first
/// on the picture's path that has not passed, together with those before it that the dumps cannot
/// distinguish from it. Empty if all pictures are right.
std::string FirstBadStage(const StageResults& results);
