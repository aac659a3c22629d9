#include "ReportDelivery.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <optional>
#include <sstream>

#include "../../stages/src/BoardConnections.h"
#include "../../stages/src/BoardSystem.h"
#include "../../stages/src/CrossModuleLog.h"
#include "../../stages/src/Settings.h"
#include "../../stages/src/TestCaseCatalogue.h"
#include "Ansi.h"
#include "InputFile.h"
#include "Shell.h"

namespace {

constexpr char kPackage[] = "Package_AllinOne";
constexpr char kSend[] = "Send_Report_File";
constexpr char kSendDumps[] = "Send_Dump_To_TFTP";
constexpr char kRemoveColours[] = "Remove_Color_Code_From_File";

constexpr char kColouredTemporaryReport[] = "/tmp/cross_module/report.verify.tmp.txt.Orig";

constexpr const char* kColourSequences[] = {
    "\033[0;32;31m", "\033[0;32;32m", "\033[0;32;34m", "\033[0;33m", "\033[0;35m", "\033[0;36m",
    "\033[0;37m",    "\033[1;30m",    "\033[1;31m",    "\033[1;32m", "\033[1;33m", "\033[1;34m",
    "\033[1;35m",    "\033[1;36m",    "\033[1;37m",    "\033[m",
};

constexpr const char* kBoardLogs[] = {
    "/tmp/var/log/dpq_logfile.log", "/tmp/var/log/dpq_acpu1.log", "/tmp/var/log/dpq_acpu2.log",
    "/tmp/var/log/dpq_vcpu1.log",   "/tmp/var/log/dpq_vcpu2.log",
};

/// Prints a command and runs it. Returns whether it succeeded.
bool Run(const char* function, const std::string& command) {
  CmLog(function) << command << '\n';
  return RunShell(command);
}

void EraseAll(std::string& line, const std::string& sequence) {
  for (auto at = line.find(sequence); at != std::string::npos; at = line.find(sequence))
    line.erase(at, sequence.size());
}

/// Removing a sequence can join the halves of another one, so the search is repeated.
void EraseColours(std::string& line) {
  std::size_t sizeBefore = 0;
  do {
    sizeBefore = line.size();
    for (const char* sequence : kColourSequences) EraseAll(line, sequence);
  } while (line.size() != sizeBefore);
}

/// Every line of the copy ends with a newline.
void CopyWithoutColours(std::istream& from, std::ostream& to) {
  for (std::string line; std::getline(from, line);) {
    EraseColours(line);
    to << line << '\n';
  }
}

std::string PackageDirectory(const CM_TestCase& testCase) {
  return ReportDirectory() + "package_" + testCase.Get_TestCase_Name() + "_" + Get_Test_Timestamp();
}

/// "report_101-h264-FrtChg_0315_142501"
std::string ReportStem(const CM_TestCase& testCase) {
  return "report_" + testCase.Get_TestCase_Name() + "_" + Get_Test_Timestamp();
}

/// The name that the last report took, and the one that it would have without a number.
struct {
  std::string firstStem;
  std::string stem;
} lastReport;

void LogSending(const std::string& path, const char* arrow, const std::string& destination) {
  CmLog(kSend) << "Send " << ansi::kText << path << ansi::kReset << arrow << '"' << destination
               << "\"\n";
}

bool SendToUsb(const std::string& path) {
  const std::string directory = UsbMountPoint() + "/cross_module_report";
  if (!ReachStick()) {
    CmLog(kSend) << ansi::kFail << "no USB stick: " << path << " not sent to it" << ansi::kReset
                 << '\n';
    return false;
  }
  LogSending(path, " ----> [USB]  ", directory);
  Run(kSend, "mkdir -p " + directory);
  return Run(kSend, "cp " + path + " " + directory + "/");
}

/// The server that files are sent to; if there is none, logs that and what is not sent.
std::optional<std::string> TftpServer(const char* function, const std::string& what) {
  std::string server = Get_TFTP_IP();
  if (NamesTftpServer(server)) return server;
  CmLog(function) << "No TFTP server is set: " << what << " not sent\n";
  return std::nullopt;
}

bool SendToTftp(const std::filesystem::path& path) {
  const auto server = TftpServer(kSend, path.string());
  if (!server) return false;
  const std::string directory = path.has_parent_path() ? path.parent_path().string() : ".";
  LogSending(path, " ----> [TFTP] ", *server);
  return Run(kSend, "cd " + directory + "; " + ThisBoardSystem().tftp + path.filename().string() +
                        " " + *server);
}

bool HasKeptDump(const CM_TestCase& testCase) {
  return std::ranges::any_of(kStages, [&](const Stage& stage) {
    return IsInputFile(testCase.Get_Dump_Backup_Path(stage.module));
  });
}

}  // namespace

std::string ReportDirectory() {
  return CrossModuleHome() + "report/";
}

std::string Get_Report_Name(int kind, bool withDirectory) {
  if (kind != kReportFile && kind != kReportArchive) return "";
  const CM_TestCase* testCase = KnownTestCase("Get_Report_Name");
  if (testCase == nullptr) return "";
  const std::string stem = ReportStem(*testCase);
  return (withDirectory ? ReportDirectory() : "") +
         (lastReport.firstStem == stem ? lastReport.stem : stem) +
         (kind == kReportFile ? ".txt" : ".tar.gz");
}

std::string TakeReportName() {
  const CM_TestCase* testCase = KnownTestCase("Get_Report_Name");
  if (testCase == nullptr) return "";
  const std::string first = ReportStem(*testCase);
  std::string stem = first;
  for (int number = 2; IsInputFile(ReportDirectory() + stem + ".txt"); ++number)
    stem = first + "_" + std::to_string(number);
  lastReport = {first, stem};
  return Get_Report_Name(kReportFile, true);
}

std::string WithoutColours(const std::string& text) {
  std::istringstream from(text);
  std::ostringstream to;
  CopyWithoutColours(from, to);
  return to.str();
}

void Remove_Color_Code_From_File(const std::string& path) {
  const std::string cleanPath = path + ".tmp";
  std::ifstream coloured(path);
  std::ofstream clean(cleanPath);
  if (!coloured || !clean) {
    CmLog(kRemoveColours) << "Error! Cannot open file\n";
    return;
  }
  CopyWithoutColours(coloured, clean);
  coloured.close();
  clean.close();
  if (!clean) {
    CmLog(kRemoveColours) << "Error! Cannot write file\n";
    return;
  }
  Run(kRemoveColours, "mv " + path + " " + path + ".Orig");
  Run(kRemoveColours, "mv " + cleanPath + " " + path);
}

bool Package_AllinOne(bool withReport) {
  const CM_TestCase* testCase = KnownTestCase(kPackage);
  if (testCase == nullptr) return false;
  if (!Check_If_CrossModulePlayback_Env_Setup()) {
    CmLog(kPackage) << ansi::kFail << "ERROR: no " << CrossModuleHome() << ", nothing to pack\n";
    return false;
  }
  if (!HasKeptDump(*testCase)) {
    CmLog(kPackage) << ansi::kFail << "ERROR: no dump of " << testCase->Get_TestCase_Name()
                    << " to pack\n";
    return false;
  }
  const std::string directory = PackageDirectory(*testCase);
  const auto copy = [&](const std::string& path) { Run(kPackage, "cp " + path + " " + directory); };
  Run(kPackage, "mkdir -p " + directory);
  for (const CM_Module& module : ModuleTypeList())
    copy(testCase->Get_Dump_Backup_Path(module.type));
  if (withReport) copy(Get_Report_Name(kReportFile, true));
  for (const char* log : kBoardLogs) copy(log);
  Run(kPackage, "sync");
  const bool packed = Run(kPackage, "cd " + directory + "; " + ThisBoardSystem().tar + "../" +
                                        Get_Report_Name(kReportArchive, false) + " .");
  Run(kPackage, std::string("rm ") + kColouredTemporaryReport);
  Run(kPackage, "rm -rf  " + directory);
  return packed;
}

bool Send_Report_File(const std::string& path) {
  Run(kSend, "sync");
  const int destinations = Get_Report_Send_To();
  const bool toUsb = (destinations & SEND_REPORT_USB) != 0;
  const bool toTftp = (destinations & SEND_REPORT_TFTP) != 0;
  bool arrived = !toUsb && !toTftp;
  if (toUsb) arrived = SendToUsb(path) || arrived;
  if (toTftp) arrived = SendToTftp(path) || arrived;
  Run(kSend, "sync");
  return arrived;
}

bool Send_Dump_To_TFTP() {
  const CM_TestCase* testCase = KnownTestCase(kSendDumps);
  if (testCase == nullptr) return false;
  const auto server = TftpServer(kSendDumps, "dumps");
  if (!server) return false;
  bool arrived = false;
  for (const CM_Module& module : ModuleTypeList())
    arrived |= Run(kSendDumps, "cd " + CrossModuleHome() + "dump_tmp ;tftp -p -l " +
                                   testCase->Get_Dump_Backup_Name(module.type) + " " + *server);
  return arrived;
}
