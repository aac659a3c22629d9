// Graphics layer (GAL) and its variant on the other side of the inter-chip link. Every function
// returns 0 or a failure code.
#pragma once

#include "k2v/types.h"

#ifdef __cplusplus
extern "C" {
#endif

int K2V_RHAL_GAL_Init(void);
int K2V_RHAL_GAL_OSDSPLIT(uint32_t enable);  // on-screen display on two planes
int K2V_RHAL_GAL_Finalize(void);

int K2V_RHAL_RLINK_GAL_Init(void);
int K2V_RHAL_RLINK_GAL_PANEL_ENABLE(uint32_t enable);
int K2V_RHAL_RLINK_GAL_Finalize(void);

#ifdef __cplusplus
}
#endif
