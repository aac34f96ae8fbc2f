// The ads as a player meets them in the real game: a house banner under the
// scene, an interstitial over the window after every second game over, and
// the launch counters in the preferences file.
#include "e2e_fixture.h"

namespace e2e {
namespace {

const auto amber = [](Rgb p) { return p.r > 220 && p.g > 150 && p.g < 225 && p.b < 110; };
const auto bright = [](Rgb p) { return p.r > 215 && p.g > 215 && p.b > 215; };
// A run without steering ends within a few seconds; the game-over screen
// takes taps once it is up.
const std::string crashAndWait = "wait 8\ndump\n";

using AdsOnScreenTest = EndToEndTest;

TEST_F(AdsOnScreenTest, EverySecondGameOverShowsAnInterstitialOverTheWindow) {
  const Outcome all =
      run({"--scale", "1", "--seed", "7", "--prefs-dir", prefs()},
          "start\nwait 1\nscreenshot " + shot("home.png") + "\ntapbutton play\n" + crashAndWait +
              "tapbutton again\n" + crashAndWait + "screenshot " + shot("interstitial.png") +
              "\nclosead\nwait 1\ntapbutton again\n" + crashAndWait + "tapbutton again\n" +
              crashAndWait + "closead\nwait 1\ndump\n");
  ASSERT_EQ(all.exitCode, 0) << all.err;
  ASSERT_EQ(all.dumps.size(), 5u) << all.out;
  for (size_t i = 0; i < 4; ++i) {
    const auto& state = all.dumps[i];
    ASSERT_TRUE(state["overFlag"].get<bool>()) << i << ": " << state.dump();
    EXPECT_EQ(state["notifications"]["showad"], i + 1);
    EXPECT_EQ(state["ads"]["interstitial"]["showing"], i % 2 == 1) << i;
    EXPECT_EQ(state["ads"]["interstitial"]["shows"], (i + 1) / 2) << i;
  }
  // A fresh interstitial is waiting after each close.
  EXPECT_EQ(all.dumps[4]["ads"]["interstitial"]["ready"], true);
  EXPECT_EQ(all.dumps[4]["ads"]["banner"]["frame"], nlohmann::json::parse("[0, 568, 320, 50]"));

  // The banner sits in the strip under the scene: amber kerb and lettering.
  const kit::Image home = screenshot("home.png");
  EXPECT_GT(count(home, 0, 613, 320, 618, amber), 600);
  EXPECT_GT(count(home, 50, 570, 250, 600, bright), 150);
  EXPECT_EQ(count(home, 0, 0, 320, 560, amber), 0);  // nothing amber on the dimmed road

  // The interstitial covers the window, the strip included, with its close
  // button in the top right corner.
  const kit::Image shown = screenshot("interstitial.png");
  EXPECT_GT(count(shown, 280, 15, 300, 45, bright), 20);
  EXPECT_GT(count(shown, 70, 500, 250, 550, amber), 3000);  // "PLAY NOW"
  EXPECT_EQ(count(shown, 0, 613, 320, 618, amber), 0);      // no banner showing through

  // Counters and ad units are stored as text.
  const auto file = nlohmann::json::parse(read(dir.path() / "prefs" / "prefs.json"));
  EXPECT_EQ(file["app-open-times"], "1");
  EXPECT_EQ(file["first-down-load"], "1700000000");
  EXPECT_EQ(file["banner-id"], "ca-app-pub-1234567890123456/1234567890");
  EXPECT_EQ(file["interstitial-id"], "ca-app-pub-1234567890123456/0987654321");
}

TEST_F(AdsOnScreenTest, ScriptTapsUnderTheInterstitialNeverReachTheGame) {
  // A finger on the play-again button's place (160, 250 in the scene) lands
  // on the interstitial over it, which opens its page; the game stays over.
  const Outcome r = run({"--headless", "--seed", "7"},
                        "start\ntapbutton play\n" + crashAndWait + "tapbutton again\n" +
                            crashAndWait + "tap 160 250\nwait 1\ndump\ntapbutton again\n");
  EXPECT_EQ(r.exitCode, 2);
  EXPECT_NE(r.err.find(":11: the again button is covered by a GADInterstitialView"),
            std::string::npos)
      << r.err;
  ASSERT_EQ(r.dumps.size(), 3u) << r.out;
  EXPECT_EQ(r.dumps[1]["ads"]["interstitial"]["showing"], true);
  EXPECT_EQ(r.dumps[2]["ads"]["interstitial"]["showing"], true);
  EXPECT_TRUE(r.dumps[2]["overFlag"].get<bool>());
  EXPECT_EQ(r.dumps[2]["openedURLs"].size(), 1u);
}

TEST_F(AdsOnScreenTest, ANetworkWithoutAdsLeavesTheStripEmptyAndSaysWhy) {
  const Outcome r =
      run({"--headless", "--seed", "3"}, "adnet fail\nstart\nwait 1\ndump\nclosead\n");
  EXPECT_EQ(r.exitCode, 2);
  EXPECT_NE(r.err.find(":5: no interstitial is on screen"), std::string::npos) << r.err;
  ASSERT_EQ(r.dumps.size(), 1u) << r.out;
  EXPECT_EQ(r.dumps[0]["ads"]["banner"]["loaded"], false);
  EXPECT_NE(r.dumps[0]["log"].dump().find("Failed to receive banner with error"), std::string::npos)
      << r.out;
}

}  // namespace
}  // namespace e2e
