#include "Environment.h"

#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <string>
#include <vector>

#include "../../stages/src/BoardSystem.h"
#include "../../stages/src/CrossModuleLog.h"
#include "../../stages/src/SettingFile.h"
#include "../../stages/src/Settings.h"
#include "../../stages/src/TestCaseCatalogue.h"
#include "Shell.h"

namespace {

// The picture-quality driver has a test mode but no dump. It is switched after the stages of the
// picture.
constexpr const char* kPictureQualityOn[] = {"echo testmode=1 > /dev/vpqdev",
                                             "echo testmode=2 > /dev/vpqdev"};  // index is `hdr`
constexpr char kPictureQualityOff[] = "echo testmode=0 > /dev/vpqdev";

/// Variables that refer to paths of the GStreamer tree, with the part of the path after the home.
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

/// Passes the stages to `take` in the order in which test modes are switched, and calls
/// `betweenPictureAndSound` between those of the picture and that of the sound.
template <class Take, class Between>
void ForEachTestMode(Take take, Between betweenPictureAndSound) {
  std::vector<const Stage*> stages;
  for (const Stage& stage : kStages) stages.push_back(&stage);
  std::ranges::sort(stages, {}, &Stage::testModeStep);
  const auto sound = std::ranges::find(stages, 0, &Stage::pictureStep);
  std::for_each(stages.begin(), sound, take);
  betweenPictureAndSound();
  std::for_each(sound, stages.end(), take);
}

void SwitchTestModeOn(int hdr) {
  ForEachTestMode(
      [](const Stage* stage) {
        RunShell(Replaced(stage->testModeOn, "{dump}", *Get_Module_by_ID(stage->module)->dumpPath));
      },
      [&] { RunShell(kPictureQualityOn[hdr != 0 ? 1 : 0]); });
}

void SwitchTestModeOff() {
  RunShell(std::string("rm -f ") + kOmxConfiguration);
  ForEachTestMode(
      [](const Stage* stage) {
        if (stage->testModeOff != nullptr) RunShell(stage->testModeOff);
      },
      [] { RunShell(kPictureQualityOff); });
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
  const BoardSystem& system = ThisBoardSystem();
  if (system.hasOwnPlayer) {
    RunShell("dvo-scalar-setup");
    return;
  }
  if (system.putsTreeInPath) {
    SetVariable("LD_LIBRARY_PATH", CrossModuleHome() + "gst_root/usr/lib");
    PutTreeInFrontOfPath();
  }
  SetTreeVariables();
  StartTestPicture();
}

void EnableDebugMode(bool enable, int hdr) {
  Init_Module_List();
  if (const char* marker = ThisBoardSystem().debugModeMarker; marker != nullptr) {
    if (access(marker, F_OK) != 0) {
      CmLog(__func__) << "[Kelvra] SKIP enable Enable debug mode. hint: touch " << marker
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
