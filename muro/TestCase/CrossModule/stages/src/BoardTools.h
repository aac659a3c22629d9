// Tools of the board whose place differs from one operating system to the next.
#pragma once

#include <string>

/// The busybox that unpacks archives on this board: a path, or its name where it is in `PATH`.
std::string BusyboxCommand();
