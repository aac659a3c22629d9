// The USB stick and the network.
#pragma once

/// Waits up to ten seconds for a USB stick and mounts it. Returns 0, or -1 if there is none.
int Mount_USB();

/// Mounts the stick unless this program has mounted it already and it is still there. Returns
/// whether files can be written to it.
bool ReachStick();

/// Brings the board's Ethernet up, once per boot, if content, reports or dumps need it. Returns 0
/// if it is up; -1 if it got no address (can be tried again); 1 if nothing needs it.
int Setup_PCB_IP();
