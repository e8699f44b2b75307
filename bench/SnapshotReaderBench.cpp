// Reading the entries of a snapshot: the streaming reader against one document tree for each line.
#include <benchmark/benchmark.h>
#include <sys/mman.h>
#include <unistd.h>

#include <nlohmann/json.hpp>
#include <string>
#include <string_view>

#include "io/JsonText.h"
#include "io/LineReader.h"
#include "snapshot/SnapshotReader.h"
#include "snapshot/SnapshotWriter.h"

namespace tcamshow {
namespace {

constexpr std::uint32_t entryCount = 100000;

/// A snapshot in memory that has a path.
class MemoryFile {
 public:
  MemoryFile() : descriptor_(memfd_create("snapshot", 0)) {
    std::string text;
    appendLine(text, Header());
    Entry entry;
    for (std::uint32_t i = 1; i <= entryCount; ++i) {
      entry.clear();
      entry.shadowId = i;
      entry.sequence = 10 * i;
      entry.priority = ~i;
      entry.action = "permit";
      entry.feature = "acl";
      entry.hits = std::uint64_t{i} * 977;
      entry.counterStatus = statusProgrammed;
      entry.qualifiers.push_back(wordQualifier(VelmorTcam::qualifierSrcIp, 0x0A000000u + i,
                                               ipMask(32), QualifierKind::ip));
      entry.qualifiers.push_back(wordQualifier(VelmorTcam::qualifierDstIp, 0xC0A80000u + i % 65536,
                                               ipMask(24), QualifierKind::ip));
      entry.qualifiers.push_back(wordQualifier(VelmorTcam::qualifierIpProtocol, 6, 255));
      entry.qualifiers.push_back(wordQualifier(VelmorTcam::qualifierL4DstPort, i % 65536, 65535));
      entry.qualifiers.push_back(wordQualifier(VelmorTcam::qualifierTcpControl, 16, 16));
      appendLine(text, entry);
    }
    size_ = text.size();
    for (std::string_view rest = text; !rest.empty();) {
      ssize_t const count = ::write(descriptor_, rest.data(), rest.size());
      if (count <= 0) break;
      rest.remove_prefix(static_cast<std::size_t>(count));
    }
  }
  ~MemoryFile() { ::close(descriptor_); }
  std::string path() const { return "/proc/self/fd/" + std::to_string(descriptor_); }
  std::size_t size() const { return size_; }

 private:
  int descriptor_;
  std::size_t size_ = 0;
};

const MemoryFile& memoryFile() {
  static const MemoryFile file;
  return file;
}

void count(benchmark::State& state) {
  state.SetItemsProcessed(state.iterations() * entryCount);
  state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(memoryFile().size()));
}

void BM_OursReadSnapshot(benchmark::State& state) {
  std::string const path = memoryFile().path();
  for (auto _ : state) {
    Complaints complaints;
    auto const reader = openSnapshot(InputFile(path), complaints);
    std::size_t qualifiers = 0;
    while (reader->next() != Source::Item::end) {
      qualifiers += reader->entry().qualifiers.size();
    }
    if (qualifiers != std::size_t{entryCount} * 5) state.SkipWithError("entries are missing");
  }
  count(state);
}
BENCHMARK(BM_OursReadSnapshot)->Name("read_snapshot/ours")->Unit(benchmark::kMillisecond);

void BM_AltReadSnapshot(benchmark::State& state) {
  std::string const path = memoryFile().path();
  for (auto _ : state) {
    LineReader lines{InputFile(path)};
    std::size_t qualifiers = 0;
    for (std::string_view line; lines.next(line);) {
      auto const document = nlohmann::json::parse(line);
      if (document.at("type") == "entry") qualifiers += document.at("qualifiers").size();
    }
    if (qualifiers != std::size_t{entryCount} * 5) state.SkipWithError("entries are missing");
  }
  count(state);
}
BENCHMARK(BM_AltReadSnapshot)->Name("read_snapshot/nlohmann")->Unit(benchmark::kMillisecond);

/// The lower bound for a reader: the lines alone.
void BM_AltLinesAlone(benchmark::State& state) {
  std::string const path = memoryFile().path();
  for (auto _ : state) {
    LineReader lines{InputFile(path)};
    for (std::string_view line; lines.next(line);) benchmark::DoNotOptimize(line);
  }
  count(state);
}
BENCHMARK(BM_AltLinesAlone)->Name("read_snapshot/lines_alone")->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace tcamshow
