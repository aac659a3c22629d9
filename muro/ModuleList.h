// The modules of this harness, listed by hand: what is not here does not exist.
#pragma once

#include <span>

#include "Module.h"

struct ModuleEntry {
  const char* className;
  Module* (*instance)();  // creates the module on first use
  const char* notice;     // a line printed before the module is initialised, or empty
};

/// All modules in the order in which they are initialised. Menus show them in the order of their
/// ids.
std::span<const ModuleEntry> ModuleList();
