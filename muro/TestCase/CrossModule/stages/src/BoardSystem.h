// The operating systems of boards. Everything that differs between them is in their rows.
#pragma once

#include <cstdint>
#include <span>
#include <string>

enum BOARD_OS_TYPE : int32_t {
  OS_ANDROID_O = 1,
  OS_SORVEX = 2,
  OS_PELXOS = 3,
};

/// One operating system. {home} in its texts represents the cross-module home.
struct BoardSystem {
  BOARD_OS_TYPE os;
  const char* marker;  // file that only this system has
  const char* home;    // of settings, golden data and reports, with its closing "/"
  const char* usbMountPoint;
  bool remountsStick;  // the stick is mounted read-only, and reports go to it

  // Tools.
  const char* busybox;         // unpacks archives
  const char* networkBusybox;  // requests an address
  const char* tar;             // packs archives
  const char* tftp;            // sends files

  // The player of files: its command up to the content file and after it.
  const char* filePlayer;
  const char* filePlayerEnd;
  const char* playerLogTag;

  // The player's environment and the drivers' test mode.
  bool hasOwnPlayer;            // uses the system's GStreamer and nothing of our tree
  bool putsTreeInPath;          // of programs and libraries
  const char* debugModeMarker;  // drivers are left alone unless this file exists; null: never

  // Shell commands of the preparation and around a run.
  std::span<const char* const> homeCommands;  // run when the home is created
  const char* prepareMessage;                 // null: none
  std::span<const char* const> prepareCommands;
  std::span<const char* const> runStart;
  std::span<const char* const> runEnd;
};

/// The board's operating system (`BOARD_OS_TYPE`), recognised by its marker file. Unknown boards
/// count as Android, with a message.
int Get_Board_OS_System();

/// The row of this board's operating system.
const BoardSystem& ThisBoardSystem();
