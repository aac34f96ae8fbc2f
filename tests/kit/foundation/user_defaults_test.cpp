#include "kit/foundation/user_defaults.h"

#include <gtest/gtest.h>

#include <limits>
#include <memory>
#include <string>

#include "kit/foundation/memory_preference_store.h"

namespace kit {
namespace {

// What the values mean, on a document in memory; tests/kit/backends/files
// has what the file adds (locking, set-aside copies, atomic saves).
class UserDefaultsTest : public ::testing::Test {
 protected:
  // A fresh UserDefaults on the store, as a new launch would make it.
  UserDefaults& launch() {
    prefs.reset();
    prefs = std::make_unique<UserDefaults>(store, log);
    return *prefs;
  }
  void quit() { prefs.reset(); }
  // A document saved before the launch (by the user, or a broken program).
  void save(const std::string& bytes) { store.document = bytes; }
  Value::Dictionary onDisk() const {
    auto values = UserDefaults::decode(store.document.value_or(""));
    EXPECT_TRUE(values) << store.document.value_or("(none)");
    return values.value_or(Value::Dictionary{});
  }

  MemoryPreferenceStore store;
  CapturingLog log;
  std::unique_ptr<UserDefaults> prefs;
};

TEST_F(UserDefaultsTest, RegisteredDefaultsAreReadButNeverWritten) {
  auto& d = launch();  // no file yet: a quiet first launch
  d.registerDefaults({{"sound", true}, {"cnt", 5}});
  EXPECT_EQ(d.integerForKey("cnt"), 5);
  EXPECT_TRUE(d.synchronize());
  EXPECT_FALSE(store.document);
  EXPECT_TRUE(log.lines().empty());
  d.setInteger(1, "cnt");
  ASSERT_TRUE(d.synchronize());
  EXPECT_EQ(onDisk(), (Value::Dictionary{{"cnt", 1}}));

  d.removeObjectForKey("cnt");
  EXPECT_EQ(d.integerForKey("cnt"), 5);
  d.setObject(Value(), "sound");  // nil removes; the default shows again
  EXPECT_TRUE(d.boolForKey("sound"));
  ASSERT_TRUE(d.synchronize());
  EXPECT_EQ(onDisk(), Value::Dictionary{});
}

// The file is user-editable: whatever types it holds are kept, and the
// typed getters convert them as the platform does.
TEST_F(UserDefaultsTest, EditedValuesAreKeptAndReadWithThePlatformsConversions) {
  save(R"({"text": "12", "word": "abc", "real": 3.7, "yes": true,
      "list": ["en"], "huge": 1e300, "long": "99999999999999999999", "neg": -12.9})");
  auto& d = launch();
  EXPECT_TRUE(log.lines().empty());
  EXPECT_EQ(d.integerForKey("text"), 12);
  EXPECT_EQ(d.integerForKey("real"), 3);
  EXPECT_EQ(d.integerForKey("neg"), -12);
  EXPECT_EQ(d.integerForKey("list"), 0);
  EXPECT_EQ(d.integerForKey("long"), std::numeric_limits<int64_t>::max());
  EXPECT_EQ(d.integerForKey("huge"), std::numeric_limits<int64_t>::max());
  EXPECT_TRUE(d.boolForKey("text"));
  EXPECT_DOUBLE_EQ(d.doubleForKey("text"), 12.0);
  EXPECT_EQ(d.stringForKey("real"), "3.7000000000000002");
  EXPECT_EQ(d.stringForKey("yes"), "1");
  EXPECT_EQ(d.stringForKey("list"), std::nullopt);
  EXPECT_EQ(d.arrayForKey("text"), std::nullopt);
}

TEST_F(UserDefaultsTest, ValuesKeepTheirTypesAcrossLaunchesAndAreSavedAtExit) {
  const Value::Dictionary stored{{"best", 42},
                                 {"sound", false},
                                 {"ratio", 0.1},
                                 {"whole", 2.0},
                                 {"id", "ca-app/2"},
                                 {"AppleLanguages", Value::Array{"zh-Hans-CN"}},
                                 {"nested", Value::Dictionary{{"a", Value::Array{}}}}};
  auto& d = launch();
  for (const auto& [key, value] : stored)
    d.setObject(value, key);
  d.setFloat(0.1f, "float");
  quit();  // unsaved: written at exit

  auto& again = launch();
  for (const auto& [key, value] : stored)
    EXPECT_EQ(again.objectForKey(key), value) << key;
  EXPECT_EQ(again.floatForKey("float"), 0.1f);
  EXPECT_TRUE(log.lines().empty());
}

TEST_F(UserDefaultsTest, BadFilesAreSetAsideWithOneLineAndDefaultsUsed) {
  using namespace std::string_literals;
  const std::pair<const char*, std::string> cases[] = {
      {"garbage", "\x89PNG\r\n\x1a\n\x00\x01garbage"s},
      {"truncated", R"({"best": 12, "sound": tr)"},
      {"number", "42"},
      {"empty", ""},
      {"invalid UTF-8", "{\"best\": \"\xff\xfe\"}"},
      {"too deep", "{\"a\":" + std::string(100'000, '[') + std::string(100'000, ']') + "}"},
      {"trailing garbage", R"({"best": 1} {"best": 2})"},
  };
  for (const auto& [name, bytes] : cases) {
    SCOPED_TRACE(name);
    save(bytes);
    auto& d = launch();
    d.registerDefaults({{"best", 0}});
    EXPECT_EQ(d.integerForKey("best"), 0);
    EXPECT_EQ(log.take().size(), 1u);
    ASSERT_FALSE(store.setAsideDocuments.empty());
    EXPECT_EQ(store.setAsideDocuments.back(), bytes);

    d.setInteger(7, "best");
    ASSERT_TRUE(d.synchronize());
    EXPECT_EQ(onDisk(), (Value::Dictionary{{"best", 7}}));
    quit();
    store.document.reset();
  }
}

// A file just under the reader's limit was pretty-printed past it on the
// next save, and the launch after that set it aside and lost the best score.
TEST_F(UserDefaultsTest, TheWriterNeverWritesAFileTheReaderWouldRefuse) {
  std::string list = "[0";
  while (list.size() < UserDefaults::kMaxFileBytes - 1000)
    list += ",1";
  save("{\"list\":" + list + "],\"best\":1}");
  auto& d = launch();
  ASSERT_EQ(d.integerForKey("best"), 1);
  d.setInteger(2, "best");
  ASSERT_TRUE(d.synchronize());
  EXPECT_LE(store.document->size(), UserDefaults::kMaxFileBytes);
  EXPECT_EQ(launch().integerForKey("best"), 2);
  EXPECT_TRUE(log.take().empty());

  // Values the reader would refuse are not written; the saved file stays.
  const std::string saved = *store.document;
  prefs->setObject(Value(std::string(UserDefaults::kMaxFileBytes, 'x')), "huge");
  EXPECT_FALSE(prefs->synchronize());
  prefs->removeObjectForKey("huge");
  Value deep(1);
  for (int i = 0; i < 70; ++i)
    deep = Value(Value::Array{deep});
  prefs->setObject(deep, "deep");
  EXPECT_FALSE(prefs->synchronize());
  const auto lines = log.take();
  ASSERT_EQ(lines.size(), 2u);
  EXPECT_NE(lines[0].find("larger than 4 MiB"), std::string::npos) << lines[0];
  EXPECT_NE(lines[1].find("nested deeper than 64 levels"), std::string::npos) << lines[1];
  EXPECT_EQ(store.document, saved);
  EXPECT_TRUE(store.setAsideDocuments.empty());
}

// A valid file one level too deep was set aside as "not valid JSON"; one
// number out of range (1e400) set the whole file aside.
TEST_F(UserDefaultsTest, TooDeepIsSaidAsSuchAndANumberOutOfRangeLosesOnlyItself) {
  save("{\"a\":" + std::string(64, '[') + std::string(64, ']') + "}");
  launch();
  ASSERT_EQ(log.lines().size(), 1u);
  EXPECT_NE(log.lines()[0].find("is nested deeper than 64 levels"), std::string::npos)
      << log.lines()[0];
  quit();
  log.take();

  save(R"({"best": 12, "cnt": 1e400, "sound": false})");
  auto& d = launch();
  d.registerDefaults({{"cnt", 3}});
  EXPECT_EQ(d.integerForKey("best"), 12);
  EXPECT_EQ(d.integerForKey("cnt"), 3);  // its default
  EXPECT_FALSE(d.boolForKey("sound"));
  EXPECT_TRUE(log.take().empty());
  EXPECT_EQ(store.setAsideDocuments.size(), 1u);  // only the deep one
}

// The lines a bad or unsaveable document gives name the store's location and
// say what happens next, word for word (scenario dumps show them).
TEST_F(UserDefaultsTest, LogLinesNameTheStoreAndSayWhatHappens) {
  save("");
  launch();
  save(std::string(UserDefaults::kMaxFileBytes + 1, ' '));
  launch();
  Value deep(1);
  for (int i = 0; i < 70; ++i)
    deep = Value(Value::Array{deep});
  prefs->setObject(deep, "deep");
  EXPECT_FALSE(prefs->synchronize());
  EXPECT_EQ(log.take(),
            (std::vector<std::string>{
                "Preferences file memory is empty; moved it to bad-1 and using the defaults",
                "Preferences file memory is larger than 4 MiB; moved it to bad-2 and using the "
                "defaults",
                "Could not save preferences to memory: the new file is nested deeper than 64 "
                "levels, which the next launch would refuse; the saved file is kept"}));
}

}  // namespace
}  // namespace kit
