// The USB stick and the network.
#pragma once

/// Waits up to ten seconds for a USB stick and mounts it. Returns 0, or -1 when there is none.
int Mount_USB();

/// Mounts the stick unless this program has it mounted and it is still there. Returns whether files
/// can be written to it.
bool ReachStick();

/// Brings the board's Ethernet up, once after each boot, when content, reports or dumps need it.
/// Returns 0 when it is up; -1 when it got no address, which can be tried again; 1 when nothing
/// needs it.
int Setup_PCB_IP();
