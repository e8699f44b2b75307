// Opens the library, uses it, closes it, and checks that nothing of it is left. This program is
// linked to neither library. The modules that it opens call them.
#include <dlfcn.h>
#include <elf.h>
#include <gtest/gtest.h>
#include <link.h>
#include <malloc.h>
#include <sys/mman.h>
#include <unistd.h>

#include <array>
#include <cstring>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include "LoadPlugin.h"

#if defined(__has_feature)
#if __has_feature(address_sanitizer)
#define VELMOR_ADDRESS_SANITIZER 1
#endif
#elif defined(__SANITIZE_ADDRESS__)
#define VELMOR_ADDRESS_SANITIZER 1
#endif
#ifdef VELMOR_ADDRESS_SANITIZER
// The headers of g++ do not declare it.
extern "C" std::size_t __sanitizer_get_current_allocated_bytes();
#endif

namespace {

/// A library or module that is open while the object lives.
class Opened {
 public:
  explicit Opened(const char* path) : handle_(::dlopen(path, RTLD_NOW | RTLD_LOCAL)) {
    EXPECT_NE(handle_, nullptr) << ::dlerror();
  }
  Opened(const Opened&) = delete;
  Opened& operator=(const Opened&) = delete;
  ~Opened() { EXPECT_EQ(::dlclose(handle_), 0) << ::dlerror(); }

  template <class Function>
  Function* function(const char* name) const {
    void* const address = ::dlsym(handle_, name);
    EXPECT_NE(address, nullptr) << ::dlerror();
    return reinterpret_cast<Function*>(address);
  }
  /// The difference between an address in memory and in the file.
  std::uintptr_t base() const {
    struct link_map* map = nullptr;
    EXPECT_EQ(::dlinfo(handle_, RTLD_DI_LINKMAP, &map), 0);
    return map->l_addr;
  }

 private:
  void* handle_;
};

bool isLoaded(const char* path) {
  void* const handle = ::dlopen(path, RTLD_NOW | RTLD_NOLOAD);
  if (handle != nullptr) ::dlclose(handle);
  return handle != nullptr;
}

std::size_t heapBytes() {
#ifdef VELMOR_ADDRESS_SANITIZER
  return __sanitizer_get_current_allocated_bytes();
#else
  struct mallinfo2 const info = ::mallinfo2();
  return info.uordblks + info.hblkhd;
#endif
}

constexpr const char* printed =
    "Id        | Seq   | Proto | Src IP        | Src Mask      | Src Port  | VlanId | VlanMask "
    "|Hits\n"
    "TOS/Mask  | Frag  | Flags | Dest IP       | Dest Mask     | Dest Port | IP Length |Action\n"
    "1         |10     | TCP   |       10.0.1.0|  255.255.255.0|          *|          *|          "
    "*|       1000\n"
    "          |   *   |       |              *|              *|  8000-8099|          *|permit\n"
    "2         |20     | TCP   |       10.0.2.0|  255.255.255.0|          *|          *|          "
    "*|       2000\n"
    "          |   *   |       |              *|              *|  8000-8099|          *|permit\n"
    "3         |30     | TCP   |       10.0.3.0|  255.255.255.0|          *|          *|          "
    "*|       3000\n"
    "          |   *   |       |              *|              *|  8000-8099|          *|permit\n"
    "Stage ingress in PIPE 0\n"
    "TCAM group 1 uses 3 entries and can use up to 100 more.\n"
    "  an access list with a long name uses 3 entries.\n"
    "TCAM group 2 uses 3 entries and can use up to 100 more.\n"
    "  an access list with a long name uses 3 entries.\n";

/// A file in memory.
class MemoryFile {
 public:
  MemoryFile() : fd_(::memfd_create("printed", 0)) { EXPECT_GE(fd_, 0); }
  MemoryFile(const MemoryFile&) = delete;
  MemoryFile& operator=(const MemoryFile&) = delete;
  ~MemoryFile() { ::close(fd_); }

  int fd() const { return fd_; }
  void empty() const {
    EXPECT_EQ(::ftruncate(fd_, 0), 0);
    EXPECT_EQ(::lseek(fd_, 0, SEEK_SET), 0);
  }
  std::string text() const {
    std::array<char, 4096> buffer{};
    ssize_t const size = ::pread(fd_, buffer.data(), buffer.size(), 0);
    EXPECT_GE(size, 0);
    return {buffer.data(), static_cast<std::size_t>(size)};
  }

 private:
  int fd_;
};

constexpr int cycles = 100;
// The heap is compared from this cycle on: the loader and the C library keep some memory of the
// first cycles.
constexpr int settled = 10;
// The growth that is allowed in all cycles together. A leak of one object in each cycle, however
// small, exceeds it. AddressSanitizer keeps about a hundred bytes for each library in each cycle.
// With it this limit finds only a leaked slab or table; its own search for leaks finds the rest.
#ifdef VELMOR_ADDRESS_SANITIZER
constexpr std::size_t slack = std::size_t{1024} * (cycles - settled);
#else
constexpr std::size_t slack = std::size_t{16} * (cycles - settled) - 1;
#endif

TEST(LoadCycle, TheLibraryIsGoneEachTimeAndLeavesNoMemoryBehind) {
  MemoryFile const file;
  std::size_t before = 0;
  for (int cycle = 1; cycle <= cycles; ++cycle) {
    file.empty();
    {
      Opened const library(VELMOR_LIBRARY);
      Opened const plugin(VELMOR_LOAD_PLUGIN);
      plugin.function<decltype(loadPluginPrint)>("loadPluginPrint")(file.fd());
    }
    ASSERT_FALSE(isLoaded(VELMOR_LOAD_PLUGIN)) << "cycle " << cycle;
    ASSERT_FALSE(isLoaded(VELMOR_LIBRARY)) << "cycle " << cycle;
    ASSERT_FALSE(isLoaded(VELMOR_PLATFORM)) << "cycle " << cycle;
    ASSERT_EQ(file.text(), printed) << "cycle " << cycle;
    if (cycle == settled) before = heapBytes();
  }
  EXPECT_LE(heapBytes(), before + slack);
}

TEST(LoadCycle, APlatformThatStaysKeepsNothingOfALibraryThatGoes) {
  Opened const platform(VELMOR_PLATFORM);
  Opened const probe(VELMOR_PLATFORM_PROBE);
  auto* const look = probe.function<decltype(platformProbe)>("platformProbe");
  MemoryFile const file;
  std::string first;
  std::size_t before = 0;
  for (int cycle = 1; cycle <= cycles; ++cycle) {
    file.empty();
    {
      Opened const library(VELMOR_LIBRARY);
      Opened const plugin(VELMOR_LOAD_PLUGIN);
      plugin.function<decltype(loadPluginPrint)>("loadPluginPrint")(file.fd());
      std::string during;
      look(&during);
      for (const char* known :
           {"module VelmorTcamCliTypes\n", "log handle VELMOR_CONFIG_CHANGE\n",
            "log handle VELMOR_UNEXPECTED_RESTART\n", "trace handle VelmorTcamCliTypes\n",
            "tracker VelmorTcam::CliShowTcamUsageChipInfo with 0\n"}) {
        ASSERT_NE(during.find(known), std::string::npos) << known << "not in\n" << during;
      }
    }
    ASSERT_FALSE(isLoaded(VELMOR_LIBRARY)) << "cycle " << cycle;
    ASSERT_TRUE(isLoaded(VELMOR_PLATFORM)) << "cycle " << cycle;
    ASSERT_EQ(file.text(), printed) << "cycle " << cycle;
    std::string after;
    look(&after);
    if (cycle == 1) {
      first = after;
      EXPECT_NE(first.find("module VelmorTcamEntryShadow\n"), std::string::npos) << first;
      EXPECT_NE(first.find("\n0 bytes live\n"), std::string::npos) << first;
      for (const char* gone : {"CliTypes", "log handle", "trace handle", "CliShow", "CliFormat"}) {
        EXPECT_EQ(first.find(gone), std::string::npos) << gone << " is in\n" << first;
      }
    }
    ASSERT_EQ(after, first) << "cycle " << cycle;
    if (cycle == settled) before = heapBytes();
  }
  EXPECT_LE(heapBytes(), before + slack);
}

struct Message {
  std::string key, format, explanation, codeString;
  std::uint64_t severity;
  bool operator==(const Message&) const = default;
};
void PrintTo(const Message& message, std::ostream* out) {
  *out << message.key << " / " << message.format << " / " << message.explanation << " / "
       << testing::PrintToString(message.codeString) << " / " << message.severity;
}

/// The header of a section of the file: its address when loaded, and its size.
Elf64_Shdr sectionOf(const char* path, std::string_view name) {
  std::ifstream stream(path, std::ios::binary);
  std::string const file{std::istreambuf_iterator<char>(stream), {}};
  Elf64_Ehdr header;
  std::memcpy(&header, file.data(), sizeof header);
  std::vector<Elf64_Shdr> sections(header.e_shnum);
  std::memcpy(sections.data(), file.data() + header.e_shoff, sections.size() * sizeof sections[0]);
  const char* const names = file.data() + sections[header.e_shstrndx].sh_offset;
  for (const Elf64_Shdr& section : sections) {
    if (names + section.sh_name == name) return section;
  }
  ADD_FAILURE() << "no section " << name << " in " << path;
  return {};
}

TEST(LoadCycle, TheLogSectionOfTheLoadedLibraryHoldsTheMessages) {
  Elf64_Shdr const section = sectionOf(VELMOR_LIBRARY, ".corvex_logmsg");
  ASSERT_EQ(section.sh_size, 80U);
  Opened const library(VELMOR_LIBRARY);
  std::vector<Message> messages;
  for (std::uintptr_t at = section.sh_addr; at < section.sh_addr + section.sh_size; at += 40) {
    struct {
      const char* texts[4];
      std::uint64_t severity;
    } descriptor;
    // NOLINTNEXTLINE(performance-no-int-to-ptr)
    std::memcpy(&descriptor, reinterpret_cast<const void*>(library.base() + at), sizeof descriptor);
    messages.push_back({descriptor.texts[0], descriptor.texts[1], descriptor.texts[2],
                        descriptor.texts[3], descriptor.severity});
  }
  EXPECT_EQ(
      messages,
      (std::vector<Message>{
          {"VELMOR_UNEXPECTED_RESTART", "Unexpected restart of Velmor agent %s occurred",
           "Unexpected restart of the Velmor agent occurred.", "\x02", 3},
          {"VELMOR_CONFIG_CHANGE", "Configuration change requires the Velmor agent %s to restart",
           "Configuration change requires the switch ASIC to be reconfigured, requiring the "
           "Velmor agent to restart.",
           "\x01", 6}}));
}

}  // namespace
