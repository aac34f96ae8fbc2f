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

TEST(JsonTest, ValuesRoundTripKeepingNumberKindsRealsAndBytes) {
  auto v = parseJson(R"({"i":12,"r":1.0,"neg":-7,"b":true,"s":"\u65b0 x","n":null,
                        "a":[1,2.5,"x"],"huge":18446744073709551615})");
  ASSERT_TRUE(v);
  EXPECT_EQ((*v)["i"].type(), Value::Type::Integer);
  EXPECT_EQ((*v)["r"].type(), Value::Type::Real);
  EXPECT_EQ((*v)["s"], Value("\xe6\x96\xb0 x"));
  EXPECT_TRUE((*v)["n"].isNil());
  // Beyond 64 bits an integer can only be a real.
  EXPECT_EQ((*v)["huge"].type(), Value::Type::Real);
  auto again = parseJson(toJson(*v));
  ASSERT_TRUE(again);
  EXPECT_EQ(*again, *v);

  for (double d : {0.1, 1.0 / 3.0, 1e300, 5e-324, static_cast<double>(0.1f)}) {
    auto back = parseJson(toJson(Value(d)));
    ASSERT_TRUE(back && back->ifReal()) << toJson(Value(d));
    EXPECT_EQ(*back->ifReal(), d) << toJson(Value(d));
  }
  EXPECT_EQ(toJson(Value(std::nan(""))), "null");
  // Bad UTF-8 in a value is dumped as replacement characters, not thrown on.
  EXPECT_EQ(*parseJson(toJson(Value("a\xff"))), Value("a\xef\xbf\xbd"));
}

TEST(JsonTest, MalformedTextIsRefusedWithoutThrowing) {
  for (const char* bad : {"", "{", "[1,]", "{\"a\":1} x", "nul", "01", "NaN", "'x'", "[1 2]",
                          "\"\xff\"", "\"\xc3\"", "\"a\x01\"", "\"\\ud800\"", "[\"\\x\"]"}) {
    EXPECT_FALSE(parseJson(bad)) << bad;
  }
}

TEST(JsonTest, NestingIsCappedAtTheRequestedDepthAndNeverBeyondTheHardCap) {
  EXPECT_TRUE(parseJson(nested(8), 8));
  EXPECT_FALSE(parseJson(nested(9), 8));
  EXPECT_FALSE(parseJson(R"({"a":{"b":[1]}})", 2));
  EXPECT_FALSE(parseJson(nested(100'000)));
  std::string objects;
  for (int i = 0; i < 100'000; ++i)
    objects += "{\"a\":";
  objects += "1" + std::string(100'000, '}');
  EXPECT_FALSE(parseJson(objects, std::numeric_limits<int>::max()));
  EXPECT_TRUE(parseJson(nested(kMaxJsonDepth), std::numeric_limits<int>::max()));
  EXPECT_FALSE(parseJson(nested(kMaxJsonDepth + 1), std::numeric_limits<int>::max()));

  Value v(1);  // built too deep: cut off when dumped
  for (int i = 0; i < kMaxJsonDepth + 10; ++i)
    v = Value(Value::Array{v});
  std::string text = toJson(v);
  EXPECT_EQ(text.find('1'), std::string::npos);
  EXPECT_TRUE(parseJson(text, kMaxJsonDepth));
}

// A preferences file nested one level too deep was reported as invalid JSON,
// which sent its owner looking for a syntax error that was not there.
TEST(JsonTest, AValidDocumentTooDeepIsReportedAsTooDeepAndBrokenTextAsInvalid) {
  Result<Value> deep = readJson("{\"a\":" + nested(64) + "}", 64);
  ASSERT_FALSE(deep);
  EXPECT_EQ(deep.error(), "is nested deeper than 64 levels");
  Result<Value> broken = readJson("{\"a\": [1,]}", 64);
  ASSERT_FALSE(broken);
  EXPECT_EQ(broken.error().rfind("is not valid JSON (", 0), 0u) << broken.error();
  EXPECT_TRUE(readJson("{\"a\":" + nested(63) + "}", 64));
}

// One number too large for a double made the whole document unreadable, so
// a preferences file with it lost every other value.
TEST(JsonTest, ANumberOutOfRangeReadsAsNilAndTheRestOfTheDocumentStands) {
  auto v =
      parseJson(R"({"best": 12, "big": 1e400, "neg": [-1E+999, 2], "tiny": 1e-400, "s": "1e400"})");
  ASSERT_TRUE(v);
  EXPECT_EQ((*v)["best"], Value(12));
  EXPECT_TRUE((*v)["big"].isNil());
  EXPECT_EQ((*v)["neg"], Value(Value::Array{Value(), Value(2)}));
  EXPECT_EQ((*v)["tiny"].doubleValue(), 0.0);
  EXPECT_EQ((*v)["s"], Value("1e400"));
  // Mending numbers never makes broken text acceptable, and stops after a while.
  EXPECT_FALSE(parseJson("[1e400, ]"));
  std::string many = "[";
  for (int i = 0; i < 100; ++i)
    many += "1e400,";
  EXPECT_FALSE(parseJson(many + "1]"));
}

}  // namespace
}  // namespace kit
