// What the frames of kernel files (..._rows_simd.cpp) share. Highway compiles such a file once per
// vector target. A row kernel has three names:
//
//   addShares         what callers call: the twin for this machine
//   addSharesVector   the twin, in the kernel file, once for each target
//   addSharesPlain    the definition, in the ordinary source of the same name
//
// Which of them a routine calls when its buffers overlap is decided with kernels/overlap.h.
#pragma once

#include "hwy/detect_targets.h"

// Highway's names for NEON. Later versions know it without and with the processor's extensions,
// which no kernel needs.
#ifdef HWY_ALL_NEON
#define ALG_ALL_NEON HWY_ALL_NEON
#else
#define ALG_ALL_NEON HWY_NEON
#endif

// On any other target kernels would be their plain definition, unnoticed. Which ones are compiled
// is set where the build finds Highway.
#if HWY_ARCH_ARM_A64
static_assert(HWY_TARGETS == HWY_STATIC_TARGET && (HWY_TARGETS & ~(ALG_ALL_NEON)) == 0,
              "kernels are written for NEON alone");
#elif HWY_ARCH_X86_64
static_assert((HWY_TARGETS & HWY_AVX2) != 0 &&
                  (HWY_TARGETS & ~(HWY_AVX2 | HWY_EMU128 | HWY_SCALAR)) == 0,
              "kernels are written for AVX2 and plain code alone");
#endif

// What the target that is being compiled is. With brackets, so that a file which doesn't include
// this does not compile.
#define ALG_IS_AVX2() (HWY_TARGET == HWY_AVX2)
#define ALG_IS_NEON() ((HWY_TARGET & (ALG_ALL_NEON)) != 0)

/// Whether the target that is being compiled has vectors. On any other the definition is the
/// fastest there is, and the twin is another name for it:
///
///   constexpr auto& addSharesVector = addSharesPlain;
#define ALG_HAS_VECTORS() (ALG_IS_AVX2() || ALG_IS_NEON())
