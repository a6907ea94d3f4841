// SPDX-License-Identifier: MIT
#include "nimbrellelibrary/FourierKernelLoop.h"

const FourierKernel baselineKernel = {fillAngles, keepEverySecond, sumProducts};
