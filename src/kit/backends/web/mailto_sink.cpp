#include "kit/backends/web/mailto_sink.h"

#include <cctype>
#include <cstdio>
#include <utility>

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

// An HTML body as the plain text a mailto: link carries: line breaks for
// <br> and the ends of paragraphs and divisions, other tags dropped, the
// common entities decoded.
std::string plainText(std::string_view html) {
  std::string out;
  for (size_t i = 0; i < html.size();) {
    if (html[i] == '<') {
      const size_t end = html.find('>', i);
      if (end == std::string_view::npos)
        break;
      std::string tag(html.substr(i + 1, end - i - 1));
      for (char& c : tag)
        c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
      if (tag.rfind("br", 0) == 0 || tag == "/p" || tag == "/div")
        out += '\n';
      i = end + 1;
      continue;
    }
    if (html[i] == '&') {
      static constexpr std::pair<std::string_view, char> kEntities[] = {
          {"&amp;", '&'},  {"&lt;", '<'},   {"&gt;", '>'},
          {"&quot;", '"'}, {"&#39;", '\''}, {"&nbsp;", ' '}};
      bool decoded = false;
      for (const auto& [name, c] : kEntities) {
        if (html.substr(i, name.size()) == name) {
          out += c;
          i += name.size();
          decoded = true;
          break;
        }
      }
      if (decoded)
        continue;
    }
    out += html[i++];
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
  link += "&body=" + percentEncoded(crlf(mail.isHTML ? plainText(mail.body) : mail.body));
  return link;
}

bool MailtoSink::send(const MailMessage& mail) {
  return opener_.openURL(linkOf(mail));
}

}  // namespace kit::web
