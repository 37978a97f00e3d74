#define VELSCORE_KERNELS_NAME "v2"
#define VELSCORE_KERNELS_TABLE kV2Kernels
#include "kernels/blocks.inc"
