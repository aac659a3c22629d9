// The board's sandbox and its launcher. The programs are small shell scripts, so that these tests
// do not depend on the harness.
#include <gtest/gtest.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include "BoardFixture.h"

namespace test {
namespace {

namespace fs = std::filesystem;

std::vector<std::string> Shell(const std::string& script) {
  return {"/bin/sh", "-c", script};
}

std::string Joined(const std::vector<std::string>& words) {
  std::string line;
  for (const std::string& word : words) line += Quoted(word) + " ";
  return line;
}

class BoardTest : public BoardFixture {
 protected:
  /// Runs a script on the board until it ends and returns its exit status.
  int RunScript(const std::string& script, const BoardOptions& options = {}) {
    pty_ = &StartProgram(Shell(script), options);
    return pty_->Wait();
  }
  const std::string& Screen() const { return pty_->Transcript(); }

 private:
  Pty* pty_ = nullptr;
};

TEST_F(BoardTest, ReturnsTheExitStatusOfTheProgram) {
  EXPECT_EQ(0, RunScript("exit 0")) << Screen();
  EXPECT_EQ(7, RunScript("exit 7")) << Screen();
  EXPECT_EQ(128 + SIGTERM, RunScript("kill -TERM $$; sleep 60")) << Screen();
  EXPECT_EQ(127, StartProgram({"no-such-program"}).Wait());
}

TEST_F(BoardTest, WritesStayOnTheBoard) {
  const std::string name = "written-on-" + Board().parent_path().filename().string();
  ASSERT_EQ(0, RunScript("for d in /tmp /data /vendor /home /nvram /system /media /tmp/var/log; do "
                         "echo here >$d/" +
                         name +
                         " || exit 1; done; "
                         "echo 1 >/proc/usercalls && echo 2 >/proc/cvngdma/dbg && "
                         "echo 3 >/dev/cvnvdec && echo 4 >//sys//crt//register"))
      << Screen();
  EXPECT_EQ("here\n", FileText(OnBoard("/tmp/" + name)));
  EXPECT_EQ("here\n", FileText(OnBoard("/tmp/var/log/" + name)));
  EXPECT_FALSE(fs::exists("/tmp/" + name));
  EXPECT_EQ("2\n", FileText(OnBoard("/proc/cvngdma/dbg")));
  EXPECT_EQ("3\n", FileText(OnBoard("/dev/cvnvdec")));
  EXPECT_EQ("4\n", FileText(OnBoard("/sys/crt/register")));
}

TEST_F(BoardTest, ProgramIsRootOnlyOnTheBoard) {
  ASSERT_EQ(0, RunScript("id -u; [ $$ -ne 1 ]")) << Screen();
  EXPECT_EQ("0\n", Screen());
  EXPECT_NE(0, RunScript("/bin/mount -t tmpfs none /media")) << Screen();
}

TEST_F(BoardTest, FilesPersistUntilFreshClearsThem) {
  ASSERT_EQ(0, RunScript("echo kept >/data/kept; echo old >/sim/state; echo old >/sim/trace"));
  EXPECT_EQ(0, RunScript("cat /data/kept; [ ! -e /sim/state ] && [ ! -e /sim/trace ]")) << Screen();
  EXPECT_EQ("kept\n", Screen());
  EXPECT_EQ(0, RunScript("[ ! -e /data/kept ]", {.launcher = {"--fresh"}})) << Screen();
}

TEST_F(BoardTest, BoardKeptOnKeepsItsStateUntilPowerOff) {
  const BoardOptions keepOn{.launcher = {"--keep-on"}};
  const auto cvnsim = [&](const std::string& command) {
    return RunShell(CVN_BUILD_DIRECTORY "/bin/cvnsim --board " + Quoted(Board()) + " " + command);
  };
  ASSERT_EQ(0,
            RunScript("cvnsim unplug 0 2>&1; cvntester --version; echo 5 >/dev/cvnvdec", keepOn));
  EXPECT_EQ(0, cvnsim("fail K2V_RHAL_VPQ_SetNR -9").status);
  RunScript("cvntester --run UTVpqModule/19; cat /dev/cvnvdec; grep SetNR /sim/trace", keepOn);
  EXPECT_NE(std::string::npos, Screen().find(" = -9\n")) << Screen();
  EXPECT_NE(std::string::npos, Screen().find("\n5\n")) << Screen();
  EXPECT_EQ(2, RunScript("true", {.launcher = {"--keep-on", "--os", "sorvex"}})) << Screen();
  EXPECT_EQ(0, cvnsim("off").status);
  const ShellResult refused = cvnsim("fail K2V_RHAL_VPQ_SetNR -9");
  EXPECT_EQ(1, refused.status);
  EXPECT_NE(std::string::npos, refused.output.find(" is off; start it with")) << refused.output;
  // After the next power-on it is in its initial state.
  EXPECT_EQ(0, RunScript("cvntester --run UTVpqModule/19 && [ ! -s /dev/cvnvdec ] && "
                         "! grep 'SetNR.* = -9$' /sim/trace",
                         keepOn))
      << Screen();
}

TEST_F(BoardTest, OptionsArePassedToTheBoard) {
  ASSERT_EQ(0, RunScript("cat /sim/os; cat $CVNSIM_SCENARIO; echo \"$EXTRA\"",
                         {.launcher = {"--os", "pelxos", "--setenv", "EXTRA=a=b c"},
                          .scenario = "first line\n"}))
      << Screen();
  EXPECT_EQ("pelxos\nfirst line\na=b c\n", Screen());
  EXPECT_EQ(0, RunScript("[ -z \"$CVNSIM_SCENARIO\" ] && [ ! -e /sim/scenario ]")) << Screen();
}

TEST_F(BoardTest, InvalidScenarioLineIsReportedWithTheGivenFile) {
  const test::BoardOptions options{.scenario = "\nplug 9 1920x1080p60\n"};
  const std::string message = "scenario:2: invalid port '9': expected 0 to 3\n";
  const fs::path directory = Board().parent_path();
  fs::current_path("/");
  EXPECT_EQ(RunScript("cvntester --version", options), 2);
  EXPECT_EQ(Screen(), "simulated board: " + (directory / message).string());
  const std::vector<std::string> command = CommandLine(Shell("cvntester --version"), options);
  const ShellResult relative = RunShell("cd " + Quoted(directory) + " && " + Joined(command));
  EXPECT_EQ(relative.output, "simulated board: " + message);
}

TEST_F(BoardTest, DirectoriesOtherThanBoardsAreNotChanged) {
  const fs::path precious = Board().parent_path() / "photos";
  fs::create_directory(precious);
  std::ofstream(precious / "one") << "1";
  for (const std::string fresh : {"", " --fresh"}) {
    const ShellResult result =
        RunShell(Quoted(CVN_SOURCE_DIRECTORY "/sim/board/board-run") + " --board " +
                 Quoted(precious) + " --bin /tmp" + fresh + " -- true");
    EXPECT_EQ(2, result.status);
    EXPECT_EQ("board-run: " + precious.string() +
                  " is not empty and is not a board directory; nothing was changed\n",
              result.output);
  }
  EXPECT_EQ("1", FileText(precious / "one"));
  EXPECT_EQ(1, std::distance(fs::directory_iterator(precious), {}));
}

TEST_F(BoardTest, RunningBoardCannotBeStartedAgain) {
  Pty& first = StartProgram(Shell("echo up; read line"));
  ASSERT_TRUE(first.Expect("up\n"));
  const ShellResult second = RunShell(Joined(CommandLine(Shell("true"))));
  EXPECT_EQ(1, second.status);
  EXPECT_EQ("board-run: the board in " + Board().string() + " is already running\n", second.output);
  first.SendLine("");
  EXPECT_EQ(0, first.Wait()) << first.Transcript();
}

TEST_F(BoardTest, ProgramUsesTheOperatorsTerminal) {
  BoardOptions options;
  options.terminal.rows = 33;
  options.terminal.columns = 101;
  Pty& pty = StartProgram(Shell("trap 'stty size' WINCH; stty size; : >/dev/tty && echo tty; "
                                "until read line; do :; done"),
                          options);
  ASSERT_TRUE(pty.Expect("33 101\ntty\n"));
  ASSERT_TRUE(pty.WaitReading());
  pty.Resize(20, 60);
  ASSERT_TRUE(pty.Expect("20 60\n"));
  ASSERT_TRUE(pty.WaitReading());
  pty.SendLine("");
  EXPECT_EQ(0, pty.Wait()) << pty.Transcript();
}

TEST_F(BoardTest, CtrlCReachesOnlyTheProgram) {
  Pty& handled =
      StartProgram(Shell("trap 'echo caught' INT; (echo up; exec sleep 60); echo after; read x"));
  ASSERT_TRUE(handled.Expect("up\n"));
  handled.Send("\x03");
  ASSERT_TRUE(handled.Expect("caught\nafter\n"));
  ASSERT_TRUE(handled.WaitReading());
  handled.SendLine("");
  EXPECT_EQ(0, handled.Wait()) << handled.Transcript();

  Pty& killed = StartProgram(Shell("echo up; exec sleep 60"));
  ASSERT_TRUE(killed.Expect("up\n"));
  killed.Send("\x03");
  EXPECT_EQ(128 + SIGINT, killed.Wait()) << killed.Transcript();
}

TEST_F(BoardTest, CtrlZStopsAndForegroundContinues) {
  // An interactive shell takes the operator's place and provides the job control.
  Pty pty({"bash", "--norc", "--noprofile", "--noediting", "-i"}, {.environment = {"PS1=shell> "}});
  const std::string script = "echo up; until [ -e /data/go ]; do sleep 0.02; done; echo went on";
  ASSERT_TRUE(pty.Answer("shell> ", Joined(CommandLine(Shell(script)))));
  ASSERT_TRUE(pty.Expect("up\n"));
  pty.Send("\x1a");
  ASSERT_TRUE(pty.Expect("Stopped"));
  std::ofstream(OnBoard("/data/go")) << "go";
  ASSERT_TRUE(pty.Answer("shell> ", "sleep 0.2; echo still stopped"));
  ASSERT_TRUE(pty.Expect("still stopped\n"));
  EXPECT_EQ(std::string::npos, pty.Before().find("went on")) << pty.Transcript();
  ASSERT_TRUE(pty.Answer("shell> ", "fg"));
  ASSERT_TRUE(pty.Expect("went on\n"));
  ASSERT_TRUE(pty.Answer("shell> ", "exit"));
  EXPECT_EQ(0, pty.Wait()) << pty.Transcript();
}

TEST_F(BoardTest, ClosedOrEmptyInputIsEndOfInput) {
  const std::string command = Joined(CommandLine(Shell("exec 3<&0 && ! read x")));
  for (const std::string input : {"<&-", "</dev/null", "< <(:)"}) {
    const ShellResult result = RunShell("bash -c " + Quoted(command + input) + " | cat");
    EXPECT_EQ("", result.output) << input;
    EXPECT_EQ(0, RunShell("bash -c " + Quoted(command + input)).status) << input;
  }
}

TEST_F(BoardTest, StandInsLogTheirCalls) {
  ASSERT_EQ(0, RunScript("setenforce 0; ifconfig eth0 up; route; sync; udhcpc -i eth0 -s 'a b'"))
      << Screen();
  EXPECT_EQ((std::vector<std::string>{"setenforce 0", "ifconfig eth0 up", "route", "sync",
                                      "udhcpc -i eth0 -s a b"}),
            LogCommands());
}

TEST_F(BoardTest, UsbStickIsMountedAndKeepsChanges) {
  ASSERT_EQ(0, RunScript("true"));
  std::ofstream(Board() / "usb/stick/content") << "content";
  std::ofstream(Board() / "usb/stick/deleted") << "deleted";
  ASSERT_EQ(
      0, RunScript("mkdir /tmp/usb; mount -o ro /dev/sda1 /tmp/usb; mount -o remount,rw /tmp/usb; "
                   "mount /dev/block/sda1 /tmp/usb || exit 1; mount; cat /tmp/usb/content; "
                   "rm /tmp/usb/deleted; echo new >/tmp/usb/new; "
                   "mount /dev/block/sda1 /tmp/usb && exit 1; umount /tmp/usb || exit 1; "
                   "umount /tmp/usb && exit 1; [ -z \"$(ls /tmp/usb)\" ]"))
      << Screen();
  EXPECT_EQ(
      "mount: mounting /dev/sda1 on /tmp/usb failed: No such file or directory\n"
      "/dev/block/sda1 /tmp/usb\ncontent"
      "mount: mounting /dev/block/sda1 on /tmp/usb failed: Device or resource busy\n"
      "umount: can't unmount /tmp/usb: Invalid argument\n",
      Screen());
  EXPECT_EQ("new\n", FileText(Board() / "usb/stick/new"));
  EXPECT_FALSE(fs::exists(Board() / "usb/stick/deleted"));
}

TEST_F(BoardTest, PowerCutUnmountsTheStickAndResetsTheDrivers) {
  ASSERT_EQ(128 + SIGKILL,
            RunScript("mkdir /tmp/usb; echo below >/tmp/usb/kept; mount /dev/block/sda /tmp/usb; "
                      "echo new >/tmp/usb/new; echo testmode=1 >/dev/cvnvdec; "
                      "mkdir /tmp/cross_module; echo 1 >/tmp/cross_module/freeRun.config; "
                      ": >/tmp/OMX_MURO_CONFIG; : >/tmp/var/log/report; reboot"))
      << Screen();
  EXPECT_EQ("new\n", FileText(Board() / "usb/stick/new"));
  EXPECT_EQ(0, RunScript("cat /tmp/usb/*; mount; cat /dev/cvnvdec; "
                         "! ls -d /tmp/OMX_MURO_CONFIG /tmp/cross_module 2>/dev/null && "
                         "[ -e /tmp/var/log/report ]"));
  EXPECT_EQ("below\n", Screen());
}

TEST_F(BoardTest, ResetClearsTheStateInMemory) {
  EXPECT_EQ(0, RunScript("cvntester --version >/dev/null; mkdir /tmp/cross_module /data/kept; "
                         "echo 101 >/tmp/cross_module/file_format.cfg; : >/tmp/GST_DVO_FREERUN; "
                         "echo testmode=1 >/dev/cvndvo; cvnsim reset; cat /dev/cvndvo; "
                         "! ls -d /tmp/cross_module /tmp/GST_DVO_FREERUN 2>/dev/null && "
                         "[ -e /data/kept ]"))
      << Screen();
  EXPECT_EQ("", Screen());
}

TEST_F(BoardTest, RemovedStickStoresNoFilesUntilRemounted) {
  EXPECT_EQ(0, RunScript("cvntester --version >/dev/null; mkdir /tmp/usb; "
                         "mount /dev/block/sda1 /tmp/usb && echo 1 >/tmp/usb/first; "
                         "cvnsim stick out; ls /dev/block; echo 2 >/tmp/usb/second; "
                         "mkdir -p /tmp/usb/reports; cvnsim stick in; echo 3 >/tmp/usb/third; "
                         "umount /tmp/usb && mount /dev/block/sda1 /tmp/usb && "
                         "echo 4 >/tmp/usb/fourth"))
      << Screen();
  for (const char* name : {"first", "fourth"})
    EXPECT_TRUE(fs::exists(Board() / "usb/stick" / name)) << name << Screen();
  for (const char* name : {"second", "third", "reports"})
    EXPECT_FALSE(fs::exists(Board() / "usb/stick" / name)) << name << Screen();
}

TEST_F(BoardTest, NetworkTransfersFilesUntilItIsDisconnected) {
  if (Sandbox() != "bwrap") GTEST_SKIP() << "a separate network needs namespaces";
  ASSERT_EQ(0, RunScript("cd /data; : >empty; head -c 512 /dev/urandom >block; "
                         "head -c 300000 /dev/urandom >large; for f in empty block large; do "
                         "tftp -p -l $f 192.0.2.1 || exit 1; done; "
                         "/vendor/cvn_rootfs/usr/bin/tftp -p -l large -r again tftp.local && "
                         "/vendor/corvana/busybox tftp -g -r again -l got 127.0.0.1 && "
                         "cmp got large && tftp -g -r nix 127.0.0.1; [ $? = 1 ] && "
                         "busybox udhcpc -s script && busybox wget -q -O clip "
                         "'http://content.local/cross_module_content_v1/[R401]memc.ts'"))
      << Screen();
  for (const std::string name : {"empty", "block", "large"})
    EXPECT_EQ(FileText(OnBoard("/data/" + name)), FileText(Board() / "tftp" / name)) << name;
  EXPECT_EQ(FileText(OnBoard("/data/clip")),
            FileText(Board() / "usb/stick/cross_module_content_v1/[R401]memc.ts"));
  EXPECT_NE(0, RunScript("cvntester </dev/null >/dev/null; cvnsim network down; sleep 0.2; "
                         "cd /data; busybox udhcpc; tftp -p -l block -r cut 192.0.2.1"));
  EXPECT_NE(std::string::npos, Screen().find("no lease, failing")) << Screen();
  EXPECT_NE(std::string::npos, Screen().find("Network is unreachable")) << Screen();
  EXPECT_FALSE(fs::exists(Board() / "tftp/cut"));
}

TEST_F(BoardTest, RebootEndsTheSession) {
  EXPECT_EQ(128 + SIGKILL, RunScript("sleep 60 & echo before; reboot; echo never")) << Screen();
  EXPECT_EQ("before\nThe board reboots, this session ends.\n", Screen());
  EXPECT_EQ(std::vector<std::string>{"reboot"}, LogCommands());
}

TEST_F(BoardTest, WaitsAreScaled) {
  if (Sandbox() != "bwrap") GTEST_SKIP() << "the tools of this machine are linked statically";
  const std::string run = Joined(CommandLine(Shell("sleep 30; echo slept"), {.timeScale = 1000}));
  const ShellResult result = RunShell("timeout 10 " + run);
  EXPECT_EQ("slept\n", result.output);
  EXPECT_EQ(0, result.status);
}

TEST_F(BoardTest, RunsInAChrootWithoutNamespaces) {
  if (geteuid() != 0) GTEST_SKIP() << "only root can have a chroot";
  const BoardOptions chroot{.terminal = {.environment = {"CVN_SANDBOX=chroot"}}};
  EXPECT_EQ(7,
            RunScript("sync; : >/tmp/here; ls /; cvnsim >/dev/null 2>&1; [ $? -lt 126 ] && exit 7",
                      chroot))
      << Screen();
  EXPECT_TRUE(fs::exists(OnBoard("/tmp/here")));
  EXPECT_EQ(std::string::npos, Screen().find("root\n"))
      << "the machine's root directory is visible: " << Screen();
  EXPECT_EQ(std::vector<std::string>{"sync"}, LogCommands());
  EXPECT_EQ(128 + SIGKILL, RunScript("reboot; echo never", chroot)) << Screen();
}

TEST_F(BoardTest, OrdinaryUserHasTheSameBoard) {
  if (Sandbox() != "bwrap") GTEST_SKIP() << "an ordinary user has no sandbox here";
  if (geteuid() != 0) GTEST_SKIP() << "this whole test program runs as an ordinary user";
  const std::string asNobody = "setpriv --reuid 65534 --regid 65534 --clear-groups ";
  if (RunShell(asNobody + "test -x " + CVN_SOURCE_DIRECTORY "/sim/board/board-run").status != 0) {
    GTEST_SKIP() << "the checkout cannot be read by an ordinary user";
  }
  fs::remove_all(Board());
  ASSERT_EQ(0, RunShell("chown 65534 " + Quoted(Board().parent_path())).status);
  const ShellResult result = RunShell(
      asNobody + Joined(CommandLine(Shell("id -u; echo x >/data/mine; reboot; echo never"))));
  EXPECT_EQ(128 + SIGKILL, result.status);
  EXPECT_EQ("0\nThe board reboots, this session ends.\n", result.output);
  EXPECT_EQ("x\n", FileText(OnBoard("/data/mine")));
}

TEST(RunScriptTest, BuildsEverythingThatSessionsUse) {
  const ShellResult inputs =
      RunShell("ninja -C " CVN_BUILD_DIRECTORY " -t commands simulated_board");
  EXPECT_EQ(0, inputs.status) << inputs.output;
  for (const char* product : {"bin/cvndumpgen", "share/man/man1/cvntester.1",
                              "share/bash-completion/completions/cvntester", "bin/cvnsim"}) {
    EXPECT_NE(std::string::npos, inputs.output.find(product)) << product;
  }
}

TEST(RunScriptTest, RejectsInvalidOptionsImmediately) {
  struct WrongCall {
    const char* arguments;
    const char* message;
  };
  constexpr WrongCall kCalls[] = {
      {"--os windows", "invalid --os 'windows': expected android, sorvex or pelxos; usage: "},
      {"--scenario", "--scenario requires a value; usage: "},
      {"--scenario /no/such/file", "cannot read the scenario /no/such/file\n"},
      {"--bord x", "unknown option --bord; usage: "},
      {"stray", "unknown option stray; usage: "},
      {"--board ''", "--board requires a directory; usage: "},
  };
  for (const WrongCall& call : kCalls) {
    const ShellResult result =
        RunShell(Quoted(CVN_SOURCE_DIRECTORY "/run.sh") + " " + call.arguments);
    EXPECT_EQ(2, result.status) << call.arguments;
    EXPECT_TRUE(result.output.starts_with("run.sh: " + std::string(call.message))) << result.output;
    EXPECT_EQ(result.output.size() - 1, result.output.find('\n')) << "one line: " << result.output;
  }
}

}  // namespace
}  // namespace test
