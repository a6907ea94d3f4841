// Compiled for AVX2 and FMA where there are any, see CMakeLists.txt.
#include "nimbrellelibrary/FourierKernel.h"

#ifdef __AVX2__
static HarmonicSums sumWithAvx2(const float *current, const float *voltage, int end, float step);
#define SUM_HARMONIC sumWithAvx2
#include "nimbrellelibrary/FourierKernelLoop.h"
const FourierKernel sumHarmonicAvx2 = sumWithAvx2;
#else
const FourierKernel sumHarmonicAvx2 = nullptr;
#endif
