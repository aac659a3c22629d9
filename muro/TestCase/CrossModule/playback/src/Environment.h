// Prepares the board for a playback run: the player's environment and the drivers' test mode.
#pragma once

/// Makes the player use its own GStreamer tree. Enabling works only once per program; disabling
/// only removes `LD_LIBRARY_PATH` from the environment.
void Setup_GST_Env_Var(bool enable);

/// Switches the drivers of all stages into test mode, each with the path of its dump, or out of it.
/// `hdr` is 1 for content of high dynamic range. On one operating system the drivers are left alone
/// unless a marker file exists.
void EnableDebugMode(bool enable, int hdr);
