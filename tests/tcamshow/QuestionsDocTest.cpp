// The worked examples of docs/questions.md do what the document says.
#include <gtest/gtest.h>

#include <cstddef>
#include <fstream>
#include <string>
#include <vector>

#include "Process.h"

namespace {

struct Example {
  std::string command;  // may go on for several lines
  std::string output;
};

/// The commands of the blocks that begin with "$ ", each with what stands below it.
std::vector<Example> examplesOf(const std::string& path) {
  std::vector<Example> examples;
  std::ifstream file(path);
  bool isBlock = false;
  bool isCommand = false;
  bool isShell = false;
  for (std::string line; std::getline(file, line);) {
    if (line.starts_with("```")) {
      isBlock = !isBlock;
      isShell = isCommand = false;
      continue;
    }
    if (!isBlock) continue;
    if (line.starts_with("$ ")) {
      examples.push_back({line.substr(2), {}});
      isShell = true;
    } else if (isCommand) {
      examples.back().command += "\n" + line;
    } else if (isShell) {
      examples.back().output += line + "\n";
      continue;
    }
    isCommand = isShell && line.ends_with('\\');
  }
  return examples;
}

TEST(QuestionsDoc, ShowsWhatTheCommandsPrint) {
  std::vector<Example> const examples = examplesOf(TCAMSHOW_DOCS "/questions.md");
  EXPECT_GE(examples.size(), 10U);
  for (const Example& example : examples) {
    SCOPED_TRACE(example.command);
    ProcessResult const result = runProcess(
        {"/bin/sh", "-c",
         "cd '" TCAMSHOW_EXAMPLES "/questions' && tcamshow() { '" TCAMSHOW_PROGRAM "' \"$@\"; }\n" +
             example.command});
    EXPECT_EQ(result.out, example.output);
    EXPECT_EQ(result.err, "");
  }
}

}  // namespace
