// What a playback run needs of the board around it: the player's environment and the
// drivers' test mode.
#pragma once

/// Lets the player find its own GStreamer tree. Enabling works once in a program; disabling only
/// takes `LD_LIBRARY_PATH` out of the environment.
void Setup_GST_Env_Var(bool enable);

/// Switches the drivers of all stages into test mode, each with the path of its dump, or out of it.
/// `hdr` is 1 for content of high dynamic range. One operating system leaves its drivers alone
/// unless a marker file asks for it.
void EnableDebugMode(bool enable, int hdr);
