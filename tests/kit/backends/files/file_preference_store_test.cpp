#include "kit/backends/files/file_preference_store.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <memory>
#include <random>
#include <regex>
#include <string>

#include "kit/foundation/temp_dir.h"
#include "kit/foundation/user_defaults.h"

namespace kit {
namespace {

namespace fs = std::filesystem;

// UserDefaults on the preferences file, end to end: what the file adds to
// the values (a private, atomic save; set-aside copies; the folder lock).
class FilePreferenceStoreTest : public ::testing::Test {
 protected:
  // A fresh store and UserDefaults on the folder, as a new launch would make them.
  UserDefaults& launch() {
    quit();
    store = std::make_unique<FilePreferenceStore>(dir.path(), log);
    prefs = std::make_unique<UserDefaults>(*store, log);
    return *prefs;
  }
  void quit() {
    prefs.reset();
    store.reset();
  }

  void writeFile(const std::string& name, const std::string& bytes) {
    std::ofstream(dir.path() / name, std::ios::binary) << bytes;
  }
  std::string readFile(const std::string& name) const {
    std::ifstream in(dir.path() / name, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), {}};
  }
  std::vector<std::string> files() const {
    std::vector<std::string> names;
    for (const auto& entry : fs::directory_iterator(dir.path())) {
      names.push_back(entry.path().filename().string());
    }
    std::sort(names.begin(), names.end());
    return names;
  }
  // The set-aside copies of bad files, oldest first.
  std::vector<std::string> badFiles() const {
    std::vector<std::string> names;
    for (const auto& name : files()) {
      if (name.rfind("prefs.json.bad-", 0) == 0)
        names.push_back(name);
    }
    return names;
  }
  std::string newestBad() const {
    const auto names = badFiles();
    return names.empty() ? "" : names.back();
  }
  Value::Dictionary onDisk() const {
    auto values = UserDefaults::decode(readFile("prefs.json"));
    EXPECT_TRUE(values) << readFile("prefs.json");
    return values.value_or(Value::Dictionary{});
  }

  TempDir dir;
  CapturingLog log;
  std::unique_ptr<FilePreferenceStore> store;
  std::unique_ptr<UserDefaults> prefs;
};

// A broken file and a failed save, through to the lines the log shows.
TEST_F(FilePreferenceStoreTest, ABrokenFileIsMovedAsideAndTheLinesNameTheFile) {
  writeFile("prefs.json", R"({"best": 12, "sound": tr)");
  launch().setInteger(3, "best");
  const std::string file = (dir.path() / "prefs.json").string();
  const std::vector<std::string> lines = log.take();
  ASSERT_EQ(lines.size(), 1u);
  EXPECT_TRUE(lines[0].starts_with("Preferences file " + file + " ")) << lines[0];
  EXPECT_TRUE(lines[0].ends_with("; moved it to " + newestBad() + " and using the defaults"))
      << lines[0];

  fs::create_directories(dir.path() / "prefs.json" / "inner");  // a rename over it fails
  EXPECT_FALSE(prefs->synchronize());
  EXPECT_EQ(log.take(), std::vector<std::string>{"Could not save preferences to " + file +
                                                 ": rename failed (Is a directory)"});
}

TEST_F(FilePreferenceStoreTest, SavesArePrivateAndOnlyWhenSomethingChanged) {
  writeFile("prefs.json.tmp-abc123", R"({"best": 5)");  // a stray from a killed save
  auto& d = launch();
  d.setInteger(3, "best");
  ASSERT_TRUE(d.synchronize());
  struct stat before {};
  ASSERT_EQ(::stat((dir.path() / "prefs.json").c_str(), &before), 0);
  EXPECT_EQ(before.st_mode & 0777, 0600u);

  d.setInteger(3, "best");  // the same value again
  ASSERT_TRUE(d.synchronize());
  struct stat after {};
  ASSERT_EQ(::stat((dir.path() / "prefs.json").c_str(), &after), 0);
  EXPECT_EQ(after.st_ino, before.st_ino);  // each write renames a new file in
  EXPECT_EQ(files(), (std::vector<std::string>{"prefs.json"}));
}

TEST_F(FilePreferenceStoreTest, HugeFileIsSetAsideUnread) {
  {
    int fd = ::open((dir.path() / "prefs.json").c_str(), O_CREAT | O_WRONLY, 0600);
    ASSERT_GE(fd, 0);
    ASSERT_EQ(::ftruncate(fd, 100 << 20), 0);  // sparse: 100 MB of zeros
    ::close(fd);
  }
  EXPECT_TRUE(launch().storedValues().empty());
  ASSERT_EQ(log.lines().size(), 1u);
  EXPECT_NE(log.lines()[0].find("larger than"), std::string::npos) << log.lines()[0];
  EXPECT_EQ(fs::file_size(dir.path() / newestBad()), 100u << 20);
}

TEST_F(FilePreferenceStoreTest, UnusableFolderKeepsValuesInMemory) {
  writeFile("not-a-folder", "x");
  FilePreferenceStore store(dir.path() / "not-a-folder" / "prefs", log);
  UserDefaults d(store, log);
  EXPECT_FALSE(d.isPersistent());
  EXPECT_EQ(log.take().size(), 1u);
  d.setInteger(5, "best");
  EXPECT_EQ(d.integerForKey("best"), 5);
  EXPECT_FALSE(d.synchronize());
  EXPECT_TRUE(log.take().empty());  // said once, not on every save
}

TEST_F(FilePreferenceStoreTest, FailedSaveKeepsOldFileAndValuesAndRetriesAndAFolderIsSetAside) {
  auto& d = launch();
  d.setInteger(1, "best");
  ASSERT_TRUE(d.synchronize());
  const std::string old = readFile("prefs.json");

  // A folder appears in the file's place, so the final rename fails.
  fs::rename(dir.path() / "prefs.json", dir.path() / "saved");
  fs::create_directories(dir.path() / "prefs.json" / "inner");
  d.setInteger(2, "best");
  EXPECT_FALSE(d.synchronize());
  EXPECT_EQ(log.take().size(), 1u);
  EXPECT_EQ(files(), (std::vector<std::string>{"prefs.json", "saved"}));  // no temp file left
  EXPECT_EQ(readFile("saved"), old);

  fs::remove_all(dir.path() / "prefs.json");
  EXPECT_TRUE(d.synchronize());  // still unsaved, so it writes now
  EXPECT_EQ(onDisk(), (Value::Dictionary{{"best", 2}}));

  quit();
  fs::remove(dir.path() / "prefs.json");
  fs::create_directory(dir.path() / "prefs.json");  // a folder in the file's place at launch
  launch();
  EXPECT_EQ(log.take().size(), 1u);
  EXPECT_TRUE(fs::is_directory(dir.path() / newestBad()));
}

// A second bad file replaced the copy set aside from the first, so whatever
// could have been recovered from it was gone.
TEST_F(FilePreferenceStoreTest, EveryBadFileIsKeptTimeStampedAndOnlyTheNewestFew) {
  for (int i = 0; i < 7; ++i) {
    writeFile("prefs.json", "broken " + std::to_string(i));
    launch();
    quit();
  }
  const auto bad = badFiles();
  ASSERT_EQ(bad.size(), FilePreferenceStore::kKeptBadFiles);
  // The newest five, in order, each under its own UTC time stamp.
  for (size_t i = 0; i < bad.size(); ++i) {
    EXPECT_EQ(readFile(bad[i]), "broken " + std::to_string(i + 2)) << bad[i];
    EXPECT_TRUE(std::regex_match(bad[i], std::regex(R"(prefs\.json\.bad-\d{8}T\d{6}Z(-\d\d)?)")))
        << bad[i];
  }
  EXPECT_EQ(log.lines().back().find(bad.back()) != std::string::npos, true) << log.lines().back();
}

// Two copies of the game on one folder saved over each other's best score
// and counts, and each deleted the other's temporary file mid-save.
TEST_F(FilePreferenceStoreTest, ASecondStoreOnTheFolderIsRefusedAndTouchesNothing) {
  auto& first = launch();
  first.setInteger(40, "best");
  ASSERT_TRUE(first.synchronize());
  writeFile("prefs.json.tmp-Ab12Cd", "a save in progress");
  const std::string saved = readFile("prefs.json");

  CapturingLog otherLog;
  {
    FilePreferenceStore secondStore(dir.path(), otherLog);
    UserDefaults second(secondStore, otherLog);
    EXPECT_TRUE(second.inUseElsewhere());
    EXPECT_FALSE(second.isPersistent());
    ASSERT_EQ(otherLog.lines().size(), 1u);
    EXPECT_NE(otherLog.lines()[0].find("in use by another copy"), std::string::npos);
    EXPECT_EQ(second.integerForKey("best"), 40);  // it may read
    second.setInteger(3, "best");
    EXPECT_FALSE(second.synchronize());
  }
  EXPECT_EQ(readFile("prefs.json"), saved);
  EXPECT_EQ(readFile("prefs.json.tmp-Ab12Cd"), "a save in progress");
  EXPECT_FALSE(first.inUseElsewhere());

  // In another process too, until the first one goes.
  const pid_t child = ::fork();
  ASSERT_GE(child, 0);
  if (child == 0) {
    CapturingLog quiet;
    FilePreferenceStore otherStore(dir.path(), quiet);
    UserDefaults other(otherStore, quiet);
    ::_exit(other.inUseElsewhere() ? 0 : 1);
  }
  int status = 0;
  ASSERT_EQ(::waitpid(child, &status, 0), child);
  EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0) << status;
  quit();
  EXPECT_EQ(launch().integerForKey("best"), 40);
  EXPECT_FALSE(prefs->inUseElsewhere());
}

TEST_F(FilePreferenceStoreTest, DefaultFolderIgnoresAnEmptyDataHome) {
  TempDir home;
  ::setenv("HOME", home.path().c_str(), 1);
  ::setenv("XDG_DATA_HOME", "", 1);
  fs::path folder = FilePreferenceStore::defaultFolder();
  EXPECT_EQ(folder, home.path() / ".local/share/TwinLanes/TwinLanes");
  EXPECT_EQ(fs::status(folder).permissions() & fs::perms::all, fs::perms::owner_all);
}

// A writer killed at any moment leaves a file that parses and holds the last
// value it reported saved (or the one it was saving).
TEST_F(FilePreferenceStoreTest, KilledWriterNeverLeavesABrokenFile) {
  constexpr int kKills = 200;
  std::mt19937 random(12345);
  int64_t lastReported = 0;
  int tornOrStale = 0;
  for (int kill = 0; kill < kKills; ++kill) {
    int fds[2];
    ASSERT_EQ(::pipe(fds), 0);
    pid_t child = ::fork();
    ASSERT_GE(child, 0);
    if (child == 0) {
      ::close(fds[0]);
      CapturingLog quiet;
      FilePreferenceStore store(dir.path(), quiet);
      UserDefaults d(store, quiet);
      for (int64_t best = d.integerForKey("best") + 1;; ++best) {
        d.setInteger(best, "best");
        d.setInteger(best * 3, "cnt");
        if (!d.synchronize())
          ::_exit(2);
        if (::write(fds[1], &best, sizeof best) != sizeof best)
          ::_exit(3);
      }
    }
    ::close(fds[1]);
    // A save takes about 10 ms here (two fsyncs), so this lands kills before,
    // during and between the first saves of each writer.
    ::usleep(std::uniform_int_distribution<useconds_t>(0, 20'000)(random));
    ::kill(child, SIGKILL);
    int status = 0;
    ASSERT_EQ(::waitpid(child, &status, 0), child);
    ASSERT_TRUE(WIFSIGNALED(status)) << "writer stopped by itself: " << status;
    int64_t reported = 0;
    while (::read(fds[0], &reported, sizeof reported) == sizeof reported)
      lastReported = reported;
    ::close(fds[0]);

    CapturingLog check;
    FilePreferenceStore afterStore(dir.path(), check);
    UserDefaults after(afterStore, check);
    if (!check.lines().empty() || after.integerForKey("best") < lastReported ||
        after.integerForKey("cnt") != after.integerForKey("best") * 3) {
      ++tornOrStale;
      ADD_FAILURE() << "after kill " << kill << ": best " << after.integerForKey("best")
                    << ", reported " << lastReported << ", log "
                    << (check.lines().empty() ? "" : check.lines()[0]);
    }
  }
  EXPECT_EQ(tornOrStale, 0);
  EXPECT_GE(lastReported, kKills / 10);  // the writers did get saves done
}

}  // namespace
}  // namespace kit
