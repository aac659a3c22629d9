// Tests of the device's state. Each takes a scratch buffer that it ignores.
#pragma once

/// 0 when the device tells nothing that keeps it from being ready or healthy, else 1. What the HAL
/// call returns is not looked at.
int Wrapper_TestFunc_Device_Ready(char*);
int Wrapper_TestFunc_Device_Healthy(char*);

/// Prints the media and the broadcast clock. Returns 0.
int Wrapper_TestFunc_Device_Get_Clock_Value(char*);

/// Prints every second whether the slave is ready, until the program is interrupted.
int Wrapper_TestFunc_Slave_Ready(char*);
