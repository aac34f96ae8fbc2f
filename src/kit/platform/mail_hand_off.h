#pragma once

#include <functional>
#include <string>
#include <vector>

#include "kit/foundation/result.h"

namespace kit {

// A message the mail composer hands to the platform's mail program.
struct MailMessage {
  std::vector<std::string> to;
  std::string subject;
  std::string body;
  struct Attachment {
    std::string mimeType;
    std::string fileName;
    std::string data;
  };
  std::vector<Attachment> attachments;
};

// The platform's mail program: whether one is there, and handing it a
// message. Probing may be slow (the desktop starts a child process), so the
// answer comes back through the run loop; nothing waits for it on the main
// thread. Owned by the backend. Main thread only.
class MailHandOff {
 public:
  virtual ~MailHandOff() = default;
  // Calls `done` on the main thread's run loop with the answer; later calls
  // answer from what the first learnt.
  virtual void probeAvailability(std::function<void(bool available)> done) = 0;
  // Hands the message over; true once the mail program accepted it.
  [[nodiscard]] virtual Status handOff(const MailMessage& message) = 0;
};

}  // namespace kit
