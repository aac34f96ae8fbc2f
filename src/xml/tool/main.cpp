// twinlanes-xml COMMAND [ARG] FILE|URL|-
//
// Loads the document (from a path, a file:// or http(s) URL, or standard
// input for "-") and prints the answer of its top element to one query.
// Exit status: 0 with an answer, 1 when the answer is nil, 2 when nothing
// could be loaded. Log lines ("parse xml error") go to stderr; a document
// that fails part-way is still answered from what was read before the error.

#include <CLI/CLI.hpp>
#include <cstdio>
#include <string>
#include <vector>

#include "kit/backends/desktop/curl_http_client.h"
#include "kit/foundation/json.h"
#include "kit/foundation/value.h"
#include "kit/foundation/xml_event_parser.h"
#include "xml/xml_parser.h"

namespace {

std::optional<std::string> readStandardInput() {
  std::string bytes;
  char buffer[64 * 1024];
  size_t got;
  while ((got = std::fread(buffer, 1, sizeof buffer, stdin)) > 0) {
    if (bytes.size() + got > kit::XmlEventParser::kMaxUrlBytes)
      return std::nullopt;
    bytes.append(buffer, got);
  }
  if (std::ferror(stdin))
    return std::nullopt;
  return bytes;
}

std::vector<std::string> splitPath(const std::string& path) {
  std::vector<std::string> keys;
  if (path.empty())
    return keys;
  size_t start = 0;
  for (;;) {
    size_t slash = path.find('/', start);
    keys.push_back(path.substr(start, slash - start));
    if (slash == std::string::npos)
      return keys;
    start = slash + 1;
  }
}

std::string lines(const std::vector<std::string>& entries) {
  std::string out;
  for (const auto& entry : entries)
    out += entry + '\n';
  return out;
}

// The answer of `top` to the command, or nullopt when it is nil.
std::optional<std::string> answer(const std::string& command, const std::string& argument,
                                  TreeNode& top) {
  if (command == "dump")
    return top.dump();
  if (command == "keys")
    return lines(top.keys());
  if (command == "allkeys")
    return lines(top.allKeys());
  if (command == "uniqkeys")
    return lines(top.uniqKeys());
  if (command == "uniqallkeys")
    return lines(top.uniqAllKeys());
  if (command == "leaves")
    return lines(top.leaves());
  if (command == "allleaves")
    return lines(top.allLeaves());
  if (command == "objects") {
    std::string out;
    for (const auto& node : top.objectsForKey(argument))
      node->dumpAtIndent(0, out);
    return out;
  }
  if (command == "dict") {
    kit::Value::Dictionary dictionary;
    for (const auto& [key, value] : top.dictionaryForChildren())
      dictionary[key] = value;
    return kit::toJson(kit::Value(std::move(dictionary))) + '\n';
  }
  std::optional<std::string> value =
      command == "leaf" ? top.leafForKey(argument) : top.leafForKeys(splitPath(argument));
  if (!value)
    return std::nullopt;
  return *value + '\n';
}

}  // namespace

int main(int argc, char** argv) {
  CLI::App app{
      "Loads an XML document and prints the answer of its top element to one query.\n"
      "Exit status: 0 answered, 1 nil answer, 2 nothing loaded."};
  app.require_subcommand(1);

  struct Command {
    const char* name;
    const char* help;
    const char* argument;  // null when the command takes no argument
    const char* argumentHelp;
  };
  const Command commands[] = {
      {"dump", "the dump of the tree", nullptr, nullptr},
      {"keys", "the keys of the children, one per line", nullptr, nullptr},
      {"allkeys", "the keys of the whole tree below, in pre-order", nullptr, nullptr},
      {"uniqkeys", "the children's keys, sorted, duplicates removed", nullptr, nullptr},
      {"uniqallkeys", "all keys below, sorted, duplicates removed", nullptr, nullptr},
      {"leaves", "the values of the children that have one", nullptr, nullptr},
      {"allleaves", "every value below, in pre-order", nullptr, nullptr},
      {"leaf", "the value of the first node with KEY", "KEY", "an element name"},
      {"path", "the value at the path K1/K2/...; an empty path is the top element", "PATH",
       "element names joined by /, followed one level each, first match only"},
      {"objects", "the dump of every node with KEY, in pre-order", "KEY", "an element name"},
      {"dict", "the children's values as a JSON object", nullptr, nullptr},
  };
  std::string argument;
  std::string source;
  for (const auto& command : commands) {
    CLI::App* sub = app.add_subcommand(command.name, command.help);
    if (command.argument) {
      sub->add_option(command.argument, argument, command.argumentHelp)->required();
    }
    sub->add_option("SOURCE", source, "a file, a file:// or http(s) URL, or - for standard input")
        ->required();
  }
  CLI11_PARSE(app, argc, argv);
  const std::string command = app.get_subcommands().front()->get_name();

  kit::StderrLog log;
  kit::CurlHttpClient http;
  XMLParser shared(log, http);
  XMLParser::setSharedInstance(&shared);
  XMLParser& loader = XMLParser::sharedInstance();
  std::shared_ptr<TreeNode> top;
  if (source == "-") {
    auto bytes = readStandardInput();
    top = bytes ? loader.parseXMLFromData(*bytes) : loader.parse(nullptr);
  } else {
    top = loader.parseXMLFromURL(source);
  }
  if (!top)
    return 2;

  std::optional<std::string> out = answer(command, argument, *top);
  if (!out)
    return 1;
  std::fwrite(out->data(), 1, out->size(), stdout);
  return std::fflush(stdout) == 0 ? 0 : 2;
}
