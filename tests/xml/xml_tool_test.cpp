// Runs the twinlanes-xml binary on the sample documents and checks what a
// user sees: standard output, standard error and the exit status.

#include <gmock/gmock.h>
#include <httplib.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

#include "kit/foundation/temp_dir.h"
#include "kit/foundation/xml_event_parser.h"

namespace {

using ::testing::IsEmpty;

const std::string kData = TWINLANES_TEST_DATA "/xml/";

struct Result {
  std::string out;
  std::string err;
  int status = -1;
};

std::string slurp(const std::string& path) {
  std::stringstream text;
  text << std::ifstream(path).rdbuf();
  std::filesystem::remove(path);
  return text.str();
}

// Runs the tool with `args`, feeding it `input`.
Result run(const std::vector<std::string>& args, const std::string& input = "") {
  const std::string base =
      (std::filesystem::temp_directory_path() / ("xml-tool-" + std::to_string(getpid()))).string();
  std::ofstream(base + ".in", std::ios::binary) << input;
  std::string command = "'" + std::string(TWINLANES_XML_TOOL) + "'";
  for (const auto& arg : args)
    command += " '" + arg + "'";  // no test argument holds a quote
  const int raw =
      std::system((command + " <" + base + ".in >" + base + ".out 2>" + base + ".err").c_str());
  std::filesystem::remove(base + ".in");
  return {slurp(base + ".out"), slurp(base + ".err"), WIFEXITED(raw) ? WEXITSTATUS(raw) : -1};
}

TEST(XmlTool, DumpPrintsTheTreeExactly) {
  Result r = run({"dump", kData + "config.xml"});
  EXPECT_EQ(r.status, 0);
  EXPECT_EQ(r.out,
            "[ 0] Key: config \n"
            "--[ 1] Key: name (abc)\n"
            "--[ 1] Key: list \n"
            "----[ 2] Key: item (1)\n");
  EXPECT_THAT(r.err, IsEmpty());
}

TEST(XmlTool, ListObjectAndDictCommandsPrintOneEntryPerLine) {
  std::string catalog = kData + "catalog.xml";
  EXPECT_EQ(run({"keys", catalog}).out, "title\nitem\nitem\nnote\ntitle\n");
  EXPECT_EQ(run({"uniqallkeys", catalog}).out, "item\nname\nnote\nprice\ntag\ntags\ntitle\n");
  EXPECT_EQ(run({"allleaves", kData + "config.xml"}).out, "abc\n1\n");
  EXPECT_EQ(run({"objects", "tag", catalog}).out,
            "[ 0] Key: tag (oak)\n[ 0] Key: tag (Oak)\n[ 0] Key: tag (oak)\n");
  EXPECT_EQ(run({"dict", "-"}, "<r><x>1</x><y/><x>2 \"q\"</x><z>3</z></r>").out,
            "{\"x\":\"2 \\\"q\\\"\",\"z\":\"3\"}\n");
}

TEST(XmlTool, LeafAndPathPrintAValueOrExitWithOneWhenNilAndUsageErrorsAreRefused) {
  std::string catalog = kData + "catalog.xml";
  EXPECT_EQ(run({"leaf", "title", catalog}).out, "Winter & Spring\n");
  EXPECT_EQ(run({"path", "item/name", catalog}).out, "Lamp\n");
  Result noBacktracking = run({"path", "item/tags/tag", catalog});
  EXPECT_EQ(noBacktracking.status, 1);
  EXPECT_THAT(noBacktracking.out, IsEmpty());
  EXPECT_EQ(run({"leaf", "nothing", catalog}).status, 1);
  EXPECT_THAT(run({"--help"}).out, ::testing::HasSubstr("allleaves"));
  EXPECT_NE(run({"leaf", catalog}).status, 0);  // the key is missing
  EXPECT_NE(run({"frobnicate", catalog}).status, 0);
}

TEST(XmlTool, AFailedParseIsLoggedAndThePartialTreeStillAnswers) {
  Result r = run({"keys", kData + "broken.xml"});
  EXPECT_EQ(r.status, 0);
  EXPECT_EQ(r.out, "a\nb\n");
  EXPECT_EQ(r.err, "parse xml error\n");
  for (const Result& failed : {run({"dump", "-"}, "not xml"), run({"dump", kData + "none.xml"})}) {
    EXPECT_EQ(failed.status, 2);
    EXPECT_THAT(failed.out, IsEmpty());
    EXPECT_THAT(failed.err, ::testing::StartsWith("parse xml error\n"));
  }
}

TEST(XmlTool, ADocumentThatCannotBeReadSaysWhyAfterTheLogLine) {
  kit::TempDir dir("xml-tool-test");
  const std::string large = (dir.path() / "large.xml").string();
  std::ofstream{large}.close();
  std::filesystem::resize_file(large, kit::XmlEventParser::kMaxUrlBytes + 1);  // sparse
  const std::pair<std::string, std::string> cases[] = {
      {kData + "none.xml", "No such file or directory"},
      {dir.path().string(), "a folder, not a file"},
      {large, "larger than " + std::to_string(kit::XmlEventParser::kMaxUrlBytes) + " bytes"},
      {"http://127.0.0.1:1/doc.xml", "onnect"},  // refused
  };
  for (const auto& [source, why] : cases) {
    const Result r = run({"dump", source});
    EXPECT_EQ(r.status, 2);
    EXPECT_THAT(r.err, ::testing::StartsWith("parse xml error\ncannot read " + source + ": "));
    EXPECT_THAT(r.err, ::testing::HasSubstr(why)) << source;
  }
}

TEST(XmlTool, TheDumpOfAMillionDeepDocumentStreamsInsteadOfGrowingInMemory) {
  // Its dump would take about 10^11 bytes: the first megabyte comes out,
  // then the tool stops on the closed pipe.
  kit::TempDir dir("xml-tool-test");
  const auto deep = dir.path() / "deep.xml";
  {
    std::ofstream out(deep);
    constexpr int kDepth = 300'000;
    for (int i = 0; i < kDepth; ++i)
      out << "<a>";
    for (int i = 0; i < kDepth; ++i)
      out << "</a>";
  }
  const auto head = dir.path() / "head.txt";
  const auto pipeline = dir.path() / "pipeline.sh";
  for (const char* command : {"dump", "objects a"}) {
    std::ofstream(pipeline) << "timeout -s KILL 120 '" << TWINLANES_XML_TOOL << "' " << command
                            << " '" << deep.string() << "' | head -c 1000000 >'" << head.string()
                            << "'\nexit ${PIPESTATUS[0]}\n";
    const int raw = std::system(("bash '" + pipeline.string() + "'").c_str());
    const int status = WIFEXITED(raw) ? WEXITSTATUS(raw) : -1;
    EXPECT_NE(status, 128 + SIGKILL) << command << ": still building its output";
    EXPECT_EQ(std::filesystem::file_size(head), 1'000'000u) << command;
  }
}

TEST(XmlTool, ReadsDocumentsOverHttp) {
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
  Result found = run({"leaf", "name", base + "/config.xml"});
  Result missing = run({"dump", base + "/missing.xml"});
  server.stop();
  serving.join();
  EXPECT_EQ(found.out, "abc\n");
  EXPECT_EQ(missing.status, 2);
  EXPECT_EQ(missing.err,
            "parse xml error\ncannot read " + base + "/missing.xml: HTTP status 404\n");
}

}  // namespace
