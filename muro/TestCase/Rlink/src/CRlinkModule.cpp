#include "CRlinkModule.h"

namespace {

constexpr ST_THAL_TEST_CASE_T kTests[] = {
    {0, "TestFunc_OpenCloseSession", "Test opening & closing session.", nullptr, true},
    {1, "TestFunc_SendAsync", "Test sending async command.", nullptr, true},
    {2, "TestFunc_Multi_RLink", "Test opening & closing two sessions in same thread.", nullptr,
     true},
    {3, "TestFunc_Multi_RLink_1", "Test sending command in different thread simultaneously.",
     nullptr, true},
    {4, "TestFunc_Multi_RLink_2",
     "Test opening & closing session in different process simultaneously.", nullptr, true},
    {5, "TestFunc_Multi_Session", "Test sending async command in different session.", nullptr,
     true},
    {6, "TestFunc_Buffer_Send", "Test sending buffer.", nullptr, true},
    {7, "TestFunc_Buffer_Get_1", "Test getting data from buffer with method 1.", nullptr, true},
    {8, "TestFunc_Buffer_Get_2", "Test getting data from buffer with method 2.", nullptr, true},
    {9, "TestFunc_Multi_RLink_Send", "Test sending command in different session.", nullptr, true},
    {10, "TestFunc_Multi_RLink_1_Send", "Test sending command in different thread simultaneously.",
     nullptr, true},
    {11, "TestFunc_Multi_RLink_2_Send", "Test sending command in different process simultaneously.",
     nullptr, true},
    {12, "TestFunc_Send_Test1", "Testing sending command with specific parameter.", nullptr, true},
    {13, "TestFunc_Send_Test2", "Testing sending command with another specific parameter.", nullptr,
     true},
    {14, "TestFunc_Buffer_AllocateRelease", "Test allocating and releasing buffer only.", nullptr,
     true},
    {15, "TestFunc_InvokeCommand_Test1", "Test receving invokecommand with specific parameter.",
     nullptr, true},
    {16, "TestFunc_InvokeCommand_Test2",
     "Test receiving invokecommand with another specific parameter.", nullptr, true},
    {17, "TestFunc_Send_Test1_Multiple",
     "Test sending command with specific parameter multiple times.", nullptr, true},
    {18, "TestFunc_Send_Test2_Multiple",
     "Test sending command with another specific parameter multiple times.", nullptr, true},
    {19, "TestFunc_Buffer_Send_Multiple", "Test sending buffer multiple times.", nullptr, true},
    {20, "TestFunc_Buffer_Get_1_Multiple",
     "Test getting data from buffer with method 1 multiple times.", nullptr, true},
    {21, "TestFunc_Buffer_Get_2_Multiple",
     "Test getting data from buffer with method 2 multiple times.", nullptr, true},
    {22, "TestFunc_Buffer_Flush_Send", "Test flushing buffer for sending.", nullptr, true},
    {23, "TestFunc_Buffer_Flush_Recv", "Test flushing buffer for receving.", nullptr, true},
    {24, "TestFunc_Buffer_Flush_Send_Multiple", "Test flushing buffer for sending multiple times.",
     nullptr, true},
    {25, "TestFunc_Buffer_Flush_Recv_Multiple", "Test flushing buffer for receving multiple times.",
     nullptr, true},
    {26, "TestFunc_STC", "Test STC Tracking.", nullptr, true},
};

}  // namespace

CRlinkModule::CRlinkModule() {
  Declare(EN_MURO_RLINK, kRlink, "Rlink Module Test", "For Rlink Module Test", kTests);
}
