// Tests of the device's state. Each takes a scratch buffer, which it ignores.
#pragma once

/// 0 if the device reports no reason for not being ready or healthy, else 1. The return value of
/// the HAL call is ignored.
int Wrapper_TestFunc_Device_Ready(char*);
int Wrapper_TestFunc_Device_Healthy(char*);

/// Prints the media clock and the broadcast clock. Returns 0.
int Wrapper_TestFunc_Device_Get_Clock_Value(char*);

/// Prints every second whether the slave is ready, until the program is interrupted.
int Wrapper_TestFunc_Slave_Ready(char*);
