// Location of the content, and the player command for it.
#include <unistd.h>

#include <cstdlib>
#include <string>

#include "Ansi.h"
#include "BoardSystem.h"
#include "CrossModuleLog.h"
#include "Settings.h"
#include "Shell.h"

namespace {

constexpr char kContentDirectory[] = "cross_module_content_v1/";
constexpr char kFunction[] = "Init_Content_Path";

std::string contentHome;
std::string playerCommandPrefix;

std::string UsbContent() {
  return UsbMountPoint() + "/" + kContentDirectory;
}

std::string EmmcContent() {
  return CrossModuleHome() + kContentDirectory;
}

std::string HttpContent() {
  const char* server = std::getenv("CVN_HTTP_CONTENT_SERVER");
  return std::string("http://") + (server == nullptr ? "content.local" : server) + "/" +
         kContentDirectory;
}

std::string FilePlayer() {
  return WithHome(ThisBoardSystem().filePlayer);
}

void CopyToEmmc() {
  if (access(EmmcContent().c_str(), F_OK) == 0) return;
  if (!Check_If_CrossModulePlayback_Env_Setup()) {
    CmLog(kFunction) << ansi::kFail << "ERROR: no " << CrossModuleHome()
                     << ", content is not copied\n";
    return;
  }
  CmLog(kFunction) << "Copy content from " << UsbContent() << " to " << EmmcContent()
                   << " , please wait...\n";
  RunShell("mkdir -p " + EmmcContent() + "; cp " + UsbContent() + "* " + EmmcContent());
}

}  // namespace

const std::string& ContentHome() {
  return contentHome;
}

const std::string& PlayerCommandPrefix() {
  return playerCommandPrefix;
}

int Init_Content_Path(USB_HTTP_MODE_TYPE mode) {
  switch (mode) {
    case MODE_HTTP:
      contentHome = HttpContent();
      playerCommandPrefix = "gst_root/usr/bin/gst-cvn-test-1.0 --gst-debug=0 -c IP1+IP2  -pu ";
      CmLog(kFunction) << "Current setting: HTTP, testing file home = " << contentHome << '\n';
      return 0;
    case MODE_EMMC:
      CopyToEmmc();
      contentHome = EmmcContent();
      playerCommandPrefix = FilePlayer();
      CmLog(kFunction) << "Current setting: EMMC,  testing file home = " << contentHome << '\n';
      return 0;
    case MODE_USB:
      contentHome = UsbContent();
      playerCommandPrefix = FilePlayer();
      return 0;
  }
  CmLog(kFunction) << "Can not recognize your selection!\n";
  return -1;
}
