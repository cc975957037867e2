// What the frames of kernel files (..._simd.cpp) share. Highway compiles such a file once per
// vector target. A row kernel has up to three names:
//
//   addShares         what callers call: the twin for this machine
//   addSharesVector   the twin, in the kernel file, once for each target
//   addSharesPlain    the definition, in an ordinary source
//
// Where callers need a choice between twin and definition, by how images overlap, that choice has
// the short name, and the twin for this machine is called mapCurvesSimd.
#pragma once

/// Whether the target that is being compiled has vectors: AVX2 on x86-64, NEON on arm64. On any
/// other the definition is the fastest there is, and the twin is another name for it:
///
///   constexpr auto& addSharesVector = addSharesPlain;
///
/// With brackets, so that a file which doesn't include this does not compile.
#define ALG_HAS_VECTORS() (HWY_TARGET == HWY_AVX2 || HWY_TARGET == HWY_NEON)
