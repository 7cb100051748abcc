#pragma once
// Whether this processor runs the library's AVX2 loops. They live in files of
// their own built with -mavx2 (where the build defines ZO_AVX2); everything
// else assumes no more than the x86-64 baseline, so they may only be called
// after this check.

inline bool zoHasAvx2()
{
#ifdef ZO_AVX2
    static const bool yes = __builtin_cpu_supports("avx2");
    return yes;
#else
    return false;
#endif
}
