#include "Environment.h"

#include <unistd.h>

#include <cstdlib>
#include <string>

#include "../../stages/src/CrossModuleLog.h"
#include "../../stages/src/Settings.h"
#include "../../stages/src/TestCaseCatalogue.h"
#include "DriverTest.h"

namespace {

constexpr char kOmxConfiguration[] = "/tmp/OMX_MURO_CONFIG";
constexpr char kDebugModeMarker[] = "/tmp/enableDebugMode";

/// A command of the test mode, in two parts with the stage's dump path between them.
struct DumpCommand {
  MODULE_TYPE stage;
  const char* before;
  const char* after;
};

// The OMX layer has no node: it reads where its two dumps go, the output's first.
constexpr DumpCommand kOmxAndVideo[] = {
    {MODULE_OMXOUT, "echo testresult=", " > "},
    {MODULE_OMXIN, "echo testresult=", " >> "},
    {MODULE_VDEC, "echo testmode=1 testresult=", " > /dev/cvnvdec"},
    {MODULE_DVO, "echo testmode=1 testresult=", " > /dev/cvndvo"},
    {MODULE_VO, "echo testmode=1 testresult=", " > /dev/vodev"},
    {MODULE_SCALER, "echo testmode=1 testresult=", " > /dev/vscdev"},
};
constexpr DumpCommand kAudio = {MODULE_AUDIO, "echo fw@ testmode=1 ", " > /dev/cvnaudio"};

constexpr const char* kTestModeOff[] = {
    "echo testmode=0 > /dev/cvnvdec", "echo testmode=0 > /dev/cvndvo",
    "echo testmode=0 > /dev/vodev",   "echo testmode=0 > /dev/vscdev",
    "echo testmode=0 > /dev/vpqdev",  "echo fw@ testmode=0 > /dev/cvnaudio",
};

/// Variables that name places of the GStreamer tree, by their tail behind the home.
constexpr struct {
  const char* name;
  const char* tail;
} kTreeVariables[] = {
    {"XDG_CONFIG_DIRS", "gst_root/usr/etc/xdg"},
    {"XDG_CONFIG_HOME", "gst_root/usr/etc/xdg"},
    {"GST_PLUGIN_PATH_1_0", "gst_root/usr/lib/gstreamer-1.0"},
    {"GST_PLUGIN_SCANNER_1_0", "gst_root/usr/libexec/gstreamer-1.0/gst-plugin-scanner"},
};

void SetVariable(const char* name, const std::string& value) {
  setenv(name, value.c_str(), 1);
}

void PutTreeInFrontOfPath() {
  const std::string tree = CrossModuleHome() + "gst_root/usr/bin/";
  const char* old = std::getenv("PATH");
  if (old == nullptr) {
    SetVariable("PATH", tree);
  } else if (std::string(old).find("gst_root") == std::string::npos) {
    SetVariable("PATH", tree + ":" + old);
  }
}

void SetTreeVariables() {
  for (const auto& variable : kTreeVariables) {
    SetVariable(variable.name, CrossModuleHome() + variable.tail);
  }
  SetVariable("GST_REGISTRY_1_0", "/tmp/gst_1_0_registry.bin");
  SetVariable("GST_REGISTRY_UPDATE", "yes");
}

void StartTestPicture() {
  // Written twice in a row on purpose.
  for (int i = 0; i < 2; ++i) RunShell("echo osd_pattern=1 1 0x0 > /proc/cvngdma/dbg");
  RunShell(CrossModuleHome() + "gst_root/usr/bin/dvo-scalar-setup");
}

void RunDumpCommand(const DumpCommand& command) {
  const bool isOmx = command.stage == MODULE_OMXIN || command.stage == MODULE_OMXOUT;
  RunShell(command.before + *Get_Module_by_ID(command.stage)->dumpPath + command.after +
           (isOmx ? kOmxConfiguration : ""));
}

void SwitchTestModeOn(int hdr) {
  for (const DumpCommand& command : kOmxAndVideo) RunDumpCommand(command);
  RunShell(hdr != 0 ? "echo testmode=2 > /dev/vpqdev" : "echo testmode=1 > /dev/vpqdev");
  RunDumpCommand(kAudio);
}

void SwitchTestModeOff() {
  RunShell(std::string("rm -f ") + kOmxConfiguration);
  for (const char* command : kTestModeOff) RunShell(command);
}

}  // namespace

void Setup_GST_Env_Var(bool enable) {
  static bool done = false;
  if (!enable) {
    unsetenv("LD_LIBRARY_PATH");
    return;
  }
  if (done) return;
  done = true;
  CmLog(__func__) << "Setup GST environment variables\n";
  const int os = Get_Board_OS_System();
  if (os == OS_SORVEX) {
    RunShell("dvo-scalar-setup");
    return;
  }
  if (os == OS_PELXOS) {
    SetVariable("LD_LIBRARY_PATH", CrossModuleHome() + "gst_root/usr/lib");
    PutTreeInFrontOfPath();
  }
  SetTreeVariables();
  StartTestPicture();
}

void EnableDebugMode(bool enable, int hdr) {
  Init_Module_List();
  if (Get_Board_OS_System() == OS_SORVEX) {
    if (access(kDebugModeMarker, F_OK) != 0) {
      CmLog(__func__) << "[Kelvra] SKIP enable Enable debug mode. hint: touch " << kDebugModeMarker
                      << " to enable \n";
      return;
    }
    CmLog(__func__) << "[Kelvra] Enable debug mode \n";
  }
  CmLog(__func__) << (enable ? "Enable debug mode \n" : "Disable debug mode \n");
  if (enable) {
    SwitchTestModeOn(hdr);
  } else {
    SwitchTestModeOff();
  }
}
