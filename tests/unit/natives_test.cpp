// The natives at the Java border: what they ask of Java, and what comes of bad input.
#include "log_capture.h"
#include "native_calls.h"

namespace {

constexpr char kCodec[] = "6 CodecDataAlgorithm: ", kDecode[] = "JPEG2ARGB(",
               kFail[] = " decode fail";

/// The lines of a call without its first and its last, which must be "E" and "X" ones.
std::vector<std::string> linesBetween() {
  std::vector<std::string> lines;
  std::istringstream log(takeLog());
  for (std::string line; std::getline(log, line);) lines.push_back(line);
  if (lines.size() < 2 || !lines.front().ends_with(" E") || !lines.back().ends_with(" X")) {
    ADD_FAILURE() << "no first and last line";
    return {};
  }
  return {lines.begin() + 1, lines.end() - 1};
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
      EXPECT_EQ(linesBetween().size(), 1u);
      EXPECT_FALSE(jni.threw());
    }
  }
}

TEST(Natives, JpegsThatCannotBeDecodedLeaveTheSizeAlone) {
  const Bytes file = inputOf(kCalls[4]), text(100, 'x');
  const auto decodes = [&](const Bytes* bytes, jlong count, jint* size, bool lengths = false) {
    FakeJni jni;
    if (lengths) jni.giveArrayLength();
    FakeBuffer buffer{bytes == nullptr ? nullptr : const_cast<uint8_t*>(bytes->data()), count};
    takeLog();
    return !jni.take(JPEG2ARGB(jni.env(), nullptr, count < 0 ? nullptr : jobject(buffer),
                               reinterpret_cast<jintArray>(size)))
                .empty();
  };
  const struct {
    const Bytes* bytes;
    jlong count;
  } bad[] = {{nullptr, -1}, {nullptr, 100}, {&file, 0}, {&text, 100}, {&file, 2}};
  for (const auto& [bytes, count] : bad) {
    jint size[] = {2, -2};  // its length, where that can be asked for
    EXPECT_FALSE(decodes(bytes, count, size, count % 100 == 0));
    const auto lines = linesBetween();
    ASSERT_EQ(lines.size(), 1u);
    EXPECT_TRUE(lines[0].starts_with(kCodec) && lines[0].ends_with(kFail)) << lines[0];
    EXPECT_NE(lines[0].find(kDecode), std::string::npos);
    EXPECT_TRUE(size[0] == 2 && size[1] == -2);
  }
  const struct {
    jint length;
    bool isNull, lengths, decodes;
  } arrays[] = {{0, true, false, false},
                {0, true, true, false},
                {1, false, true, false},
                {2, false, true, true},
                {1, false, false, true}};
  for (const auto& row : arrays) {
    jint size[] = {row.length, -2};
    const bool decoded =
        decodes(&file, jlong(file.size()), row.isNull ? nullptr : size, row.lengths);
    EXPECT_EQ(decoded, row.decodes) << row.length;
    EXPECT_EQ(linesBetween().size(), decoded ? 0u : 1u);
    EXPECT_EQ(size[0], decoded ? kWidth : row.length);
    EXPECT_EQ(size[1], decoded ? kHeight : -2);
  }
}

TEST(Natives, TheBeautyModeIsSetBeforeAnythingIsChecked) {
  const NativesDevice device(ENGINE);
  const std::string none = std::string(kCodec) + "SFBProcess X all is 0. so make mode to 0";
  const struct {
    int width, height, missing;
    bool direct, good;
  } rows[] = {{16, 4, 0, true, true}, {15, 4, 0, true, false}, {16, 3, 0, true, false},
              {0, 4, 0, true, false}, {16, 4, 1, true, false}, {16, 4, 0, false, false}};
  for (const auto& row : rows) {
    for (const int level : {0, 1}) {
      Bytes frame = noise(96);
      FakeBuffer buffer{row.direct ? frame.data() : nullptr, 96 - row.missing};
      takeLog();
      SFB(FakeJni().env(), nullptr, buffer, row.width, row.height, level, level, level);
      auto lines = linesBetween();
      std::erase_if(lines, [](const std::string& line) { return !line.starts_with(kCodec); });
      const std::size_t modeLines = level == 0 ? 1 : 0;
      ASSERT_EQ(lines.size(), modeLines + (row.good ? 0 : 1)) << row.width << " " << row.height;
      EXPECT_TRUE(level != 0 || lines[0] == none) << lines[0];
      EXPECT_EQ(same(frame, noise(96)), !row.good || level == 0);
    }
  }
}

}  // namespace
