// SPDX-License-Identifier: MIT
#include "nimbrellelibrary/FourierKernel.h"

bool isAvx2Usable()
{
#ifdef __x86_64__
    return avx2Kernel && __builtin_cpu_supports("avx2") && __builtin_cpu_supports("fma");
#else
    return false;
#endif
}

const FourierKernel &fastestFourierKernel()
{
    static const FourierKernel &fastest = isAvx2Usable() ? *avx2Kernel : baselineKernel;
    return fastest;
}
