#include "PlaybackRun.h"

#include <unistd.h>

#include <filesystem>
#include <optional>
#include <span>

#include "../../stages/src/BoardConnections.h"
#include "../../stages/src/BoardSystem.h"
#include "../../stages/src/CrossModuleLog.h"
#include "../../stages/src/Settings.h"
#include "../../stages/src/TestCaseCatalogue.h"
#include "../../verify/src/ReportDelivery.h"
#include "Ansi.h"
#include "ConsoleInput.h"
#include "Environment.h"
#include "GoldenData.h"
#include "LiveLine.h"
#include "Shell.h"

namespace {

constexpr const char* kPlatformLogs[] = {
    "/tmp/var/log/dpq_acpu1.log", "/tmp/var/log/dpq_acpu2.log", "/tmp/var/log/dpq_logfile.log",
    "/tmp/var/log/dpq_vcpu1.log", "/tmp/var/log/dpq_vcpu2.log",
};

bool manualPlay = false;

void RemoveDumps() {
  for (const CM_Module& module : ModuleTypeList()) RunShell("rm -f " + *module.dumpPath);
}

/// True if the content is accessible and the board is prepared.
bool IsReady() {
  const int source = Get_USB_HTTP_Mode();
  if (source == MODE_USB && Mount_USB() != 0) return false;
  if (source == MODE_HTTP) Setup_PCB_IP();
  if (Check_If_CrossModulePlayback_Env_Setup()) return true;
  CmLog("Test_Start") << ansi::kFail << "Erro!! Playback Test Environment has not been setuped."
                      << ansi::kReset << '\n';
  CmLog("Test_Start") << "HINT: please run \"0 .Playback Test Environment init.\" before you "
                         "test\n";
  return false;
}

/// Creates or removes a file that is a signal to the media stack.
void Signal(bool present, const char* file) {
  RunShell(std::string(present ? "touch " : "rm -f ") + file);
}

void ClearPlatformLogs() {
  CmLog("Test_Start") << "clear dpq log \n";
  for (const char* log : kPlatformLogs) {
    [[maybe_unused]] const int status = truncate(log, 0);  // a missing file is not created
  }
  RunShell("rm -f /tmp/var/log/dpq_logfile.log.gz");
}

void RunAll(std::span<const char* const> commands) {
  for (const char* command : commands) RunShell(command);
}

bool IsContentThere(const CM_TestCase& testCase) {
  const int source = Get_USB_HTTP_Mode();
  const std::string path = ContentHome() + testCase.contentFile;
  if ((source != MODE_USB && source != MODE_EMMC) || access(path.c_str(), F_OK) == 0) return true;
  CmLog("Run_Playback_Test_Case") << ansi::kFail << "ERROR: content not exist: " << path
                                  << ansi::kReset << '\n';
  return false;
}

std::string PlayerCommand(const CM_TestCase& testCase, const BoardSystem& system) {
  const bool isFile = Get_USB_HTTP_Mode() != MODE_HTTP;
  return PlayerCommandPrefix() + ContentHome() + testCase.contentFile +
         (isFile ? system.filePlayerEnd : "");
}

/// During the lifetime of this object, relative commands are resolved below the cross-module home,
/// wherever the program was started: the player of network content is called by a relative path.
class AtHome {
 public:
  AtHome() { std::filesystem::current_path(CrossModuleHome(), ignored_); }
  ~AtHome() {
    if (!before_.empty()) std::filesystem::current_path(before_, ignored_);
  }
  AtHome(const AtHome&) = delete;
  AtHome& operator=(const AtHome&) = delete;

 private:
  std::error_code ignored_;
  std::filesystem::path before_ = std::filesystem::current_path(ignored_);
};

void Play(const CM_TestCase& testCase, const std::string& progress) {
  constexpr char kFunction[] = "Run_Playback_Test_Case";
  if (manualPlay) {
    static constexpr char kRequest[] = "Enter any key if play finished\n";
    CmLog(kFunction) << kRequest;
    console::NotePrompt(kRequest);
    mygetch();
    return;
  }
  const BoardSystem& system = ThisBoardSystem();
  const std::string command = PlayerCommand(testCase, system);
  CmLog(kFunction) << system.playerLogTag << "Excute command: " << command << '\n';
  std::optional<LiveLine> line;
  if (!progress.empty()) line.emplace(progress);
  std::optional<AtHome> atHome;
  if (Get_USB_HTTP_Mode() == MODE_HTTP) atHome.emplace();
  RunShell(command);
}

}  // namespace

void Set_Manual_Play(bool manual) {
  manualPlay = manual;
}

bool Get_Manual_Play() {
  return manualPlay;
}

int Test_Start(int hdr) {
  Init_TestCase_List();
  Init_Module_List();
  Expect_New_Dumps();
  RemoveDumps();
  if (!manualPlay && !IsReady()) return -1;
  Signal(Get_FreeRun_Mode() != 0, "/tmp/GST_DVO_FREERUN");
  RunShell("mkdir -p /tmp/cross_module");
  RunShell("chmod -R 777 /tmp/cross_module");
  Signal(hdr == 0, "/tmp/GST_DVO_FORCE_ADAPTIVE");
  ClearPlatformLogs();
  RunAll(ThisBoardSystem().runStart);
  if (!manualPlay) Setup_GST_Env_Var(true);
  RunShell("setenforce 0");
  EnableDebugMode(false, 0);
  EnableDebugMode(true, hdr);
  CmLog(__func__) << "Command: du -h -d1 /tmp/cross_module\n";
  RunShell("du -h -d1 /tmp/cross_module/  ");
  return 0;
}

int Test_End() {
  Init_TestCase_List();
  Init_Module_List();
  RunAll(ThisBoardSystem().runEnd);
  if (!manualPlay) Setup_GST_Env_Var(false);
  EnableDebugMode(false, 0);
  return Backup_Dump_File();
}

int Run_Playback_Test_Case(CM_TestCase* tc, const std::string& progress) {
  Init_TestCase_List();
  Init_Module_List();
  if (tc == nullptr || !IsKnown(tc)) {
    CmLog(__func__) << ansi::kFail << "ERROR: unknown test case\n";
    return -1;
  }
  const std::string server = Get_TFTP_IP();
  if (server.empty() || server == "NULL") {
    CmLog(__func__) << "You have not set TFTP Server IP yet.\n";
    Get_TFTP_IP();
  }
  Set_Current_TestCase(tc->type);
  if (Test_Start(tc->hdrFile != 0 ? 1 : 0) == -1) return 1;
  if (!IsContentThere(*tc)) return -1;
  Play(*tc, progress);
  Test_End();
  if (Get_Auto_Send_DumpData() != 0) Send_Dump_To_TFTP();
  return 0;
}
