#include "kit/backends/web/mailto_sink.h"

#include <cstdio>

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

std::string MailtoSink::linkOf(const MailMessage& mail) {
  std::string link = "mailto:";
  for (size_t i = 0; i < mail.toRecipients.size(); ++i) {
    if (i > 0)
      link += ',';
    link += percentEncoded(mail.toRecipients[i]);
  }
  link += "?subject=" + percentEncoded(mail.subject);
  link += "&body=" + percentEncoded(crlf(mail.body));
  return link;
}

bool MailtoSink::send(const MailMessage& mail) {
  return opener_.openURL(linkOf(mail));
}

}  // namespace kit::web
