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

/// Rewrites a file without colour sequences; the coloured one is kept with ".Orig" appended.
void Remove_Color_Code_From_File(const std::string& path);

/// Packs the current test case's dumps, the board's logs and, when asked, its report into the
/// archive beside the reports.
void Package_AllinOne(bool withReport);

/// Sends one file to the USB stick, the TFTP server, both or neither, as set.
void Send_Report_File(const std::string& path);

/// Sends the kept dumps of the current test case to the TFTP server.
void Send_Dump_To_TFTP();
