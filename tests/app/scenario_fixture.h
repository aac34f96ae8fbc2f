#pragma once

#include <gtest/gtest.h>

#include <cmath>
#include <sstream>
#include <string>
#include <vector>

#include "app/scenario_host.h"
#include "app/scenario_runner.h"
#include "kit/foundation/headless_platform.h"
#include "kit/foundation/json.h"
#include "kit/foundation/temp_dir.h"

namespace kit {
// Failure messages show values as JSON.
inline void PrintTo(const Value& value, std::ostream* os) {
  *os << toJson(value);
}
}  // namespace kit

// Runs scripts through the scenario runner on headless services with a
// private preferences folder, and keeps what they printed.
class ScenarioTest : public ::testing::Test {
 protected:
  // Runs `script`; returns the exit status.
  int runScript(const std::string& script) {
    std::istringstream in(script);
    return runner.run(in, "test.tl", err);
  }
  // Each printed line, parsed.
  std::vector<kit::Value> printed() const {
    std::vector<kit::Value> values;
    std::istringstream lines(out.str());
    for (std::string line; std::getline(lines, line);)
      values.push_back(kit::parseJson(line).value_or(kit::Value("<not JSON>")));
    return values;
  }

  // Whether `actual` has every field of `expected` (recursively; arrays must
  // have the same length). Numbers match within 1e-9, integer or not. On a
  // mismatch `where` names the first differing path.
  static bool matches(const kit::Value& expected, const kit::Value& actual, std::string& where,
                      const std::string& path = "") {
    const auto isNumber = [](const kit::Value& v) { return v.ifInteger() || v.ifReal(); };
    if (isNumber(expected) && isNumber(actual)) {
      if (std::fabs(expected.doubleValue() - actual.doubleValue()) <= 1e-9)
        return true;
    } else if (const auto* fields = expected.ifDictionary()) {
      if (actual.ifDictionary()) {
        for (const auto& [key, value] : *fields) {
          if (!matches(value, actual[key], where, path + "." + key))
            return false;
        }
        return true;
      }
    } else if (const auto* items = expected.ifArray()) {
      const auto* got = actual.ifArray();
      if (got && got->size() == items->size()) {
        for (std::size_t i = 0; i < items->size(); ++i) {
          if (!matches((*items)[i], (*got)[i], where, path + "[" + std::to_string(i) + "]")) {
            return false;
          }
        }
        return true;
      }
    } else if (expected == actual) {
      return true;
    }
    where = (path.empty() ? "the value" : path) + ": expected " + kit::toJson(expected) + ", got " +
            kit::toJson(actual);
    return false;
  }

  kit::TempDir prefs{"twinlanes-scenario-test"};
  kit::HeadlessPlatform platform{prefs.path(), TWINLANES_RESOURCES};
  HeadlessHost host{platform.services()};
  std::ostringstream out;
  std::ostringstream err;
  ScenarioRunner runner{platform, host, out};
};
