#pragma once

#include <functional>
#include <string>

#include "kit/platform/mail_hand_off.h"

namespace kit {
class RunLoop;
class UrlOpener;
}  // namespace kit

namespace kit::web {

// The feedback mail as a mailto: link: recipients, subject and body (line
// breaks as CRLF, everything percent-encoded), handed to the URL opener, so
// the browser passes it to the user's mail program or web mail. A link
// carries no attachments: they are left out. Mail is always available (the
// browser decides what a mailto: link opens); the answer to a probe still
// arrives through the run loop given to deliverOn(). Main thread only.
class MailtoHandOff final : public MailHandOff {
 public:
  explicit MailtoHandOff(UrlOpener& opener) : opener_(opener) {}

  void probeAvailability(std::function<void(bool available)> done) override;
  Status handOff(const MailMessage& message) override;
  void deliverOn(RunLoop& loop) { loop_ = &loop; }

  // The mailto: URL for a message.
  static std::string linkOf(const MailMessage& message);

 private:
  UrlOpener& opener_;
  RunLoop* loop_ = nullptr;
};

}  // namespace kit::web
