#pragma once

#include <string>

#include "kit/ui/mail_compose_sink.h"

namespace kit {
class UrlOpener;
}

namespace kit::web {

// The feedback mail as a mailto: link: recipients, subject and body (an HTML
// body as plain text, line breaks as CRLF, everything percent-encoded), handed to the URL opener so
// the browser passes it to the user's mail program or web mail. A link
// carries no attachments: they are left out. A browser can always try, so
// mail counts as available. The opener is borrowed and outlives the sink.
class MailtoSink final : public MailSink {
 public:
  explicit MailtoSink(UrlOpener& opener) : opener_(opener) {}

  bool canSendMail() override { return true; }
  bool send(const MailMessage& mail) override;

  static std::string linkOf(const MailMessage& mail);

 private:
  UrlOpener& opener_;
};

}  // namespace kit::web
