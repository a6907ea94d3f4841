#include "nimbrellelibrary/FourierKernel.h"

bool isAvx2Usable()
{
#ifdef __x86_64__
    return sumHarmonicAvx2 && __builtin_cpu_supports("avx2") && __builtin_cpu_supports("fma");
#else
    return false;
#endif
}

FourierKernel fastestFourierKernel()
{
    static const FourierKernel fastest = isAvx2Usable() ? sumHarmonicAvx2 : sumHarmonicBaseline;
    return fastest;
}
