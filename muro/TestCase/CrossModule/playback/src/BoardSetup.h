// Preparing a board for playback tests, and its Android user interface. Both end in a reboot.
#pragma once

/// Makes the cross-module home, unpacks the player's tree and the golden data into it, does what
/// the operating system needs besides and reboots.
void PrepareBoard();

/// Whether the board starts its Android user interface.
bool IsAndroidEnabled();

/// Switches the Android user interface on or off; reboots when that changes something.
void EnableAndroid(bool enable);
