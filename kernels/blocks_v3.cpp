#define VELSCORE_KERNELS_NAME "v3"
#define VELSCORE_KERNELS_TABLE kV3Kernels
#include "kernels/blocks.inc"
