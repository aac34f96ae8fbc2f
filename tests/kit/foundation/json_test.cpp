#include "kit/foundation/json.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <string>

namespace kit {
namespace {

std::string nested(int depth, char open = '[', char close = ']') {
  return std::string(static_cast<size_t>(depth), open) +
         std::string(static_cast<size_t>(depth), close);
}

TEST(JsonTest, NumbersKeepTheirKindAndTextsTheirBytes) {
  auto v = parseJson(R"({"i":12,"r":1.0,"neg":-7,"b":true,"s":"\u65b0 x","n":null,
                        "a":[1,2.5,"x"],"huge":18446744073709551615})");
  ASSERT_TRUE(v);
  EXPECT_EQ((*v)["i"].type(), Value::Type::Integer);
  EXPECT_EQ((*v)["r"].type(), Value::Type::Real);
  EXPECT_EQ(*(*v)["neg"].ifInteger(), -7);
  EXPECT_EQ((*v)["b"], Value(true));
  EXPECT_EQ((*v)["s"], Value("\xe6\x96\xb0 x"));
  EXPECT_TRUE((*v)["n"].isNil());
  EXPECT_EQ((*v)["a"], Value(Value::Array{1, 2.5, "x"}));
  // Beyond 64 bits an integer can only be a real.
  EXPECT_EQ((*v)["huge"].type(), Value::Type::Real);

  auto again = parseJson(toJson(*v));
  ASSERT_TRUE(again);
  EXPECT_EQ(*again, *v);
  EXPECT_EQ(toJson(*again), toJson(*v));
}

TEST(JsonTest, RealsRoundTripExactly) {
  for (double d : {0.1, 1.0 / 3.0, 1e300, 5e-324, -2.5, 123456789.123456789,
                   static_cast<double>(static_cast<float>(0.1))}) {
    auto back = parseJson(toJson(Value(d)));
    ASSERT_TRUE(back) << d;
    ASSERT_TRUE(back->ifReal()) << toJson(Value(d));
    EXPECT_EQ(*back->ifReal(), d) << toJson(Value(d));
  }
  EXPECT_EQ(toJson(Value(std::nan(""))), "null");
  EXPECT_EQ(toJson(Value(std::numeric_limits<double>::infinity())), "null");
}

TEST(JsonTest, MalformedTextIsRefusedWithoutThrowing) {
  for (const char* bad : {"", " ", "{", "[1,]", "{\"a\":1} x", "nul", "01", "NaN", "'x'",
                          "{\"a\" 1}", "[1 2]", "\"\xff\"", "\"\xc3\"", "\"a\x01\"",
                          "{\"k\":\"\xed\xa0\x80\"}", "\"\\ud800\"", "[\"\\x\"]"}) {
    EXPECT_FALSE(parseJson(bad)) << bad;
  }
}

TEST(JsonTest, NestingIsCappedAtTheRequestedDepth) {
  EXPECT_TRUE(parseJson(nested(8), 8));
  EXPECT_FALSE(parseJson(nested(9), 8));
  EXPECT_TRUE(parseJson(R"({"a":{"b":[1]}})", 3));
  EXPECT_FALSE(parseJson(R"({"a":{"b":[1]}})", 2));
  EXPECT_TRUE(parseJson("7", 0));
  EXPECT_FALSE(parseJson("[]", 0));
}

TEST(JsonTest, HostileDepthIsRefusedWhateverTheCallerAsks) {
  const std::string arrays = nested(100'000);
  EXPECT_FALSE(parseJson(arrays));
  EXPECT_FALSE(parseJson(arrays, std::numeric_limits<int>::max()));
  std::string objects;
  for (int i = 0; i < 100'000; ++i)
    objects += "{\"a\":";
  objects += "1" + std::string(100'000, '}');
  EXPECT_FALSE(parseJson(objects, std::numeric_limits<int>::max()));
  EXPECT_TRUE(parseJson(nested(kMaxJsonDepth), std::numeric_limits<int>::max()));
  EXPECT_FALSE(parseJson(nested(kMaxJsonDepth + 1), std::numeric_limits<int>::max()));
}

TEST(JsonTest, DumpingNeverThrowsOnBadText) {
  Value::Dictionary d{{"ok\xff", Value("a\xff\xfe"
                                       "b")}};
  std::string text = toJson(Value(d));
  auto back = parseJson(text);
  ASSERT_TRUE(back) << text;
  EXPECT_EQ((*back)["ok\xef\xbf\xbd"], Value("a\xef\xbf\xbd\xef\xbf\xbd"
                                             "b"));
}

TEST(JsonTest, ValuesBuiltTooDeepAreCutOffWhenDumped) {
  Value v(1);
  for (int i = 0; i < kMaxJsonDepth + 10; ++i)
    v = Value(Value::Array{v});
  std::string text = toJson(v);
  EXPECT_EQ(text.find('1'), std::string::npos);
  EXPECT_NE(text.find("null"), std::string::npos);
  EXPECT_TRUE(parseJson(text, kMaxJsonDepth));
}

}  // namespace
}  // namespace kit
