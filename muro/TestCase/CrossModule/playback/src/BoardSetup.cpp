#include "BoardSetup.h"

#include <unistd.h>

#include <string>

#include "../../stages/src/BoardTools.h"
#include "../../stages/src/CrossModuleLog.h"
#include "../../stages/src/Settings.h"
#include "DriverTest.h"
#include "GoldenData.h"

namespace {

constexpr char kNoAndroidMarker[] = "/data/noAndroidMode";
constexpr char kPrepare[] = "CMplaybackTest_Env_Init";

constexpr const char* kSorvexCommands[] = {
    "mount -o rw,remount /",
    "mount -o rw,remount /system",
    "mount -o rw,remount /vendor",
    "ln -sv /data/cross_module/gst_root/usr/lib /usr",
    "mkdir /usr/share",
    "ln -sv /data/cross_module/gst_root/usr/share/alsa/ /usr/share\t",
    "touch /data/noAndroidMode",
    "touch /home/cross_module/muroMode",
};

void MakeHome(int os) {
  RunShell("mkdir -p " + CrossModuleHome());
  RunShell("mkdir " + CrossModuleHome() + "config");
  // The links made below lead there.
  if (os == OS_SORVEX) RunShell("mkdir -p /data/cross_module/");
}

void UnpackPlayer() {
  RunShell(BusyboxCommand() + " tar -jx -f /vendor/corvana/gst_root.tar.bz2 -C " +
           CrossModuleHome());
  RunShell("cp /vendor/corvana/gstomx.conf " + CrossModuleHome() +
           "gst_root/usr/etc/xdg/gstomx.conf");
}

void FitIntoSystem(int os) {
  if (os == OS_SORVEX) {
    CmLog(kPrepare) << "Sorvex CrossModule Init Process\n";
    for (const char* command : kSorvexCommands) RunShell(command);
  }
  if (os == OS_PELXOS) RunShell("cp " + CrossModuleHome() + "gst_root/usr/lib/* /usr/lib/");
}

void Reboot() {
  RunShell("sync");
  RunShell("reboot");
}

}  // namespace

void PrepareBoard() {
  const int os = Get_Board_OS_System();
  CmLog(kPrepare) << "Extract GST lib..., please wait. Note: System will reboot after this step\n";
  MakeHome(os);
  UnpackPlayer();
  RunShell("chmod 755 /vendor/corvana/udhcpc.script");
  Restore_Local_Golden();
  FitIntoSystem(os);
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
