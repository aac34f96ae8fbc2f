#include "names/launch_defaults.h"

#include "names/preference_keys.h"

void registerDefaultPreferences(kit::UserDefaults& defaults) {
  defaults.registerDefaults(
      {{prefkey::kBest, 0}, {prefkey::kFirst, true}, {prefkey::kSound, true}, {prefkey::kCnt, 0}});
}

void registerLaunchDefaults(kit::UserDefaults& defaults) {
  registerDefaultPreferences(defaults);
  defaults.setBool(true, prefkey::kFirst);
  defaults.setInteger(0, prefkey::kCnt);
  defaults.synchronize();
}
