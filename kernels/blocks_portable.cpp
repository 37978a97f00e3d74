#define VELSCORE_KERNELS_NAME "portable"
#define VELSCORE_KERNELS_TABLE kPortableKernels
#include "kernels/blocks.inc"
