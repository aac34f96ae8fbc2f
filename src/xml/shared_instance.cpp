#include "xml/xml_parser.h"

// Apart from the rest of the loader so that programs that never ask for the
// shared instance do not link libcurl's client.
XMLParser& XMLParser::sharedInstance() {
  static kit::StderrLog log;
  static kit::CurlHttpClient http;
  static XMLParser instance(log, http);
  return instance;
}
