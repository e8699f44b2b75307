// The program as a whole: its command line, its exit status, what it does with bad files.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <bit>
#include <filesystem>
#include <fstream>
#include <map>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include "Process.h"
#include "TemporaryFile.h"
#include "snapshot/SnapshotReader.h"

namespace {

using ::testing::HasSubstr;
using ::testing::StartsWith;

constexpr const char* filter = "@1.2.3.4/32 1.2.3.4/32 0 : 65535 0 : 65535 6/255\n";
constexpr const char* flow = " priority=1,ip,nw_src=1.2.3.4 actions=drop\n";

#if defined(__SANITIZE_ADDRESS__)
constexpr bool memoryCanBeLimited = false;
#elif defined(__has_feature)
#if __has_feature(address_sanitizer)
constexpr bool memoryCanBeLimited = false;
#else
constexpr bool memoryCanBeLimited = true;
#endif
#else
constexpr bool memoryCanBeLimited = true;
#endif

// Enough for the program, its libraries and the buffers, and far less than the inputs.
constexpr std::size_t addressSpaceKib = 32 * 1024;

TEST(Program, TellsHelpAndVersion) {
  ProcessResult result = runTcamshow({"--help"});
  EXPECT_EQ(result.status, 0);
  EXPECT_THAT(result.out, HasSubstr("import"));
  EXPECT_EQ(result.err, "");
  result = runTcamshow({"import", "--help"});
  EXPECT_EQ(result.status, 0);
  EXPECT_THAT(result.out, HasSubstr("classbench"));
  result = runTcamshow({"--version"});
  EXPECT_EQ(result.status, 0);
  EXPECT_THAT(result.out, ::testing::MatchesRegex("tcamshow [0-9]+\\.[0-9]+\\.[0-9]+\n"));
}

TEST(Program, EndsWithTwoWhenTheCommandLineIsWrong) {
  struct Row {
    std::vector<std::string> arguments;
    const char* error;
  };
  Row const rows[] = {
      {{}, "a command is required"},
      {{"foo"}, "no such command: foo"},
      {{"foo", "ip"}, "no such command: foo"},
      {{"--json", "foo", "ip"}, "no such command: foo"},
      {{"--foo"}, "no such option: --foo"},
      {{"ip4"}, R"(no such command: ip4; did you mean "ip" or "ip6"?)"},
      {{"ipv4", "acl.jsonl"}, R"(no such command: ipv4; did you mean "ip" or "ip6"?)"},
      {{"sumary"}, R"(no such command: sumary; did you mean "summary"?)"},
      {{"USAGE"}, R"(no such command: USAGE; did you mean "usage"?)"},
      {{"usage", "--detial"}, R"(no such option: --detial; did you mean "--detail"?)"},
      {{"--jsn", "ip"}, R"(no such option: --jsn; did you mean "--json"?)"},
      {{"import", "foo", "file"}, "no such format: foo"},
      {{"import", "openconfg", "file"}, R"(no such format: openconfg; did you mean "openconfig"?)"},
      {{"ip", "--from", "openconfg"},
       R"(--from: "openconfg" is not known; did you mean "openconfig"?)"},
      {{"ip", "--from", "foo"},
       R"(--from: "foo" is not known; expected snapshot|classbench|openconfig|ovs|sonic)"},
      {{"import", "classbench", "a", "b"}, "one argument too many: b"},
      {{"ip", "a", "b", "c"}, "one argument too many: b"},
      {{"ip", "a", "ip"}, "one argument too many: ip"},
      {{"import", "classbench", "--foo"}, "no such option: --foo"},
      {{"import", "--trase"}, R"(no such option: --trase; did you mean "--trace"?)"},
      {{"inspect", "--json"},
       "--json goes with list, ip, ip6, mac, tcam, usage, summary, explain, lint, cost, diff and "
       "capacity only"},
      {{"ip", ""}, "FILE: the name is empty; standard input is -"},
      {{"inspect", ""}, "FILE: the name is empty; standard input is -"},
      {{"import", "classbench", ""}, "FILE: the name is empty; standard input is -"},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(::testing::PrintToString(row.arguments));
    ProcessResult const result = runTcamshow(row.arguments);
    EXPECT_EQ(result.status, 2);
    EXPECT_EQ(result.out, "");
    EXPECT_EQ(result.err, "tcamshow: " + std::string(row.error) + "\nTry 'tcamshow --help'.\n");
  }
}

// A command's own options, and those of the whole program that it goes with.
TEST(Program, EveryCommandHelps) {
  struct Row {
    std::vector<std::string> command;
    bool hasJson;
    const char* own;
  };
  Row const rows[] = {
      {{"list"}, true, "--columns"},   {{"ip"}, true, "FILE"},
      {{"ip6"}, true, "FILE"},         {{"mac"}, true, "FILE"},
      {{"tcam"}, true, "FILE"},        {{"usage"}, true, "--detail"},
      {{"summary"}, true, "FILE"},     {{"inspect"}, false, "--types"},
      {{"explain"}, true, "PACKET"},   {{"lint"}, true, "--fail-on"},
      {{"cost"}, true, "--where"},     {{"diff"}, true, "--ignore-place"},
      {{"capacity"}, true, "--warn"},  {{"metrics"}, false, "--per-entry"},
      {{"import"}, false, "Formats:"},
  };
  std::string const all = runTcamshow({"--help"}).out;
  EXPECT_THAT(all, HasSubstr("\nCommands:\n"));
  EXPECT_THAT(all, HasSubstr("\nUsage: tcamshow [OPTIONS] COMMAND\n"));
  for (const Row& row : rows) {
    SCOPED_TRACE(::testing::PrintToString(row.command));
    std::vector<std::string> arguments = row.command;
    arguments.emplace_back("--help");
    ProcessResult const result = runTcamshow(arguments);
    EXPECT_EQ(result.status, 0);
    EXPECT_THAT(result.out, HasSubstr(row.own));
    EXPECT_THAT(result.out, HasSubstr("--trace"));
    EXPECT_EQ(result.out.find("--json") != std::string::npos, row.hasJson);
    EXPECT_EQ(result.out.find("ubcommand"), std::string::npos);
    EXPECT_EQ(result.out.find("SUBCOMMAND"), std::string::npos);
    EXPECT_THAT(result.out, HasSubstr("\nExample:\n  tcamshow " + row.command[0]));
    // Its example stands in the program's own help too.
    EXPECT_THAT(all, HasSubstr("\n  tcamshow " + row.command[0] + " "));
  }
  EXPECT_EQ(all.find("ubcommand"), std::string::npos);
}

TEST(Program, TheExamplesOfTheHelpWork) {
  std::filesystem::path const directory =
      std::filesystem::temp_directory_path() / ("tcamshow_examples_" + std::to_string(::getpid()));
  std::filesystem::create_directory(directory);
  std::filesystem::copy_file(TCAMSHOW_EXAMPLES "/acl.jsonl", directory / "acl.jsonl");
  for (const char* const name : {"yesterday.jsonl", "today.jsonl"}) {
    std::filesystem::copy_file(std::string(TCAMSHOW_EXAMPLES "/questions/") + name,
                               directory / name);
  }
  std::ofstream(directory / "acl.json") << R"({"acl":{"acl-sets":{"acl-set":{"a":{}}}}})";
  std::istringstream help(runTcamshow({"--help"}).out);
  std::size_t examples = 0;
  bool isExample = false;
  for (std::string line; std::getline(help, line);) {
    if (!line.starts_with(' ')) isExample = line == "Examples:";
    if (!isExample || line == "Examples:") continue;
    SCOPED_TRACE(line);
    ++examples;
    ProcessResult const result =
        runProcess({"/bin/sh", "-c",
                    "cd '" + directory.string() +
                        "' && tcamshow() { '" TCAMSHOW_PROGRAM "' \"$@\"; } && " + line});
    EXPECT_EQ(result.status, line.find(" diff ") == std::string::npos ? 0 : 3);
    EXPECT_EQ(result.err, "");
  }
  std::filesystem::remove_all(directory);
  EXPECT_EQ(examples, 15U);  // one for each command
}

// The used entries, those that can still be used, and the free ones make the group's size.
TEST(Program, TheExampleSnapshotAgreesWithItself) {
  tcamshow::Complaints complaints;
  auto const source =
      tcamshow::openSnapshot(tcamshow::InputFile(TCAMSHOW_EXAMPLES "/acl.jsonl"), complaints);
  std::map<tcamshow::Place, std::pair<tcamshow::Group, std::uint32_t>> groups;
  for (;;) {
    tcamshow::Source::Item const item = source->next();
    if (item == tcamshow::Source::Item::end) break;
    if (item == tcamshow::Source::Item::group) {
      groups[source->group().place].first = source->group();
    } else {
      ++groups[source->entry().place].second;
    }
  }
  EXPECT_EQ(groups.size(), 3U);
  for (auto const& [place, group] : groups) {
    auto const& [line, used] = group;
    EXPECT_EQ(line.availableEntries, line.freeEntries);
    std::uint32_t const rows = line.availableEntries.value_or(0) + used;
    EXPECT_TRUE(std::has_single_bit(rows)) << rows;
  }
  EXPECT_TRUE(complaints.texts().empty());
}

TEST(Program, ReadsStandardInputOrAFile) {
  TemporaryFile const file(filter);
  ProcessResult const fromFile = runTcamshow({"import", "classbench", file.path()});
  EXPECT_EQ(fromFile.status, 0);
  EXPECT_THAT(fromFile.out, HasSubstr("\"shadowId\":1"));
  for (const std::vector<std::string>& arguments :
       {std::vector<std::string>{"import", "classbench"},
        std::vector<std::string>{"import", "classbench", "-"}}) {
    ProcessResult const result = runTcamshow(arguments, {.input = filter});
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.out, fromFile.out);
  }
}

TEST(Program, TellsWhichFileCannotBeRead) {
  for (const char* const format : {"classbench", "openconfig", "ovs"}) {
    SCOPED_TRACE(format);
    ProcessResult result = runTcamshow({"import", format, "/nonexistent"});
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.err, "tcamshow: /nonexistent: cannot open: No such file or directory\n");
    result = runTcamshow({"import", format, "/"});
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.err, "tcamshow: /: this is a directory, not a file\n");
    // Root reads every file.
    ProcessOptions const nobody{.asNobody = ::geteuid() == 0};
    if (runTcamshow({"--version"}, nobody).status != 0) {
      GTEST_SKIP() << "only root reaches the program, and root reads every file";
    }
    TemporaryFile const secret(filter);
    ASSERT_EQ(::chmod(secret.path().c_str(), 0), 0);
    result = runTcamshow({"import", format, secret.path()}, nobody);
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.err, "tcamshow: " + secret.path() + ": cannot open: Permission denied\n");
  }
}

TEST(Program, PrintsNothingOfAFileThatCannotBeRead) {
  for (const char* const command : {"ip", "ip6", "mac", "tcam", "usage", "summary", "inspect",
                                    "lint", "cost", "capacity", "metrics"}) {
    SCOPED_TRACE(command);
    for (const char* const file : {"/nonexistent", "/"}) {
      ProcessResult const result = runTcamshow({command, file});
      EXPECT_EQ(result.status, 1);
      EXPECT_EQ(result.out, "");
    }
    for (const char* const text : {"", "{}", "x", "{\"type\":\"snapshot\",\"version\":3}"}) {
      ProcessResult const result = runTcamshow({command}, {.input = text});
      EXPECT_EQ(result.status, 1);
      EXPECT_EQ(result.out, "");
    }
  }
}

TEST(Program, RecognisesTheFormatByWhatTheFileHolds) {
  std::string const document =
      "\n{ \"acl\": {\n \"acl-sets\": {\"acl-set\":{\"A\":{\"acl-entries\":{\"acl-entry\":{\"1\":"
      "{\"config\":{\"sequence-id\":1},\"actions\":{\"config\":{\"forwarding-action\":\"ACCEPT\"}}}"
      "}}}}} } }";
  std::string const snapshot =
      "{\"type\":\"snapshot\",\"version\":1}\n"
      "{\"type\":\"entry\",\"table\":\"tcam\",\"shadowId\":1}\n";
  struct Row {
    const char* format;
    std::string input;
  };
  Row const rows[] = {
      {"snapshot", snapshot},
      {"snapshot", "\n\n" + snapshot},
      // Until its line is whole, the header looks like an ACL document.
      {"snapshot",
       "{\"source\":\"acl-sets\",\"type\":\"snapshot\",\"version\":2}\n"
       "{\"type\":\"entry\",\"table\":\"tcam\",\"shadowId\":1}\n"
       "{\"type\":\"end\",\"groups\":0,\"entries\":1}\n"},
      {"classbench", std::string("# a comment\n\n") + filter},
      {"classbench", "\xEF\xBB\xBF" + std::string(filter)},
      {"openconfig", document},
      {"ovs", flow},
      {"ovs", std::string("\r\nNXST_FLOW reply (xid=0x4):\r\n") + flow},
      {"ovs", "\xEF\xBB\xBFOFPST_FLOW reply (OF1.3) (xid=0x2): flags=[more]\n" + std::string(flow)},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(row.input);
    ProcessResult const result = runTcamshow({"tcam"}, {.input = row.input});
    EXPECT_EQ(result.err, "");
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.out.substr(0, 14), "    0x00000001");
    // Byte by byte, it is recognised all the same.
    ProcessOptions slow;
    slow.feed = [&row](int descriptor) {
      for (char const c : row.input) {
        if (::write(descriptor, &c, 1) != 1) return;
      }
    };
    EXPECT_EQ(runTcamshow({"tcam"}, slow).out, result.out);
    EXPECT_EQ(runTcamshow({"tcam", "--from", row.format}, {.input = row.input}).out, result.out);
    // An import says the same as it, and so does that of the import.
    std::string const imported = runTcamshow({"import"}, {.input = row.input}).out;
    EXPECT_EQ(runTcamshow({"import", row.format}, {.input = row.input}).out, imported);
    EXPECT_EQ(runTcamshow({"tcam"}, {.input = imported}).out, result.out);
    EXPECT_EQ(runTcamshow({"import", "snapshot"}, {.input = imported}).out, imported);
  }
}

TEST(Program, TellsWhatAFileIsWhereItIsNoneOfTheFormat) {
  std::string const snapshot = "{\"type\":\"snapshot\",\"version\":1}\n";
  std::string const document = "\n{ \"acl\": {\n \"acl-sets\": {} } }";
  struct Row {
    std::vector<std::string> command;
    std::string input;
    const char* error;
  };
  Row const rows[] = {
      {{"ip"},
       "hello\n",
       "the format is not known: not snapshot, for its first line is no JSON object; not "
       "classbench, for its first line does not begin with @; not openconfig, for it does not "
       "begin with {; not ovs, for its first line has no actions=; not sonic, for it is no "
       "directory; --from FORMAT says it outright"},
      {{"import"},
       "{}\n",
       "the format is not known: not snapshot, for its first line is not "
       "{\"type\":\"snapshot\",\"version\":2}; not classbench, for its first line does not begin "
       "with @; not openconfig, for no \"acl-sets\" is near its beginning; not ovs, for its first "
       "line has no actions=; not sonic, for it is no directory; --from FORMAT says it outright"},
      {{"ip"},
       "\xEF\xBB\xBF\n",
       "the snapshot is empty: the first line must be {\"type\":\"snapshot\",\"version\":2}"},
      {{"inspect"},
       "{\"type\":\"table\",\"schema\":1,\"table\":\"ip\"}\n",
       "this is what --json prints, not a snapshot; with the line "
       "{\"type\":\"snapshot\",\"version\":1} "
       "in place of the first it is one"},
      {{"ip"}, "BZh91AY", "the file is compressed in a way that is not read; gzip is"},
      {{"ip"}, "PK\x03\x04", "the file is compressed in a way that is not read; gzip is"},
      {{"import", "classbench"},
       snapshot,
       "this is a snapshot, not a filter set; without a format it is recognised"},
      {{"ip", "--from", "openconfig"},
       snapshot,
       "this is a snapshot, not an OpenConfig ACL document; without a format it is recognised"},
      {{"import", "openconfig"},
       filter,
       "this is a filter set, not an OpenConfig ACL document; without a format it is recognised"},
      {{"usage", "--from", "snapshot"},
       document,
       "this is an OpenConfig ACL document, not a snapshot; without a format it is recognised"},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(row.input);
    ProcessResult const result = runTcamshow(row.command, {.input = row.input});
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.out, "");
    std::string const place =
        std::string("tcamshow: <stdin>:") +
        (std::string(row.error).starts_with("the snapshot is") ? "2: " : "1: ");
    EXPECT_EQ(result.err, place + row.error + "\n");
  }
}

TEST(Program, SkipsAByteOrderMarkInEveryFormat) {
  std::string const mark = "\xEF\xBB\xBF";
  struct Row {
    std::vector<std::string> command;
    std::string input;
  };
  Row const rows[] = {
      {{"ip"}, "{\"type\":\"snapshot\",\"version\":1}\n"},
      {{"import", "classbench"}, filter},
      {{"import", "openconfig"}, "{\"acl\":{\"acl-sets\":{\"acl-set\":{}}}}"},
      {{"import", "ovs"}, flow},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(row.input);
    ProcessResult const plain = runTcamshow(row.command, {.input = row.input});
    ProcessResult const marked = runTcamshow(row.command, {.input = mark + row.input});
    EXPECT_EQ(marked.status, 0);
    EXPECT_EQ(marked.out, plain.out);
    EXPECT_EQ(marked.err, "");
    // A pipe may give it byte by byte.
    ProcessResult const slow = runTcamshow(row.command, {.feed = [&](int descriptor) {
                                             for (char const c : mark + row.input) {
                                               if (::write(descriptor, &c, 1) != 1) return;
                                               ::usleep(200);
                                             }
                                           }});
    EXPECT_EQ(slow.status, 0);
    EXPECT_EQ(slow.out, plain.out);
    EXPECT_EQ(runTcamshow(row.command, {.input = mark + mark + row.input}).status, 1);
    // A part of the mark is no mark.
    EXPECT_EQ(runTcamshow(row.command, {.input = "\xEF\xBB" + row.input}).status, 1);
  }
}

TEST(Program, RefusesANulByteInEveryFormat) {
  struct Row {
    std::vector<std::string> command;
    std::string input;
  };
  std::string const snapshot = "{\"type\":\"snapshot\",\"version\":1}\n";
  std::string const entry = "{\"type\":\"entry\",\"table\":\"ip\",\"shadowId\":1";
  std::string const document = "{\"acl\":{\"acl-sets\":{\"acl-set\":{}}}}";
  std::string const nul(1, '\0');
  Row const rows[] = {
      {{"ip"}, snapshot + nul},
      {{"ip"}, snapshot + nul + "\n"},
      {{"ip"}, snapshot + "  " + nul + "\n" + entry + "}\n"},
      {{"ip"}, snapshot + entry + "}" + nul + "\n"},
      {{"ip"}, snapshot + entry + ",\"action\":\"a" + nul + "\"}\n"},
      {{"ip"}, snapshot + entry + nul + "}\n"},
      {{"usage"}, nul + snapshot},
      {{"import", "classbench"}, filter + nul},
      {{"import", "classbench"}, "# " + nul + "\n" + filter},
      {{"import", "classbench"}, std::string(filter) + "  " + nul + "\n"},
      {{"import", "openconfig"}, document + nul},
      {{"import", "openconfig"}, document + nul + document},
      {{"import", "openconfig"}, document + "\n\n" + nul},
      {{"import", "openconfig"}, nul + document},
      {{"import", "openconfig"}, "{" + nul + document.substr(1)},
      {{"import", "ovs"}, nul + flow},
      {{"import", "ovs"}, flow + nul},
      {{"import", "ovs"}, "NXST_FLOW reply" + nul + "\n" + flow},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(::testing::PrintToString(row.input));
    ProcessResult const result = runTcamshow(row.command, {.input = row.input});
    EXPECT_EQ(result.status, 1);
    EXPECT_THAT(result.err, StartsWith("tcamshow: <stdin>:"));
  }
}

TEST(Program, EndsWithOneWhenTheDiskIsFull) {
  ProcessOptions options;
  options.input = filter;
  options.outPath = "/dev/full";
  for (const std::vector<std::string>& arguments :
       {std::vector<std::string>{"import", "classbench"}, std::vector<std::string>{"--version"}}) {
    ProcessResult const result = runTcamshow(arguments, options);
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.err, "tcamshow: cannot write the output: No space left on device\n");
  }
  // A full disk does not hide that the input is bad too.
  options.input = "x";
  ProcessResult const result = runTcamshow({"import", "classbench"}, options);
  EXPECT_EQ(result.status, 1);
  EXPECT_EQ(result.err,
            "tcamshow: cannot write the output: No space left on device\n"
            "tcamshow: <stdin>:1: a filter begins with '@', not \"x\"\n");
}

TEST(Program, EndsQuietlyWhenThePipeIsClosed) {
  ProcessOptions options;
  for (int i = 0; i < 20000; ++i) options.input += filter;
  options.outLimit = 1;
  ProcessResult const result = runTcamshow({"import", "classbench"}, options);
  EXPECT_EQ(result.status, 0);
  EXPECT_EQ(result.err, "");
}

TEST(Program, DoesNotKeepAnEndlessLine) {
  for (const char* const format : {"classbench", "openconfig", "ovs"}) {
    SCOPED_TRACE(format);
    ProcessOptions options;
    options.feed = [](int descriptor) {
      std::string const piece(1 << 20, 'x');
      for (int i = 0; i < 100; ++i) {
        if (::write(descriptor, piece.data(), piece.size()) < 0) return;
      }
    };
    if (memoryCanBeLimited) options.addressSpaceKib = addressSpaceKib;
    ProcessResult const result = runTcamshow({"import", format}, options);
    EXPECT_EQ(result.status, 1);
    EXPECT_THAT(result.err, StartsWith("tcamshow: <stdin>:1: "));
    EXPECT_THAT(result.err, HasSubstr(std::string_view(format) == "openconfig"
                                          ? "the document is not a JSON object"
                                          : "the line is longer than 1 MiB"));
  }
}

TEST(Program, MemoryDoesNotGrowWithTheInput) {
  if (!memoryCanBeLimited) GTEST_SKIP() << "a sanitizer takes memory of its own";
  ProcessOptions options;
  options.outPath = "/dev/null";
  options.feed = [](int descriptor) {
    std::string piece;
    for (int i = 0; i < 1000; ++i) piece += filter;
    for (int i = 0; i < 600; ++i) {
      if (::write(descriptor, piece.data(), piece.size()) < 0) return;
    }
  };
  options.addressSpaceKib = addressSpaceKib;
  ProcessResult const result = runTcamshow({"import", "classbench"}, options);
  EXPECT_EQ(result.err, "");
  EXPECT_EQ(result.status, 0);
}

}  // namespace
