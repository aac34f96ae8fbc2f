// How fast the game simulates headless: 1,000 runs played by the built-in
// player on the scenario runner's exact 60 Hz clock, from one fixed seed.
// Reported counters:
//   speedup      simulated seconds per wall second (goal: at least 1,000,
//                i.e. a thousand times real time)
//   speedup_cpu  the same per second of this thread's CPU time, which a busy
//                machine inflates far less than wall time
//   fps          frames simulated per wall second
//   frame_us     wall microseconds per frame
//   idle_ratio   a played frame's cost over an idle frame's (the home screen
//                with nothing moving, measured in the same run): the baseline
//   runs, sim_seconds, mean_score, best
// The player presses play again after each game over, so a run's length is
// the player's survival time plus about a second of game-over screen.

#include <benchmark/benchmark.h>

#include <chrono>
#include <cstdint>
#include <ctime>
#include <sstream>

#include "app/scenario_host.h"
#include "app/scenario_runner.h"
#include "kit/foundation/headless_platform.h"
#include "kit/foundation/temp_dir.h"
#include "names/preference_keys.h"

namespace {

constexpr unsigned kSeed = 20240601;
constexpr int kRuns = 1000;

double threadCpuSeconds() {
  timespec ts{};
  clock_gettime(CLOCK_THREAD_CPUTIME_ID, &ts);
  return static_cast<double>(ts.tv_sec) + static_cast<double>(ts.tv_nsec) * 1e-9;
}

double wallSeconds() {
  using namespace std::chrono;
  return duration<double>(steady_clock::now().time_since_epoch()).count();
}

// A headless game on a runner of its own, started with the fixed seed.
struct Game {
  Game() {
    runner.setSeed(kSeed);
    runner.start();
  }
  kit::TempDir prefs{"twinlanes-bench"};
  kit::HeadlessPlatform platform{prefs.path(), TWINLANES_RESOURCES};
  HeadlessHost host{platform.services()};
  std::ostringstream out;
  ScenarioRunner runner{platform, host, out};
};

// Wall seconds per frame of the home screen, where nothing moves.
double idleFrameSeconds() {
  Game game;
  constexpr int kFrames = 20'000;
  const double start = wallSeconds();
  game.runner.runFrames(kFrames);
  return (wallSeconds() - start) / kFrames;
}

void BM_AutoplayThousandRuns(benchmark::State& state) {
  for (auto _ : state) {
    const double idle = idleFrameSeconds();
    Game game;
    game.runner.setAutoplay(true);
    int runs = 0;
    int64_t scoreSum = 0;
    bool wasOver = false;
    const GameScene& scene = *game.runner.scene();
    const double wallStart = wallSeconds(), cpuStart = threadCpuSeconds();
    while (runs < kRuns) {
      game.runner.runFrames(1);
      if (scene.overFlag() && !wasOver) {
        ++runs;
        scoreSum += scene.score();
      }
      wasOver = scene.overFlag();
    }
    const double wall = wallSeconds() - wallStart, cpu = threadCpuSeconds() - cpuStart;
    const auto frames = static_cast<double>(game.runner.frame());
    const double simulated = frames / 60;
    state.SetIterationTime(wall);
    state.counters["runs"] = runs;
    state.counters["sim_seconds"] = simulated;
    state.counters["speedup"] = simulated / wall;
    state.counters["speedup_cpu"] = simulated / cpu;
    state.counters["fps"] = frames / wall;
    state.counters["frame_us"] = wall / frames * 1e6;
    state.counters["idle_ratio"] = wall / frames / idle;
    state.counters["mean_score"] = static_cast<double>(scoreSum) / runs;
    state.counters["best"] =
        static_cast<double>(game.platform.defaults.integerForKey(prefkey::kBest));
  }
}

}  // namespace

BENCHMARK(BM_AutoplayThousandRuns)->Iterations(1)->UseManualTime()->Unit(benchmark::kSecond);
