#include "HalCheck.h"

#include <cxxabi.h>
#include <dlfcn.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <memory>
#include <vector>

#include "ExitStatus.h"
#include "Problem.h"
#include "Text.h"

namespace runner {
namespace {

/// The symbol as it is written in C++; C functions as they are.
std::string Demangled(const char* symbol) {
  const std::unique_ptr<char, void (*)(void*)> name(
      abi::__cxa_demangle(symbol, nullptr, nullptr, nullptr), std::free);
  return name == nullptr ? symbol : name.get();
}

struct Symbols {
  std::size_t needed = 0;
  std::vector<std::string> missing;
  std::string file;  // which defines those that are there
};

Symbols FindSymbols(void* library) {
  Symbols symbols;
  for (const char* const* name = kNeededHalSymbols; *name != nullptr; ++name) {
    ++symbols.needed;
    const void* address = dlsym(library, *name);
    Dl_info info = {};
    if (address == nullptr) {
      symbols.missing.push_back(Demangled(*name));
    } else if (symbols.file.empty() && dladdr(address, &info) != 0 && info.dli_fname != nullptr) {
      symbols.file = info.dli_fname;
    }
  }
  return symbols;
}

int PrintResult(const Symbols& symbols, const std::string& library) {
  std::printf("%s: %zu of %zu functions found\n", CleanLine(library).c_str(),
              symbols.needed - symbols.missing.size(), symbols.needed);
  for (const std::string& name : symbols.missing) std::printf("missing: %s\n", name.c_str());
  std::printf("Layouts of records are not compared here; cvnhalcheck compares them on a PC\n");
  if (std::fflush(stdout) != 0) return kHarnessFailed;
  return symbols.missing.empty() ? kAllPassed : kSomeFailed;
}

/// What the loader is given: a file of the working directory is a path, too.
std::string PathOf(const std::string& library) {
  const bool isName = library.find('/') == std::string::npos;
  return isName && access(library.c_str(), F_OK) == 0 ? "./" + library : library;
}

}  // namespace

bool HalIsComplete() {
  const Symbols symbols = FindSymbols(RTLD_DEFAULT);
  if (symbols.missing.empty()) return true;
  PrintProblem("the board's HAL library lacks " + std::to_string(symbols.missing.size()) + " of " +
               std::to_string(symbols.needed) + " functions: " + Joined(symbols.missing, ", "));
  return false;
}

int CheckHal(const std::string& library) {
  if (library.empty()) {
    const Symbols symbols = FindSymbols(RTLD_DEFAULT);
    return PrintResult(symbols, symbols.file.empty() ? "the loaded libraries" : symbols.file);
  }
  const std::string path = PathOf(library);
  void* loaded = dlopen(path.c_str(), RTLD_LAZY | RTLD_LOCAL);
  if (loaded == nullptr) {
    const char* reason = dlerror();
    PrintProblem(reason == nullptr ? library + ": cannot be loaded" : reason);
    const bool absent = path.find('/') != std::string::npos && access(path.c_str(), F_OK) != 0;
    return absent ? kUsage : kSomeFailed;
  }
  return PrintResult(FindSymbols(loaded), library);  // stays loaded: it may have threads
}

}  // namespace runner
