// Cost of saving the game's preferences, against the bare atomic write of the
// same bytes (temporary file, write, fsync, close, rename, folder fsync) on
// the same folder in the same run. Folders: /var/tmp and /tmp.
#include <benchmark/benchmark.h>
#include <fcntl.h>
#include <unistd.h>

#include <string>

#include "kit/backends/files/file_preference_store.h"
#include "kit/foundation/log.h"
#include "kit/foundation/temp_dir.h"
#include "kit/foundation/user_defaults.h"

namespace kit {
namespace {

Value::Dictionary gamePreferences() {
  return {{"best", 57},
          {"first", 1},
          {"sound", true},
          {"cnt", 12},
          {"first-down-load", 1'700'000'000},
          {"app-open-times", 3},
          {"banner-id", "ca-app-pub-1234567890123456/1234567890"},
          {"interstitial-id", "ca-app-pub-1234567890123456/0987654321"},
          {"cz_rated", false},
          {"cz_firstin", 1'700'000'000},
          {"cz_appopened", 2},
          {"AppleLanguages", Value::Array{"en", "zh-Hans"}}};
}

void BM_Synchronize(benchmark::State& state, const std::string& parent) {
  TempDir dir("prefs-bench", parent);
  CapturingLog log;
  FilePreferenceStore store(dir.path(), log);
  UserDefaults prefs(store, log);
  for (const auto& [key, value] : gamePreferences())
    prefs.setObject(value, key);
  int64_t count = 0;
  for (auto _ : state) {
    prefs.setInteger(++count % 1000, "cnt");
    if (!prefs.synchronize())
      state.SkipWithError("save failed");
  }
}

void BM_BareAtomicWrite(benchmark::State& state, const std::string& parent) {
  TempDir dir("prefs-bench", parent);
  const std::string bytes = UserDefaults::encode(gamePreferences());
  const std::string temp = (dir.path() / "prefs.json.tmp").string();
  const std::string file = (dir.path() / "prefs.json").string();
  for (auto _ : state) {
    int fd = ::open(temp.c_str(), O_CREAT | O_EXCL | O_WRONLY | O_CLOEXEC, 0600);
    bool ok = fd >= 0 && ::write(fd, bytes.data(), bytes.size()) == ssize_t(bytes.size()) &&
              ::fsync(fd) == 0;
    ok = (fd >= 0 && ::close(fd) == 0) && ok;
    ok = ok && ::rename(temp.c_str(), file.c_str()) == 0;
    int dirFd = ::open(dir.path().c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    ok = ok && dirFd >= 0 && ::fsync(dirFd) == 0;
    if (dirFd >= 0)
      ::close(dirFd);
    if (!ok)
      state.SkipWithError("write failed");
  }
}

void BM_Encode(benchmark::State& state) {
  const Value::Dictionary prefs = gamePreferences();
  for (auto _ : state)
    benchmark::DoNotOptimize(UserDefaults::encode(prefs));
}

// Saves wait on the disk, not the CPU: iterations are counted in wall time.
#define PREFS_WRITE_BENCH(fn, name, folder)        \
  BENCHMARK_CAPTURE(fn, name, std::string(folder)) \
      ->Unit(benchmark::kMillisecond)              \
      ->UseRealTime()                              \
      ->MinTime(2.0)

PREFS_WRITE_BENCH(BM_Synchronize, var_tmp, "/var/tmp");
PREFS_WRITE_BENCH(BM_BareAtomicWrite, var_tmp, "/var/tmp");
PREFS_WRITE_BENCH(BM_Synchronize, tmp, "/tmp");
PREFS_WRITE_BENCH(BM_BareAtomicWrite, tmp, "/tmp");
BENCHMARK(BM_Encode)->Unit(benchmark::kMicrosecond);

}  // namespace
}  // namespace kit
