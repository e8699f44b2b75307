// The worked examples of docs/sources.md do what the document says, and so do their commands on
// real flows and databases.
#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <vector>

#include "DocExamples.h"
#include "Process.h"

namespace {

/// Runs a command where the examples are. The switch's own command prints their flows.
ProcessResult runExample(const std::string& command) {
  return runProcess({"/usr/bin/env", "bash", "-c",
                     "cd '" TCAMSHOW_EXAMPLES "/sources' && tcamshow() { '" TCAMSHOW_PROGRAM
                     "' \"$@\"; } && ovs-ofctl() { cat flows.txt; }\n" +
                         command});
}

TEST(SourcesDoc, ShowsWhatTheCommandsPrint) {
  std::vector<DocExample> const examples = docExamples(TCAMSHOW_DOCS "/sources.md");
  for (const DocExample& example : examples) {
    SCOPED_TRACE(example.command);
    ProcessResult const result = runExample(example.command);
    EXPECT_EQ(result.out, example.output);
    EXPECT_EQ(result.err, "");
  }
  EXPECT_GE(examples.size(), 10U);
}

TEST(SourcesDoc, ItsCommandsReadRealSwitches) {
  std::filesystem::path const data = TCAMSHOW_SHARED_DATA;
  if (!std::filesystem::exists(data)) GTEST_SKIP() << data << " is not there";
  std::vector<std::vector<std::string>> const commands = {
      {"list"},
      {"explain", "tcp src=10.1.2.3 dst=192.0.2.80 dport=443"},
      {"lint"},
      {"capacity"},
  };
  std::vector<std::string> const files = {
      (data / "sonic" / "dump_acl").string(), (data / "sonic" / "mock_tables").string(),
      (data / "ovs" / "dump_mixed.txt").string(), (data / "ovs" / "dump_acl1_1k.txt").string()};
  for (const std::vector<std::string>& command : commands) {
    for (const std::string& file : files) {
      std::vector<std::string> arguments = command;
      arguments.push_back(file);
      ProcessResult const result = runTcamshow(arguments);
      EXPECT_EQ(result.status, 0) << command[0] << ' ' << file << ": " << result.err;
      // There may be nothing to find.
      EXPECT_TRUE(command[0] == "lint" || !result.out.empty()) << command[0] << ' ' << file;
    }
  }
}

}  // namespace
