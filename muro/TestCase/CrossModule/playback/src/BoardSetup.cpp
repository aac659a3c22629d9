#include "BoardSetup.h"

#include <unistd.h>

#include <string>

#include "../../stages/src/BoardSystem.h"
#include "../../stages/src/CrossModuleLog.h"
#include "../../stages/src/Settings.h"
#include "GoldenData.h"
#include "Shell.h"

namespace {

constexpr char kNoAndroidMarker[] = "/data/noAndroidMode";
constexpr char kPrepare[] = "CMplaybackTest_Env_Init";

void MakeHome(const BoardSystem& system) {
  RunShell("mkdir -p " + CrossModuleHome());
  RunShell("mkdir " + CrossModuleHome() + "config");
  for (const char* command : system.homeCommands) RunShell(WithHome(command));
}

void UnpackPlayer(const BoardSystem& system) {
  RunShell(std::string(system.busybox) + " tar -jx -f /vendor/corvana/gst_root.tar.bz2 -C " +
           CrossModuleHome());
  RunShell("cp /vendor/corvana/gstomx.conf " + CrossModuleHome() +
           "gst_root/usr/etc/xdg/gstomx.conf");
}

void FitIntoSystem(const BoardSystem& system) {
  if (system.prepareMessage != nullptr) CmLog(kPrepare) << system.prepareMessage << '\n';
  for (const char* command : system.prepareCommands) RunShell(WithHome(command));
}

void Reboot() {
  RunShell("sync");
  RunShell("reboot");
}

}  // namespace

void PrepareBoard() {
  const BoardSystem& system = ThisBoardSystem();
  CmLog(kPrepare) << "Extract GST lib..., please wait. Note: System will reboot after this step\n";
  MakeHome(system);
  UnpackPlayer(system);
  RunShell("chmod 755 /vendor/corvana/udhcpc.script");
  Restore_Local_Golden();
  FitIntoSystem(system);
  Reboot();
}

bool IsAndroidEnabled() {
  return access(kNoAndroidMarker, F_OK) != 0;
}

void EnableAndroid(bool enable) {
  constexpr char kFunction[] = "CMplaybackTest_Enable_Android";
  const bool changes = enable != IsAndroidEnabled();
  if (enable) CmLog(kFunction) << "Enable Android, please wait 1 ~ 5 seconds...\n";
  RunShell(std::string(enable ? "rm " : "touch ") + kNoAndroidMarker);
  RunShell("echo osd_pattern=0 0 0xf > /proc/cvngdma/dbg");
  if (!changes) return;
  CmLog(kFunction) << "now system will reboot in order to apply setting...\n";
  Reboot();
}
