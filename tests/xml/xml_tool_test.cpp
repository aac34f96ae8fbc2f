// Runs the twinlanes-xml binary on the sample documents and checks what a
// user sees: standard output, standard error and the exit status.

#include <gmock/gmock.h>
#include <httplib.h>
#include <stdlib.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <fstream>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

namespace {

using ::testing::HasSubstr;
using ::testing::IsEmpty;

const std::string kData = TWINLANES_TEST_DATA "/xml/";

std::string quoted(const std::string& arg) {
  std::string out = "'";
  for (char c : arg)
    out += c == '\'' ? std::string("'\\''") : std::string(1, c);
  return out + "'";
}

class XmlToolTest : public ::testing::Test {
 protected:
  struct Run {
    std::string out;
    std::string err;
    int status = -1;
  };

  // Runs the tool with `args`, feeding `input` to it when given.
  Run run(const std::vector<std::string>& args, const std::string& input = "") {
    std::string command = quoted(TWINLANES_XML_TOOL);
    for (const auto& arg : args)
      command += " " + quoted(arg);
    char errPath[] = "/tmp/xml-tool-err-XXXXXX";
    int errFd = mkstemp(errPath);
    close(errFd);
    char inPath[] = "/tmp/xml-tool-in-XXXXXX";
    int inFd = mkstemp(inPath);
    close(inFd);
    std::ofstream(inPath, std::ios::binary) << input;
    command += std::string(" <") + inPath + " 2>" + errPath;

    Run result;
    FILE* pipe = popen(command.c_str(), "r");
    char buffer[4096];
    size_t got;
    while ((got = fread(buffer, 1, sizeof buffer, pipe)) > 0)
      result.out.append(buffer, got);
    int status = pclose(pipe);
    result.status = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    std::stringstream err;
    err << std::ifstream(errPath).rdbuf();
    result.err = err.str();
    unlink(errPath);
    unlink(inPath);
    return result;
  }
};

TEST_F(XmlToolTest, DumpPrintsTheTreeExactly) {
  Run r = run({"dump", kData + "config.xml"});
  EXPECT_EQ(r.status, 0);
  EXPECT_EQ(r.out,
            "[ 0] Key: config \n"
            "--[ 1] Key: name (abc)\n"
            "--[ 1] Key: list \n"
            "----[ 2] Key: item (1)\n");
  EXPECT_THAT(r.err, IsEmpty());
}

TEST_F(XmlToolTest, ListCommandsPrintOneEntryPerLine) {
  std::string catalog = kData + "catalog.xml";
  EXPECT_EQ(run({"keys", catalog}).out, "title\nitem\nitem\nnote\ntitle\n");
  EXPECT_EQ(run({"uniqkeys", catalog}).out, "item\nnote\ntitle\n");
  EXPECT_EQ(run({"allkeys", catalog}).out,
            "title\nitem\nname\nprice\nitem\nname\ntags\ntag\ntag\ntag\nnote\ntitle\n");
  EXPECT_EQ(run({"uniqallkeys", catalog}).out, "item\nname\nnote\nprice\ntag\ntags\ntitle\n");
  EXPECT_EQ(run({"leaves", kData + "config.xml"}).out, "abc\n");
  EXPECT_EQ(run({"allleaves", kData + "config.xml"}).out, "abc\n1\n");
}

TEST_F(XmlToolTest, LeafAndPathPrintAValueOrExitWithOneWhenNil) {
  std::string catalog = kData + "catalog.xml";
  EXPECT_EQ(run({"leaf", "price", catalog}).out, "12.50\n");
  EXPECT_EQ(run({"leaf", "title", catalog}).out, "Winter & Spring\n");
  EXPECT_EQ(run({"path", "item/name", catalog}).out, "Lamp\n");
  Run noBacktracking = run({"path", "item/tags/tag", catalog});
  EXPECT_EQ(noBacktracking.status, 1);
  EXPECT_THAT(noBacktracking.out, IsEmpty());
  Run top = run({"path", "", catalog});
  EXPECT_EQ(top.status, 0);
  EXPECT_THAT(top.out, ::testing::StartsWith("shop\n  "));
  Run missing = run({"leaf", "nothing", catalog});
  EXPECT_EQ(missing.status, 1);
  EXPECT_THAT(missing.out, IsEmpty());
}

TEST_F(XmlToolTest, ObjectsDumpsEveryMatchInOrder) {
  Run r = run({"objects", "tag", kData + "catalog.xml"});
  EXPECT_EQ(r.out, "[ 0] Key: tag (oak)\n[ 0] Key: tag (Oak)\n[ 0] Key: tag (oak)\n");
}

TEST_F(XmlToolTest, DictPrintsTheChildrensValuesAsJson) {
  Run r = run({"dict", "-"}, "<r><x>1</x><y/><x>2 \"q\"</x><z>3</z></r>");
  EXPECT_EQ(r.status, 0);
  EXPECT_EQ(r.out, "{\"x\":\"2 \\\"q\\\"\",\"z\":\"3\"}\n");
}

TEST_F(XmlToolTest, AFailedParseIsLoggedAndThePartialTreeStillAnswers) {
  Run r = run({"keys", kData + "broken.xml"});
  EXPECT_EQ(r.status, 0);
  EXPECT_EQ(r.out, "a\nb\n");
  EXPECT_EQ(r.err, "parse xml error\n");

  Run nothing = run({"dump", "-"}, "not xml");
  EXPECT_EQ(nothing.status, 2);
  EXPECT_THAT(nothing.out, IsEmpty());
  EXPECT_EQ(nothing.err, "parse xml error\n");

  Run unreadable = run({"dump", kData + "no-such-file.xml"});
  EXPECT_EQ(unreadable.status, 2);
  EXPECT_EQ(unreadable.err, "parse xml error\n");
}

TEST_F(XmlToolTest, ReadsDocumentsOverHttp) {
  httplib::Server server;
  server.Get("/config.xml", [](const httplib::Request&, httplib::Response& res) {
    res.set_content("<config><name>abc</name></config>", "application/xml");
  });
  server.Get("/missing.xml", [](const httplib::Request&, httplib::Response& res) {
    res.status = 404;
    res.set_content("<error/>", "application/xml");
  });
  int port = server.bind_to_any_port("127.0.0.1");
  std::thread serving([&] { server.listen_after_bind(); });
  std::string base = "http://127.0.0.1:" + std::to_string(port);

  Run found = run({"leaf", "name", base + "/config.xml"});
  Run missing = run({"dump", base + "/missing.xml"});
  server.stop();
  serving.join();

  EXPECT_EQ(found.status, 0);
  EXPECT_EQ(found.out, "abc\n");
  EXPECT_EQ(missing.status, 2);
  EXPECT_EQ(missing.err, "parse xml error\n");
}

TEST_F(XmlToolTest, HelpAndUsageErrors) {
  Run help = run({"--help"});
  EXPECT_EQ(help.status, 0);
  EXPECT_THAT(help.out, HasSubstr("allleaves"));
  EXPECT_NE(run({"leaf", kData + "config.xml"}).status, 0);  // the key is missing
  EXPECT_NE(run({"frobnicate", kData + "config.xml"}).status, 0);
  EXPECT_NE(run({}).status, 0);
}

}  // namespace
