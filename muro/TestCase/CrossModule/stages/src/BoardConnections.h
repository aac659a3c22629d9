// The USB stick and the network.
#pragma once

/// Waits up to ten seconds for a USB stick and mounts it. Returns 0, or -1 when there is none.
int Mount_USB();

/// Brings the board's Ethernet up, once after each boot, when content, reports or dumps need it.
void Setup_PCB_IP();
