// What the frames of kernel files (..._rows_simd.cpp) share. Highway compiles such a file once per
// vector target. A row kernel has three names:
//
//   addShares         what callers call: the twin for this machine
//   addSharesVector   the twin, in the kernel file, once for each target
//   addSharesPlain    the definition, in the ordinary source of the same name
//
// Which of them a routine calls when its buffers overlap is decided with kernels/overlap.h.
#pragma once

/// Whether the target that is being compiled has vectors: AVX2 on x86-64, NEON on arm64. On any
/// other the definition is the fastest there is, and the twin is another name for it:
///
///   constexpr auto& addSharesVector = addSharesPlain;
///
/// With brackets, so that a file which doesn't include this does not compile.
#define ALG_HAS_VECTORS() (HWY_TARGET == HWY_AVX2 || HWY_TARGET == HWY_NEON)
