// All headers of the HAL that the harness includes.
#pragma once

#include <k2v/device.h>
#include <k2v/gal.h>
#include <k2v/hdcp2.h>
#include <k2v/thermal.h>
#include <k2v/types.h>
#include <k2v/vbe.h>
#include <k2v/vfe_hdmi.h>
#include <k2v/vfe_vby1rx.h>
#include <k2v/vpq.h>
#include <k2v/vpq_records.h>
#include <k2v/vsc.h>
#include <rlink.h>
