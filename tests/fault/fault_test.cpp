// Every native with each of its allocations failing.
#include "injected.h"
#include "native_calls.h"
#include "shifted_clock.h"

namespace {

/// A native's results: the usual one, and the one without the picture that it shows.
struct Expected {
  Bytes input, good, passed;
};

/// Runs a native with one of its allocations failing; its result is whole or nothing. Returns
/// whether it made that many allocations.
bool checkWithFailure(const Call& call, FakeJni& jni, const Expected& expected, int number,
                      bool allLater) {
  Bytes work = expected.input, other = noise(kFrame, 2);
  FakeBuffer in{work.data(), jlong(work.size())}, out{other.data(), kFrame};
  failAllocation(number, allLater);
  const jobject result = call.run(jni.env(), in, out);
  const bool failed = stopFailing();
  const Bytes got = call.inPlace ? work : jni.take(result);
  const int errors = takeErrorLines();
  const bool engine = call.name[0] == 'S';  // it has lines of its own
  if (got == expected.good) {
    EXPECT_TRUE(engine || errors == 2) << number;
  } else if (got != expected.passed) {
    EXPECT_TRUE(failed) << number;
    EXPECT_EQ(got, call.inPlace ? expected.input : Bytes{}) << number;
    EXPECT_TRUE(engine || errors == 3) << number << ": " << errors;
  }
  EXPECT_FALSE(jni.threw());
  return failed;
}

TEST(Faults, EachAllocationOfEachNativeMayFail) {
  const ShiftedClock setBack(-100);  // no picture is old enough to be kept
  for (const Call& call : kCalls) {
    SCOPED_TRACE(call.name);
    FakeJni jni;
    Expected expected{inputOf(call), {}, {}};
    if (const DeviceRoot empty; true) expected.passed = resultOf(call, jni, expected.input);
    const NativesDevice device(ENGINE);
    expected.good = resultOf(call, jni, expected.input);
    EXPECT_FALSE(same(expected.good, expected.input));
    for (const bool allLater : {false, true}) {
      int number = 0;
      for (bool failed = true; failed; ++number) {
        ASSERT_LT(number, 2000);
        takeErrorLines();
        const long before = liveBlocks();
        failed = checkWithFailure(call, jni, expected, number, allLater);
        EXPECT_EQ(liveBlocks() - before, 0) << number;
      }
      EXPECT_GT(number, call.inPlace && call.name[0] != 'E' ? 0 : 1) << "nothing was allocated";
      EXPECT_TRUE(same(resultOf(call, jni, expected.input), expected.good));
    }
  }
}

}  // namespace
