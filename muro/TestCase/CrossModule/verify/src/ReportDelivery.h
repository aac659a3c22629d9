// Delivery of a report: cleaned of colours, packed with dumps and logs, sent.
#pragma once

#include <string>

/// Kinds of files that a test round produces.
enum ReportKind {
  kReportFile = 2,
  kReportArchive = 6,
};

/// Directory of the reports, with its closing "/".
std::string ReportDirectory();

/// Name of the current test case's report or archive in this test round, with its directory if
/// `withDirectory`. Empty for any other kind and for an unknown test case.
std::string Get_Report_Name(int kind, bool withDirectory);

/// Chooses a unique name for the next report, so that no report replaces another: if the name is
/// taken, a number is added after the time. `Get_Report_Name` returns it until the next report.
/// Returns the name with its directory.
std::string TakeReportName();

/// The text without the colour sequences of the console.
std::string WithoutColours(const std::string& text);

/// Rewrites a file without colour sequences; the coloured one is kept with the suffix ".Orig".
void Remove_Color_Code_From_File(const std::string& path);

/// Packs the current test case's dumps, the board's logs and, on request, its report into the
/// archive next to the reports. Returns whether there was a dump to pack and the archive was
/// created.
bool Package_AllinOne(bool withReport);

/// Sends one file to the USB stick, the TFTP server, both or neither, according to the settings.
/// Mounts the stick if necessary. Returns false if all requested transfers failed.
bool Send_Report_File(const std::string& path);

/// Sends the stored dumps of the current test case to the TFTP server. Returns whether at least one
/// was transferred.
bool Send_Dump_To_TFTP();
