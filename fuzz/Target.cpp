#include "Target.h"

#include <cstdio>
#include <cstdlib>

#include "PackedInputs.h"

namespace velmorfuzz {

Target* Target::first = nullptr;

Target::Target(const char* targetName, Run targetRun)
    : name(targetName), run(targetRun), next(first) {
  first = this;
}

void checkFailed(const char* file, int line, const std::string& what) {
  std::fprintf(stderr, "%s:%d: check failed: %s\n", file, line, what.c_str());
  std::abort();
}

void checkTextsAre(const char* file, int line, std::string_view text, std::string_view expected) {
  if (text == expected) return;
  checkFailed(file, line, "text \"" + escaped(text) + "\" is not \"" + escaped(expected) + '"');
}

}  // namespace velmorfuzz
