// Time from exec to the first presented frame, and peak memory, of the game
// against a bare SDL program that opens a window and presents once. Both run
// in every iteration, alternately, on SDL's offscreen driver.
#include <benchmark/benchmark.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <string>
#include <vector>

#include "kit/foundation/temp_dir.h"

namespace {

struct Launch {
  double millis = 0;  // exec to first present
  double peakMiB = 0;
  bool ok = false;
};

int64_t steadyNanos() {
  return std::chrono::duration_cast<std::chrono::nanoseconds>(
             std::chrono::steady_clock::now().time_since_epoch())
      .count();
}

// Runs `argv`, reading its stderr for the first-present line.
Launch launch(const std::vector<std::string>& argv) {
  int pipeFds[2];
  if (pipe(pipeFds) != 0)
    return {};
  const int64_t start = steadyNanos();
  const pid_t pid = fork();
  if (pid == 0) {
    dup2(pipeFds[1], 2);
    close(pipeFds[0]);
    close(pipeFds[1]);
    setenv("SDL_VIDEODRIVER", "offscreen", 1);
    setenv("SDL_FRAMEBUFFER_ACCELERATION", "0", 1);
    setenv("TWINLANES_STARTUP_TRACE", "1", 1);
    std::vector<char*> args;
    for (const auto& a : argv)
      args.push_back(const_cast<char*>(a.c_str()));
    args.push_back(nullptr);
    execv(args[0], args.data());
    _exit(127);
  }
  close(pipeFds[1]);
  std::string output;
  char buffer[4096];
  for (ssize_t n; (n = read(pipeFds[0], buffer, sizeof buffer)) > 0;)
    output.append(buffer, n);
  close(pipeFds[0]);
  int status = 0;
  rusage usage{};
  wait4(pid, &status, 0, &usage);
  Launch result;
  const std::string marker = "first frame presented at steady time ";
  const size_t at = output.find(marker);
  if (at == std::string::npos || !WIFEXITED(status) || WEXITSTATUS(status) != 0)
    return result;
  const int64_t presented = std::stoll(output.substr(at + marker.size()));
  result.millis = static_cast<double>(presented - start) / 1e6;
  result.peakMiB = static_cast<double>(usage.ru_maxrss) / 1024.0;
  result.ok = true;
  return result;
}

double median(std::vector<double> v) {
  std::sort(v.begin(), v.end());
  return v.empty() ? 0 : v[v.size() / 2];
}

void BM_StartupToFirstFrame(benchmark::State& state) {
  kit::TempDir prefs("twinlanes-startup-bench");
  const std::vector<std::string> game = {TWINLANES_BINARY, "--frames", "1", "--prefs-dir",
                                         prefs.path().string()};
  const std::vector<std::string> bare = {BARE_WINDOW_BINARY};
  std::vector<double> gameMs, bareMs, gameMiB, bareMiB;
  for (auto _ : state) {
    const Launch b = launch(bare);
    const Launch g = launch(game);
    if (!b.ok || !g.ok) {
      state.SkipWithError("a program did not present a frame (is the offscreen driver there?)");
      return;
    }
    bareMs.push_back(b.millis);
    gameMs.push_back(g.millis);
    bareMiB.push_back(b.peakMiB);
    gameMiB.push_back(g.peakMiB);
    state.SetIterationTime(g.millis / 1000);
  }
  const double bareMedian = median(bareMs), gameMedian = median(gameMs);
  state.counters["bare_ms"] = bareMedian;
  state.counters["game_ms"] = gameMedian;
  state.counters["game_over_bare"] = gameMedian / bareMedian;
  // The goal: within 1.5 times the bare program plus 100 ms.
  state.counters["goal_ms"] = 1.5 * bareMedian + 100;
  state.counters["bare_peak_MiB"] = median(bareMiB);
  state.counters["game_peak_MiB"] = median(gameMiB);
}
BENCHMARK(BM_StartupToFirstFrame)->UseManualTime()->Iterations(15)->Unit(benchmark::kMillisecond);

}  // namespace
