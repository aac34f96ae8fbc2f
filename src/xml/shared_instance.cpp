#include "xml/xml_parser.h"

#include <cstdlib>

#include "kit/foundation/assert.h"

namespace {

// Not an owner: the program owns the shared loader and outlives its use.
XMLParser* gShared = nullptr;

}  // namespace

XMLParser::~XMLParser() {
  if (gShared == this)
    gShared = nullptr;
}

XMLParser& XMLParser::sharedInstance() {
  if (!KIT_ASSERT(gShared != nullptr, "XMLParser::sharedInstance before setSharedInstance"))
    std::abort();
  return *gShared;
}

void XMLParser::setSharedInstance(XMLParser* parser) {
  gShared = parser;
}
