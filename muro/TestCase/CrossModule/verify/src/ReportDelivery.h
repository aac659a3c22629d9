// What becomes of a report: cleaned of colours, packed with dumps and logs, sent away.
#pragma once

#include <string>

/// Kinds of file that a test round leaves.
enum ReportKind {
  kReportFile = 2,
  kReportArchive = 6,
};

/// Directory that reports are kept in, with its closing "/".
std::string ReportDirectory();

/// Name of the current test case's report or archive in this test round, with its directory when
/// `withDirectory`. Empty for any other kind and for an unknown test case.
std::string Get_Report_Name(int kind, bool withDirectory);

/// Makes a name of its own for the report that is about to be stored, so that no report replaces
/// another: a number follows the time where the name is taken. `Get_Report_Name` returns it until
/// the next report. Returns the name with its directory.
std::string TakeReportName();

/// The text without the colour sequences of the console.
std::string WithoutColours(const std::string& text);

/// Rewrites a file without colour sequences; the coloured one is kept with ".Orig" appended.
void Remove_Color_Code_From_File(const std::string& path);

/// Packs the current test case's dumps, the board's logs and, when asked, its report into the
/// archive beside the reports. Returns whether there was a dump to pack and the archive is there.
bool Package_AllinOne(bool withReport);

/// Sends one file to the USB stick, the TFTP server, both or neither, as set. Mounts the stick when
/// it is not. Returns false when all that was wanted failed.
bool Send_Report_File(const std::string& path);

/// Sends the kept dumps of the current test case to the TFTP server. Returns whether one arrived.
bool Send_Dump_To_TFTP();
