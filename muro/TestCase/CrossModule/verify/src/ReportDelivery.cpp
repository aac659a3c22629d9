#include "ReportDelivery.h"

#include <filesystem>
#include <fstream>
#include <iostream>

#include "../../stages/src/BoardSystem.h"
#include "../../stages/src/CrossModuleLog.h"
#include "../../stages/src/Settings.h"
#include "../../stages/src/TestCaseCatalogue.h"
#include "Ansi.h"
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

void Run(const char* function, const std::string& command) {
  CmLog(function) << command << '\n';
  RunShell(command);
}

void EraseAll(std::string& line, const std::string& sequence) {
  for (auto at = line.find(sequence); at != std::string::npos; at = line.find(sequence))
    line.erase(at, sequence.size());
}

/// Removing a sequence can join the halves of another one, so all are looked for again.
void EraseColours(std::string& line) {
  std::size_t sizeBefore = 0;
  do {
    sizeBefore = line.size();
    for (const char* sequence : kColourSequences) EraseAll(line, sequence);
  } while (line.size() != sizeBefore);
}

void CopyWithoutColours(std::istream& from, std::ostream& to) {
  for (std::string line; std::getline(from, line);) {
    EraseColours(line);
    to << line << '\n';
  }
}

std::string PackageDirectory(const CM_TestCase& testCase) {
  return ReportDirectory() + "package_" + testCase.Get_TestCase_Name() + "_" + Get_Test_Timestamp();
}

void LogSending(const std::string& path, const char* arrow, const std::string& destination) {
  CmLog(kSend) << "Send " << ansi::kText << path << ansi::kReset << arrow << '"' << destination
               << "\"\n";
}

void SendToUsb(const std::string& path) {
  const std::string directory = UsbMountPoint() + "/cross_module_report";
  LogSending(path, " ----> [USB]  ", directory);
  Run(kSend, "mkdir -p " + directory);
  Run(kSend, "cp " + path + " " + directory + "/");
}

void SendToTftp(const std::filesystem::path& path) {
  const std::string directory = path.has_parent_path() ? path.parent_path().string() : ".";
  const std::string server = Get_TFTP_IP();
  LogSending(path, " ----> [TFTP] ", server);
  Run(kSend,
      "cd " + directory + "; " + ThisBoardSystem().tftp + path.filename().string() + " " + server);
}

}  // namespace

std::string ReportDirectory() {
  return CrossModuleHome() + "report/";
}

std::string Get_Report_Name(int kind, bool withDirectory) {
  if (kind != kReportFile && kind != kReportArchive) return "";
  const CM_TestCase* testCase = KnownTestCase("Get_Report_Name");
  if (testCase == nullptr) return "";
  return (withDirectory ? ReportDirectory() : "") + "report_" + testCase->Get_TestCase_Name() +
         "_" + Get_Test_Timestamp() + (kind == kReportFile ? ".txt" : ".tar.gz");
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

void Package_AllinOne(bool withReport) {
  const CM_TestCase* testCase = KnownTestCase(kPackage);
  if (testCase == nullptr) return;
  if (!Check_If_CrossModulePlayback_Env_Setup()) {
    CmLog(kPackage) << ansi::kFail << "ERROR: no " << CrossModuleHome() << ", nothing to pack\n";
    return;
  }
  const std::string directory = PackageDirectory(*testCase);
  const auto copy = [&](const std::string& path) { Run(kPackage, "cp " + path + " " + directory); };
  Run(kPackage, "mkdir -p " + directory);
  for (const CM_Module& module : ModuleTypeList())
    copy(testCase->Get_Dump_Backup_Path(module.type));
  if (withReport) copy(Get_Report_Name(kReportFile, true));
  for (const char* log : kBoardLogs) copy(log);
  Run(kPackage, "sync");
  Run(kPackage, "cd " + directory + "; " + ThisBoardSystem().tar + "../" +
                    Get_Report_Name(kReportArchive, false) + " .");
  Run(kPackage, std::string("rm ") + kColouredTemporaryReport);
  Run(kPackage, "rm -rf  " + directory);
}

void Send_Report_File(const std::string& path) {
  Run(kSend, "sync");
  const int destinations = Get_Report_Send_To();
  if ((destinations & SEND_REPORT_USB) != 0) SendToUsb(path);
  if ((destinations & SEND_REPORT_TFTP) != 0) SendToTftp(path);
  Run(kSend, "sync");
}

void Send_Dump_To_TFTP() {
  const CM_TestCase* testCase = KnownTestCase(kSendDumps);
  if (testCase == nullptr) return;
  const std::string server = Get_TFTP_IP();
  for (const CM_Module& module : ModuleTypeList())
    Run(kSendDumps, "cd " + CrossModuleHome() + "dump_tmp ;tftp -p -l " +
                        testCase->Get_Dump_Backup_Name(module.type) + " " + server);
}
