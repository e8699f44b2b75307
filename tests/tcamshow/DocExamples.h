// The worked examples of a document: the commands in its blocks that begin with "$ ", each with
// what stands below it.
#pragma once

#include <fstream>
#include <string>
#include <vector>

struct DocExample {
  std::string command;  ///< may go on for several lines
  std::string output;
};

inline std::vector<DocExample> docExamples(const std::string& path) {
  std::vector<DocExample> examples;
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
