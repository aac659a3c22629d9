#include "BoardFiles.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <ifaddrs.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <regex>
#include <sstream>
#include <stdexcept>

#include "DumpGenerator.h"
#include "PlayedCases.h"
#include "Settings.h"
#include "TestCaseCatalogue.h"
#include "TestDirectory.h"

namespace crossmodule {

namespace {

// The directories of drivers and logs have fixed paths.
[[maybe_unused]] const bool kAlone =
    test::HaveAlone("/tmp/cross_module") && test::HaveAlone("/tmp/var/log");

std::string Dump(const player::Clip& clip, int64_t clock, player::Stage stage,
                 const std::vector<player::Defect>& defects) {
  std::ostringstream text;
  player::WriteDump(text, clip, {.clock90k = clock}, stage, defects);
  return text.str();
}

constexpr const char* kBoardFiles[] = {kAndroid, kPelxos, kSorvex};

constexpr const char* kOtherFiles[] = {"/dev/block/",
                                       "/tmp/usb/",
                                       "/media/",
                                       "/data/noAndroidMode",
                                       "/tmp/enableDebugMode",
                                       "/tmp/cross_module/isPcb"};

std::string pretendedFile;
std::vector<std::string> pretendedFiles;
int looksWithoutAddress = -1;

bool IsOneOf(const std::vector<std::string>& paths, const std::string& path) {
  return std::ranges::find(paths, path) != paths.end();
}

}  // namespace

// The libc's function would look at the machine on which the tests run.
extern "C" int access(const char* path, int mode) {
  for (const std::string file : kBoardFiles) {
    if (file == path) return file == pretendedFile ? 0 : -1;
  }
  for (const std::string beginning : kOtherFiles) {
    if (std::string(path).starts_with(beginning)) return IsOneOf(pretendedFiles, path) ? 0 : -1;
  }
  return faccessat(AT_FDCWD, path, mode, 0);
}

extern "C" int getifaddrs(ifaddrs** all) noexcept {
  static char name[] = "eth0";
  static sockaddr address = {.sa_family = AF_INET, .sa_data = {}};
  static ifaddrs ethernet = {};
  ethernet.ifa_name = name;
  ethernet.ifa_addr = looksWithoutAddress == 0 ? &address : nullptr;
  if (looksWithoutAddress > 0) --looksWithoutAddress;
  *all = &ethernet;
  return 0;
}

extern "C" void freeifaddrs(ifaddrs*) noexcept {}

void PretendBoardFile(const std::string& path) {
  pretendedFile = path;
}

void PretendFiles(const std::vector<std::string>& paths) {
  pretendedFiles = paths;
}

void PretendAddressAtLook(int number) {
  looksWithoutAddress = number - 1;
}

Home::Home() : path_(testing::TempDir() + "cross_module_XXXXXX") {
  if (mkdtemp(path_.data()) == nullptr) throw std::runtime_error("no directory " + path_);
  path_ += '/';
  SetCrossModuleHome(path_);
}

Home::~Home() {
  std::filesystem::remove_all(path_);
}

void Home::Write(const std::string& name, const std::string& text) const {
  const std::filesystem::path path = path_ + name;
  std::filesystem::create_directories(path.parent_path());
  std::ofstream(path) << text;
}

void Home::Play(int testCase, const std::vector<player::Defect>& defects) {
  Init_Module_List();
  const player::PlayedCase& played = player::FindCase(testCase);
  dumps_.clear();
  for (const player::Stage stage : player::kAllStages) {
    const std::string name = player::DumpNameOf(played, stage);
    Write("golden_data/playback/" + name, Dump(played.clip, 1000, stage, {}));
    Write("dump_tmp/" + name, Dump(played.clip, 2000, stage, defects));
    dumps_.push_back(path_ + "dump_tmp/" + name);
  }
  for (std::size_t i = 0; i < dumps_.size(); ++i) ModuleTypeList()[i].dumpPath = &dumps_[i];
}

int RunForReal(const std::string& command) {
  std::FILE* shell = popen((command + " >/dev/null 2>&1").c_str(), "r");
  const int status = shell == nullptr ? -1 : pclose(shell);
  return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

bool MovesAReport(const std::string& command) {
  return command.starts_with("mv ") ||
         (command.starts_with("mkdir -p ") && command.ends_with("/report/"));
}

void RemoveVolatileFiles() {
  for (const char* file :
       {"file_format.cfg", "freeRun.config", "IsSendReportIfPass.config", "report.verify.tmp.txt",
        "report.verify.tmp.txt.Orig", "report.verify.tmp.txt.tmp"})
    std::filesystem::remove(std::string("/tmp/cross_module/") + file);
}

std::string WithoutColours(const std::string& text) {
  static const std::regex kColour("\033\\[[0-9;]*m");
  return std::regex_replace(text, kColour, "");
}

}  // namespace crossmodule
