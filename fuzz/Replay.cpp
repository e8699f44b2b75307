// Runs inputs through a target without libFuzzer, and converts packed corpora.
//
//     fuzz_replay [-v] TARGET [PATH...]
//     fuzz_replay --list                     the targets
//     fuzz_replay --unpack FILE.txt DIRECTORY
//     fuzz_replay --pack DIRECTORY FILE.txt
//
// A PATH is a file, which is one input; a FILE.txt, which holds many inputs; or a directory of
// inputs. An input that fails stops the process. -v names each input before it runs. A PATH may be
// missing, but it is a failure if no input was found at all.
#include <algorithm>
#include <cstdio>
#include <cstring>
#include <exception>
#include <filesystem>
#include <fstream>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#include "PackedInputs.h"
#include "Target.h"

namespace {

using velmorfuzz::Target;

std::vector<std::string> inputsAt(const std::string& path) {
  // Not every target has seeds, a corpus and crashes.
  if (!std::filesystem::exists(path)) return {};
  if (path.ends_with(".txt")) return velmorfuzz::packedInputs(path);
  if (std::filesystem::is_regular_file(path)) return {velmorfuzz::contentsOf(path)};
  return velmorfuzz::inputsIn(path);
}

void run(const Target& target, const std::string& input) {
  // A copy of exactly this size, so that a sanitizer reports a read past its end.
  std::unique_ptr<std::uint8_t[]> const bytes(new std::uint8_t[input.size()]);
  std::copy(input.begin(), input.end(), bytes.get());
  velmorfuzz::Input in(bytes.get(), input.size());
  target.run(in);
}

int replay(const std::string& name, const std::vector<std::string>& paths, bool names) {
  const Target* target = Target::first;
  while (target != nullptr && name != target->name) target = target->next;
  if (target == nullptr) throw std::runtime_error("no target " + name);
  std::size_t count = 0;
  for (std::string const& path : paths) {
    std::vector<std::string> const inputs = inputsAt(path);
    for (std::size_t i = 0; i < inputs.size(); ++i) {
      if (names) std::fprintf(stderr, "%s: input %zu\n", path.c_str(), i + 1);
      run(*target, inputs[i]);
    }
    count += inputs.size();
  }
  std::fprintf(stderr, "%s: %zu inputs\n", name.c_str(), count);
  return count == 0 ? 1 : 0;
}

void unpack(const std::string& from, const std::string& to) {
  std::filesystem::create_directories(to);
  // The directory's name keeps files of the same name apart.
  std::string const name = std::filesystem::path(from).parent_path().filename().string();
  std::size_t number = 0;
  for (std::string const& input : velmorfuzz::packedInputs(from)) {
    std::ofstream(to + "/" + name + "-" + std::to_string(number++), std::ios::binary) << input;
  }
}

/// Writes each input once, short inputs first.
void pack(const std::string& from, const std::string& to) {
  std::vector<std::string> inputs = velmorfuzz::inputsIn(from);
  std::sort(inputs.begin(), inputs.end(), [](const std::string& a, const std::string& b) {
    return a.size() != b.size() ? a.size() < b.size() : a < b;
  });
  inputs.erase(std::unique(inputs.begin(), inputs.end()), inputs.end());
  std::ofstream file(to, std::ios::binary);
  for (std::string const& input : inputs) file << velmorfuzz::escaped(input) << '\n';
  if (!file.flush()) throw std::runtime_error("cannot write " + to);
}

}  // namespace

int main(int count, char** arguments) {
  std::vector<std::string> words(arguments + 1, arguments + count);
  try {
    if (words.size() == 1 && words[0] == "--list") {
      for (const Target* at = Target::first; at != nullptr; at = at->next) std::puts(at->name);
      return 0;
    }
    if (words.size() == 3 && words[0] == "--unpack") return unpack(words[1], words[2]), 0;
    if (words.size() == 3 && words[0] == "--pack") return pack(words[1], words[2]), 0;
    bool const names = !words.empty() && words[0] == "-v";
    if (names) words.erase(words.begin());
    if (!words.empty() && !words[0].starts_with('-')) {
      return replay(words[0], {words.begin() + 1, words.end()}, names);
    }
  } catch (const std::exception& error) {
    std::fprintf(stderr, "fuzz_replay: %s\n", error.what());
    return 2;
  }
  std::fprintf(stderr, "usage: fuzz_replay [-v] TARGET [PATH...] | --list | --unpack | --pack\n");
  return 2;
}
