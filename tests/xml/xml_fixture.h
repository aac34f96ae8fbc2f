#pragma once

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "kit/foundation/http.h"
#include "kit/foundation/log.h"
#include "xml/tree_node.h"
#include "xml/xml_parser.h"

// Answers every GET with a canned reply and remembers the requests.
class FakeHttpClient final : public kit::HttpClient {
 public:
  kit::HttpResponse get(const kit::HttpRequest& request) override {
    requests.push_back(request);
    return reply;
  }
  kit::HttpResponse reply;
  std::vector<kit::HttpRequest> requests;
};

// Loads documents with a loader of its own and keeps what it logged.
class XmlTest : public ::testing::Test {
 protected:
  std::shared_ptr<TreeNode> loadXml(const std::string& text) {
    return loader.parseXMLFromData(text);
  }
  std::shared_ptr<TreeNode> loadUrl(const std::string& url) { return loader.parseXMLFromURL(url); }
  bool logged(const std::string& line) const { return log.contains(line); }

  // The value of the node reached by the path, or "<nil>".
  static std::string valueAt(TreeNode& top, const std::vector<std::string>& path) {
    return top.leafForKeys(path).value_or("<nil>");
  }

  kit::CapturingLog log;
  FakeHttpClient http;
  XMLParser loader{log, http};
};
