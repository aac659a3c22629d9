// A separate cross-module home for a test, and the files that earlier programs left in it.
#pragma once

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <filesystem>
#include <functional>
#include <string>

#include "BoardFiles.h"
#include "Scripted.h"
#include "SettingFile.h"

/// A message of `function` as the console shows it.
inline std::string Message(const std::string& function, const std::string& text) {
  return "\033[1;33m[CrossModule][" + function + "] \033[0;37m" + text;
}

/// The home as the initialisation of the environment leaves it, with an empty directory "config".
class TemporaryHome : public testing::Test {
 protected:
  TemporaryHome() { std::filesystem::create_directory(Home() + "config"); }

  const std::string& Home() const { return home_.Path(); }
  std::string Text(const std::string& file) const { return scripted::ReadFile(Home() + file); }
  bool Exists(const std::string& file) const { return std::filesystem::exists(Home() + file); }
  void Write(const std::string& file, const std::string& text) const { home_.Write(file, text); }

  /// Dumps of a test case, equal to its golden data.
  void PutDumps(int testCase) { home_.Play(testCase, {}); }

 private:
  crossmodule::Home home_;
};

/// Like TemporaryHome, for code that also keeps files that are lost at a reboot.
class AfterReboot : public TemporaryHome {
 protected:
  AfterReboot() { RemoveFiles(); }
  ~AfterReboot() override {
    RemoveFiles();
    rmdir(kDumpDirectory);  // unless it contains other files
  }

  static std::string Path(const std::string& file) { return kDumpDirectory + file; }
  static void WriteVolatile(const std::string& file, const std::string& text) {
    OpenEmpty(Path(file)) << text;
  }

 private:
  static void RemoveFiles() {
    for (const char* file : {"freeRun.config", "IsSendReportIfPass.config", "file_format.cfg"}) {
      std::filesystem::remove(Path(file));
    }
  }
};

/// Runs `body` in a separate program that has ended when this returns: only files remain.
inline void InAnEarlierProgram(const std::function<void()>& body) {
  std::fflush(nullptr);
  const pid_t child = fork();
  if (child == 0) {
    body();
    std::fflush(stdout);
    _exit(testing::Test::HasFailure() ? 1 : 0);
  }
  int status = -1;
  waitpid(child, &status, 0);
  EXPECT_EQ(status, 0) << "see above";
}
