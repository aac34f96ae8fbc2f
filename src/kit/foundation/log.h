#pragma once

#include <mutex>
#include <string>
#include <string_view>
#include <vector>

namespace kit {

// The platform log: plain lines without levels. Injected by reference.
class Log {
 public:
  virtual ~Log() = default;
  virtual void write(std::string_view line) = 0;
};

// Writes each line to stderr.
class StderrLog final : public Log {
 public:
  void write(std::string_view line) override;
};

// Keeps lines in memory (and optionally forwards them), for tests and the
// scenario runner. Thread-safe.
class CapturingLog final : public Log {
 public:
  explicit CapturingLog(Log* forward = nullptr) : forward_(forward) {}
  void write(std::string_view line) override;

  std::vector<std::string> lines() const;
  // The lines written since the last take().
  std::vector<std::string> take();
  bool contains(std::string_view text) const;

 private:
  Log* forward_;
  mutable std::mutex mutex_;
  std::vector<std::string> lines_;
  size_t taken_ = 0;
};

}  // namespace kit
