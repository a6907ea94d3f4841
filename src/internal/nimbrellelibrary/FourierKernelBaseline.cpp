#define SUM_HARMONIC sumHarmonicBaseline
#include "nimbrellelibrary/FourierKernelLoop.h"
