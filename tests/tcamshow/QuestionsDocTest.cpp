// The worked examples of docs/questions.md do what the document says.
#include <gtest/gtest.h>

#include <vector>

#include "DocExamples.h"
#include "Process.h"

namespace {

TEST(QuestionsDoc, ShowsWhatTheCommandsPrint) {
  std::vector<DocExample> const examples = docExamples(TCAMSHOW_DOCS "/questions.md");
  EXPECT_GE(examples.size(), 10U);
  for (const DocExample& example : examples) {
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
