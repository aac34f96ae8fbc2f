#include "kit/foundation/log.h"

#include <cstdio>

namespace kit {

void StderrLog::write(std::string_view line) {
  std::fprintf(stderr, "%.*s\n", static_cast<int>(line.size()), line.data());
}

void CapturingLog::write(std::string_view line) {
  {
    std::lock_guard<std::mutex> lock(mutex_);
    lines_.emplace_back(line);
  }
  if (forward_)
    forward_->write(line);
}

std::vector<std::string> CapturingLog::lines() const {
  std::lock_guard<std::mutex> lock(mutex_);
  return lines_;
}

std::vector<std::string> CapturingLog::take() {
  std::lock_guard<std::mutex> lock(mutex_);
  std::vector<std::string> fresh(lines_.begin() + static_cast<std::ptrdiff_t>(taken_),
                                 lines_.end());
  taken_ = lines_.size();
  return fresh;
}

bool CapturingLog::contains(std::string_view text) const {
  std::lock_guard<std::mutex> lock(mutex_);
  for (const auto& line : lines_) {
    if (line.find(text) != std::string::npos)
      return true;
  }
  return false;
}

}  // namespace kit
