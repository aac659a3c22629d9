// The modules of this harness, listed by hand: a module that is not in this list does not exist.
#pragma once

#include <cstdint>
#include <span>

#include "Module.h"

/// Whether a module's tests depend on the tests before them.
enum class TestOrder : uint8_t { kAny, kKept };

struct ModuleEntry {
  const char* className;
  TestOrder order;
  Module* (*instance)();  // creates the module on first use
  const char* notice;     // a line printed before the module is initialised, or null
};

/// All modules in the order in which they are initialised. Menus show them in the order of their
/// ids.
std::span<const ModuleEntry> ModuleList();
