#pragma once

#include <chrono>
#include <future>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "kit/foundation/log.h"
#include "kit/foundation/url_opener.h"
#include "kit/ui/mail_compose_sink.h"

namespace kit {

// Hands mail to the desktop's mail app as a mailto: link through the URL
// opener. Mail counts as available when the desktop names a handler for
// mailto links (xdg-mime, run once without a shell and given two seconds).
// Only the recipients, the subject and a plain-text body travel: attachments
// cannot, and are dropped with a log line. The opener and the log are
// borrowed and must outlive the sink.
//
// The handler query is a child process, so it starts when the sink is made
// and runs on its own thread; canSendMail() answers from it and waits only
// if it is asked before the query has finished (the game makes its sink at
// launch, long before the first prompt can ask).
class DesktopMailSink final : public MailSink {
 public:
  // Bodies longer than this (in bytes, before encoding) are cut at a
  // character boundary: mail apps refuse very long links.
  static constexpr size_t kMaxBodyBytes = 2000;

  DesktopMailSink(UrlOpener& opener, Log& log);
  // With another handler query (an argv, run from PATH) and time limit.
  DesktopMailSink(UrlOpener& opener, Log& log, std::vector<std::string> probe,
                  std::chrono::milliseconds probeTimeout);

  ~DesktopMailSink() override;
  DesktopMailSink(const DesktopMailSink&) = delete;
  DesktopMailSink& operator=(const DesktopMailSink&) = delete;

  bool canSendMail() override;
  bool send(const MailMessage& mail) override;

  // The mailto: link of `mail` (RFC 6068): recipients, subject and body
  // percent-encoded; CR, LF and other control characters removed from the
  // recipients and the subject; an HTML body turned into plain text; body
  // line breaks sent as CRLF.
  static std::string mailtoURL(const MailMessage& mail);
  // Plain text of an HTML body: <br> in any spelling becomes a line break,
  // other tags go, the common entities are decoded, source line breaks are
  // spaces (as a browser would show them).
  static std::string plainTextOfHTML(std::string_view html);

 private:
  UrlOpener& opener_;
  Log& log_;
  std::future<std::optional<std::string>> probe_;
  std::optional<bool> available_;
};

}  // namespace kit
