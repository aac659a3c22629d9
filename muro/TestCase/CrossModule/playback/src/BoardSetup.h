// Prepares a board for playback tests and switches its Android user interface. Both end in a
// reboot.
#pragma once

/// Creates the cross-module home, unpacks the player's tree and the golden data into it, does what
/// else the operating system needs and reboots.
void PrepareBoard();

/// Whether the board starts its Android user interface.
bool IsAndroidEnabled();

/// Switches the Android user interface on or off; reboots if that changes anything.
void EnableAndroid(bool enable);
