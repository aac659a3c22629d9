// The report of a verified test case.
#pragma once

#include <iosfwd>
#include <string>

#include "ReportTables.h"

/// Data of a test in its report, in addition to the results.
struct TestInformation {
  std::string name;
  std::string content;
  std::string goldenData;
  std::string testTime;
  std::string softwareVersion;
};

/// Writes the whole report: information, tables, column names and, unless empty, the analysis of
/// the synchronisation and the causes. Prepares the results for printing.
void WriteReport(std::ostream& out, const TestInformation& information, const StageResults& results,
                 const std::string& synchronisation, const std::string& causes);

/// Prints the outcome of all stages of the current test case on the console and into the report
/// file, and sends the report according to the settings. Returns true if every stage passed, and
/// the synchronisation if the content has marks for it.
bool Print_Verify_Result();

/// Prints the first wrong field of each stage, one line per stage, and the first bad stage. Returns
/// true if every stage passed.
bool Print_Simple_Table(std::ostream& out);

/// Prints the wrong frames of the video stages, one line per frame, from the prepared results.
void Print_Video_Integration_Table(std::ostream& out);
