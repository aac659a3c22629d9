// The panel of a running board: its page in a browser, its camera, the player's pictures.
#include <gtest/gtest.h>
#include <unistd.h>

#include <filesystem>
#include <string>

#include "BoardFixture.h"

namespace test {
namespace {

namespace fs = std::filesystem;

constexpr char kWithSignal[] =
    "lock 0 0\n"
    "plug 0 1920x1080p60\n";

class PanelTest : public BoardFixture {
 protected:
  std::string CvnsimLine() const {
    return std::string(CVN_BUILD_DIRECTORY "/bin/cvnsim --board ").append(Quoted(Board()));
  }

  fs::path Directory() const { return Board().parent_path(); }

  /// Starts the page server, which runs until `EndPage` or the end of this process, and returns its
  /// address.
  std::string StartPage() {
    const std::string out = Quoted(Directory() / "page"), pid = Quoted(Directory() / "page-pid");
    const std::string start = CvnsimLine() + " panel --with " + std::to_string(getpid()) + " >" +
                              out + " 2>&1 & echo $! >" + pid;
    EXPECT_EQ(RunShell(start + "; until grep -q ^Panel: " + out + "; do sleep 0.02; done").status,
              0);
    const std::string line = FileText(Directory() / "page");
    const size_t begin = line.find("http://");
    return begin == std::string::npos ? "" : line.substr(begin, line.find('\n') - begin);
  }

  void EndPage() { RunShell("kill $(cat " + Quoted(Directory() / "page-pid") + ")"); }

  /// Takes a picture and returns the colour of one pixel, such as "ff0000".
  std::string Pixel(int x, int y) const {
    const std::string file = Quoted(Directory() / "camera.png");
    const ShellResult result =
        RunShell(CvnsimLine() + " camera " + file + " && ffmpeg -v error -i " + file +
                 " -vf crop=1:1:" + std::to_string(x) + ":" + std::to_string(y) +
                 " -f rawvideo -pix_fmt rgb24 - | od -An -tx1");
    std::string color;
    for (const char c : result.output) {
      if (c > ' ') color += c;
    }
    return color;
  }
};

TEST_F(PanelTest, PageWorksInABrowser) {
  if (RunShell("chromium --version && /usr/bin/python3 -c 'import websocket'").status != 0)
    GTEST_SKIP() << "chromium or python3-websocket cannot be installed here";
  Pty& harness = Start({.scenario = kWithSignal, .timeScale = 100});
  ASSERT_TRUE(harness.Expect("Please enter a choice : "));
  // Video tests, scaler, HDR10: connects port 0 to the whole panel and leaves it connected.
  for (const char* choice : {"3", "2", "29"}) harness.SendLine(choice);
  ASSERT_TRUE(harness.Expect("'Y' or 'N'"));
  const std::string address = StartPage();
  const ShellResult worked =
      RunShell(Quoted(CVN_SOURCE_DIRECTORY "/tests/e2e/panel_page.py") + " " + Quoted(address) +
               " " + Quoted(CvnsimLine()) + " " + Quoted(Directory()));
  EndPage();
  EXPECT_EQ(worked.status, 0) << worked.output;
}

}  // namespace
}  // namespace test
