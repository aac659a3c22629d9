// A board of one operating system with a temporary home, and its commands as text.
#pragma once

#include <string>
#include <vector>

#include "Settings.h"
#include "TemporaryHome.h"
#include "TestCaseCatalogue.h"

class PreparedBoard : public AfterReboot {
 protected:
  using Lines = std::vector<std::string>;

  PreparedBoard() {
    Write("config/tftp_ip.cfg", "10.0.0.9\n");
    std::filesystem::create_directory(Home() + "cross_module_content_v1");
  }

  /// Switches the board on with a content source.
  void Boot(const char* os, int source) {
    crossmodule::PretendBoardFile(os);
    CM_Playback_Init();
    SetCrossModuleHome(Home());
    Write("config/selectHttpUsb.cfg", std::to_string(source) + "\n");
    scripted::Play("", Init_TestCase_List);
    Init_Module_List();
  }

  /// The lines of a text; "HOME/" is replaced by the home.
  Lines Commands(std::string text) const {
    text = Replaced(text, "HOME/", Home());
    Lines lines;
    for (std::size_t from = 0; from < text.size();) {
      const std::size_t end = text.find('\n', from);
      lines.push_back(text.substr(from, end - from));
      from = end + 1;
    }
    return lines;
  }

  /// Pretends that a USB stick with the content of a test case is present, in addition to other
  /// files.
  static void PlugStick(int testCase, Lines files = {}) {
    files.push_back("/dev/block/sda");
    files.push_back(UsbMountPoint() + "/cross_module_content_v1/" +
                    FindTestCase(testCase)->contentFile);
    crossmodule::PretendFiles(files);
  }
};
