// What the frames of kernel files (..._rows_simd.cpp) share. Highway compiles such a file once per
// vector target. A row kernel has three names:
//
//   addShares         what callers call: the twin for this machine, by ALG_DISPATCH
//   addSharesVector   the twin, in the kernel file, once for each target
//   addSharesPlain    the definition, in the ordinary source of the same name
//
// Which of them a routine calls when its buffers overlap is decided with kernels/overlap.h.
//
// A file whose kernels gain by AVX-512 defines ALG_ALSO_AVX512 before it includes anything, and is
// compiled for that, too. All others have AVX2 on machines with either.
#pragma once

#ifdef ALG_ALSO_AVX512
#define HWY_WANT_AVX3_DL  // bytes permuted over whole vectors, and dot products
#define ALG_AVX512 HWY_AVX3_DL
#else
#define ALG_AVX512 0
#endif

#include <type_traits>

#include "hwy/detect_targets.h"
#include "kernels/targets.h"

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
                  (HWY_TARGETS & ~(ALG_AVX512 | HWY_AVX2 | HWY_EMU128 | HWY_SCALAR)) == 0,
              "kernels are written for AVX-512, AVX2 and plain code alone");
#endif

// What the target that is being compiled is. With brackets, so that a file which doesn't include
// this does not compile.
#define ALG_IS_AVX512() (HWY_TARGET == HWY_AVX3_DL)
#define ALG_IS_AVX2() (HWY_TARGET == HWY_AVX2)
#define ALG_IS_NEON() ((HWY_TARGET & (ALG_ALL_NEON)) != 0)

/// Whether the target that is being compiled has vectors. On any other the definition is the
/// fastest there is, and the twin is another name for it:
///
///   constexpr auto& addSharesVector = addSharesPlain;
#define ALG_HAS_VECTORS() (ALG_IS_AVX512() || ALG_IS_AVX2() || ALG_IS_NEON())

/// The twin for this machine, of a name that the file has for each target.
#if (HWY_TARGETS & (HWY_TARGETS - 1)) == 0
#define ALG_DISPATCH(twin) HWY_STATIC_DISPATCH(twin)
#else
#define ALG_DISPATCH(twin)                                                      \
  (alg::pickTwin<std::remove_reference_t<decltype(HWY_STATIC_DISPATCH(twin))>>( \
      HWY_CHOOSE_AVX3_DL(twin), HWY_CHOOSE_AVX2(twin), HWY_STATIC_DISPATCH(twin)))
#endif
