#pragma once

// Every preference key the game writes or reads, in one place. The preference
// file's format is these strings; changing one loses what players have kept.
namespace prefkey {

// The game and its host.
inline constexpr const char* kBest = "best";    // the best score, an integer
inline constexpr const char* kFirst = "first";  // YES on every launch
inline constexpr const char* kSound = "sound";  // the sound switch
inline constexpr const char* kCnt = "cnt";      // game overs of this launch

// The ad controller's counters and ad units, kept as text.
inline constexpr const char* kFirstDownload = "first-down-load";
inline constexpr const char* kAppOpenTimes = "app-open-times";
inline constexpr const char* kBannerId = "banner-id";
inline constexpr const char* kInterstitialId = "interstitial-id";

// The rating service.
inline constexpr const char* kRated = "cz_rated";
inline constexpr const char* kFirstIn = "cz_firstin";
inline constexpr const char* kAppOpened = "cz_appopened";

// Registered by the kit at launch: the user's preferred languages, first
// choice first.
inline constexpr const char* kLanguages = "AppleLanguages";

}  // namespace prefkey
