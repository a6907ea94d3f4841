// SPDX-License-Identifier: MIT
// Compiled for AVX2 and FMA where there are any, see CMakeLists.txt.
#include "nimbrellelibrary/FourierKernel.h"

#ifdef __AVX2__
#include "nimbrellelibrary/FourierKernelLoop.h"
static const FourierKernel kernelForAvx2 = {fillAngles, keepEverySecond, sumProducts};
const FourierKernel *const avx2Kernel = &kernelForAvx2;
#else
const FourierKernel *const avx2Kernel = nullptr;
#endif
