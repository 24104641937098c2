// In glibc's place when the target is a Mac, which has no __float128: newer ones declare it for
// every clang.
#pragma once

#define __HAVE_FLOAT128 0
#define __HAVE_DISTINCT_FLOAT128 0
#define __HAVE_FLOAT64X 1
#define __HAVE_FLOAT64X_LONG_DOUBLE 1

#include <bits/floatn-common.h>
