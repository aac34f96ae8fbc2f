#include "kit/backends/web/mailto_hand_off.h"

#include <cstdio>

#include "kit/foundation/run_loop.h"
#include "kit/foundation/url_opener.h"

namespace kit::web {
namespace {

// Percent-encodes everything but RFC 3986's unreserved characters.
std::string percentEncoded(std::string_view text) {
  std::string out;
  for (const unsigned char c : text) {
    if ((c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || (c >= '0' && c <= '9') || c == '-' ||
        c == '.' || c == '_' || c == '~') {
      out += static_cast<char>(c);
    } else {
      char hex[4];
      std::snprintf(hex, sizeof hex, "%%%02X", c);
      out += hex;
    }
  }
  return out;
}

// Line breaks as CRLF, as mail wants them.
std::string crlf(std::string_view text) {
  std::string out;
  for (size_t i = 0; i < text.size(); ++i) {
    if (text[i] == '\r' && i + 1 < text.size() && text[i + 1] == '\n')
      continue;
    if (text[i] == '\n' || text[i] == '\r')
      out += "\r\n";
    else
      out += text[i];
  }
  return out;
}

}  // namespace

std::string MailtoHandOff::linkOf(const MailMessage& message) {
  std::string link = "mailto:";
  for (size_t i = 0; i < message.to.size(); ++i) {
    if (i > 0)
      link += ',';
    link += percentEncoded(message.to[i]);
  }
  link += "?subject=" + percentEncoded(message.subject);
  link += "&body=" + percentEncoded(crlf(message.body));
  return link;
}

void MailtoHandOff::probeAvailability(std::function<void(bool available)> done) {
  if (loop_ == nullptr) {
    done(true);
    return;
  }
  loop_->post([done = std::move(done)] { done(true); });
}

Status MailtoHandOff::handOff(const MailMessage& message) {
  if (!opener_.openURL(linkOf(message)))
    return Error{"the browser refused the mailto: link"};
  return {};
}

}  // namespace kit::web
