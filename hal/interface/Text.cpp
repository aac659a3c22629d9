// Preprocessed, not compiled: the declarations that the fingerprint of the HAL interface is made
// of.
#include "Headers.h"
