#include "PackedInputs.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>

namespace velmorfuzz {

namespace {

int hexDigit(char c) {
  if (c >= '0' && c <= '9') return c - '0';
  if (c >= 'a' && c <= 'f') return c - 'a' + 10;
  return -1;
}

}  // namespace

std::string escaped(std::string_view bytes) {
  static constexpr char digits[] = "0123456789abcdef";
  std::string line;
  for (char const byte : bytes) {
    switch (byte) {
      case '\\':
        line += "\\\\";
        break;
      case '\n':
        line += "\\n";
        break;
      case '\r':
        line += "\\r";
        break;
      case '\t':
        line += "\\t";
        break;
      default:
        if (byte >= ' ' && byte <= '~') {
          line += byte;
        } else {
          auto const number = static_cast<unsigned char>(byte);
          line += "\\x";
          line += digits[number >> 4];
          line += digits[number & 15];
        }
    }
  }
  return line;
}

std::string unescaped(std::string_view line) {
  std::string bytes;
  for (std::size_t i = 0; i < line.size(); ++i) {
    if (line[i] != '\\') {
      bytes += line[i];
      continue;
    }
    char const letter = ++i < line.size() ? line[i] : '\0';
    if (letter == '\\') {
      bytes += '\\';
    } else if (letter == 'n') {
      bytes += '\n';
    } else if (letter == 'r') {
      bytes += '\r';
    } else if (letter == 't') {
      bytes += '\t';
    } else if (letter == 'x' && i + 2 < line.size() && hexDigit(line[i + 1]) >= 0 &&
               hexDigit(line[i + 2]) >= 0) {
      bytes += static_cast<char>(hexDigit(line[i + 1]) * 16 + hexDigit(line[i + 2]));
      i += 2;
    } else {
      throw std::runtime_error("bad escape in the line " + std::string(line));
    }
  }
  return bytes;
}

std::string contentsOf(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  std::string contents((std::istreambuf_iterator<char>(file)), std::istreambuf_iterator<char>());
  if (!file) throw std::runtime_error("cannot read " + path);
  return contents;
}

std::vector<std::string> packedInputs(const std::string& path) {
  std::string const contents = contentsOf(path);
  std::vector<std::string> inputs;
  std::size_t begin = 0;
  while (begin < contents.size()) {
    std::size_t const end = std::min(contents.find('\n', begin), contents.size());
    inputs.push_back(unescaped(std::string_view(contents).substr(begin, end - begin)));
    begin = end + 1;
  }
  return inputs;
}

std::vector<std::string> inputsIn(const std::string& directory) {
  std::vector<std::string> inputs;
  if (!std::filesystem::is_directory(directory)) return inputs;
  std::vector<std::string> paths;
  for (auto const& file : std::filesystem::directory_iterator(directory)) {
    if (file.is_regular_file() && !file.path().filename().string().starts_with('.')) {
      paths.push_back(file.path().string());
    }
  }
  std::sort(paths.begin(), paths.end());
  for (std::string const& path : paths) inputs.push_back(contentsOf(path));
  return inputs;
}

}  // namespace velmorfuzz
