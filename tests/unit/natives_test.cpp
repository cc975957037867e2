// The natives at the Java border: what they ask of Java, and what comes of bad input.
#include "log_capture.h"
#include "native_calls.h"

namespace {

/// The number of a call's lines between its first and its last, which must be "E" and "X" ones.
long linesBetween() {
  const std::string log = takeLog();
  EXPECT_EQ(log.find(" E\n"), log.find('\n') - 2);
  EXPECT_TRUE(log.ends_with(" X\n"));
  return std::ranges::count(log, '\n') - 2;
}

TEST(Natives, AskJavaForNoMoreThanTheyNeed) {
  const NativesDevice device(ENGINE);
  const std::string memory = " Capacity Address";
  const std::pair<const char*, std::string> others[] = {
      {"rotateYUV", memory + memory},
      {"ARGB2JPEG", memory + " NewArray Elements Release"},
      {"JPEG2ARGB", memory + " Ints NewBuffer"},  // the size first
      {"SFBProcess", memory}};
  for (const Call& call : kCalls) {
    const std::string name = call.name;
    std::string expected = memory + (name[0] == 'E' ? " Chars ReleaseChars" : " NewBuffer");
    for (const auto& [other, calls] : others) {
      if (name == other) expected = calls;
    }
    FakeJni jni;
    const Bytes input = inputOf(call);
    EXPECT_FALSE(same(resultOf(call, jni, input), input)) << name;
    EXPECT_EQ(jni.calls(), expected) << name;
  }
}

TEST(Natives, WhatJavaCannotGiveIsOneErrorLineAndNothingIsThrown) {
  const struct {
    const char *native, *refused;
  } rows[] = {{"YUV2ARGB", "NewBuffer"},  {"ARGB2YVU", "NewBuffer"},
              {"JPEG2ARGB", "NewBuffer"}, {"ARGB2JPEG", "NewArray"},
              {"ARGB2JPEG", "Elements"},  {"Effect in one pass", "Chars"}};
  for (const auto& row : rows) {
    for (const bool withException : {true, false}) {
      SCOPED_TRACE(testing::Message() << row.native << " " << row.refused << withException);
      const Call& call = *std::ranges::find_if(
          kCalls, [&](const Call& one) { return std::strcmp(one.name, row.native) == 0; });
      FakeJni jni;
      jni.refuse(row.refused, withException);
      const Bytes input = inputOf(call);
      takeLog();
      EXPECT_TRUE(same(resultOf(call, jni, input), call.inPlace ? input : Bytes()));
      EXPECT_EQ(linesBetween(), 1);
      EXPECT_FALSE(jni.threw());
    }
  }
}

TEST(Natives, JpegSizesGoWhereThereIsRoomAsFarAsThatCanBeAsked) {
  Bytes file = inputOf(kCalls[4]);
  FakeBuffer buffer{file.data(), jlong(file.size())};
  const struct {
    jint length;
    bool isNull, lengths, decodes;
  } arrays[] = {{0, true, false, false},
                {0, true, true, false},
                {1, false, true, false},
                {2, false, true, true},
                {1, false, false, true}};
  for (const auto& row : arrays) {
    FakeJni jni;
    if (row.lengths) jni.giveArrayLength();
    jint size[] = {row.length, -2};  // its length, where that can be asked for
    takeLog();
    const jobject result = JPEG2ARGB(jni.env(), nullptr, buffer,
                                     reinterpret_cast<jintArray>(row.isNull ? nullptr : size));
    EXPECT_EQ(jni.take(result).size(), row.decodes ? kArgb : 0u) << row.length;
    EXPECT_EQ(linesBetween(), row.decodes ? 0 : 1);
    EXPECT_EQ(size[0], row.decodes ? kWidth : row.length);
    EXPECT_EQ(size[1], row.decodes ? kHeight : -2);
  }
}

}  // namespace
