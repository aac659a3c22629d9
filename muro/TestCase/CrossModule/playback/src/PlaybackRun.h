// One playback test case from start to end: the player between a start step and an end step.
#pragma once

#include <string>

class CM_TestCase;

/// Manual play: the operator plays the content by other means and a key press ends the run. Off
/// until set; then content, environment and GStreamer variables are the operator's business.
void Set_Manual_Play(bool manual);
bool Get_Manual_Play();

/// Clears old dumps and logs, sees to content and environment and switches the drivers into test
/// mode; `hdr` is 1 for content of high dynamic range. Returns 0, or -1 when the run must not go
/// on.
int Test_Start(int hdr);

/// Switches the test mode off and keeps the dumps. Returns what `Backup_Dump_File` does.
int Test_End();

/// Plays a test case of the catalogue and keeps its dumps. `progress` is shown with the time that
/// the player takes; empty: nothing is shown. Returns 0; 1 when the run could not start; -1 when
/// the test case or its content does not exist.
int Run_Playback_Test_Case(CM_TestCase* tc, const std::string& progress = "");
