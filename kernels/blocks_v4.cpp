#define VELSCORE_KERNELS_NAME "v4"
#define VELSCORE_KERNELS_TABLE kV4Kernels
#include "kernels/blocks.inc"
