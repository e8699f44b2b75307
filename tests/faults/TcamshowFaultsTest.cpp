// tcamshow's commands, each with every allocation failing in turn.
#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <vector>

#include "../tcamshow/TemporaryFile.h"
#include "EveryFault.h"
#include "Sink.h"
#include "io/InputError.h"
#include "io/LineReader.h"
#include "io/OutputBuffer.h"
#include "sources/ImportClassbench.h"
#include "sources/ImportOpenconfig.h"
#include "views/Inspect.h"
#include "views/ShowTable.h"
#include "views/ShowUsage.h"

namespace tcamshow {
namespace {

constexpr const char* snapshot =
    R"({"type":"snapshot","version":1,"numPipes":2}
{"type":"group","groupId":3,"name":"a group whose name is longer than what is kept in place, acl-in","availableEntries":9}
{"type":"group","groupId":4,"pipe":1,"name":"short","freeEntries":7}
{"type":"entry","table":"ip","shadowId":1,"groupId":3,"feature":"a feature whose name is longer than what a string keeps in place","description":"permit tcp any host 192.0.2.80 eq 443, which is a long description indeed","action":"permit and count and log and mirror and police and then some more of it","qualifiers":{"qualifierSrcIp":{"value":"10.0.0.1","mask":"255.0.0.0"},"qualifierIpProtocol":{"value":6,"mask":255}},"rangeCheckers":{"rangeCheckerIpLength":{"low":0,"high":67}}}
{"type":"entry","table":"ip6","shadowId":2,"groupId":3,"feature":"a feature whose name is longer than what a string keeps in place","description":"tab: escaped \u00e9","qualifiers":{"qualifierSrcIp6":{"value":"2001:db8::1","mask":"ffff:ffff::"},"qualifierIp6HopLimit":{"value":64,"mask":255}}}
{"type":"entry","table":"mac","shadowId":3,"groupId":4,"pipe":1,"feature":"l2","hits":340,"counterStatus":7,"qualifiers":{"qualifierSrcMac":{"value":"00:00:5e:00:53:00","mask":"ff:ff:ff:ff:ff:00"},"qualifierEtherType":{"value":2054,"mask":65535}}}
{"type":"entry","table":"tcam","shadowId":4,"sequence":4294967295,"stage":"egress","feature":"copp"}
)";

constexpr const char* filters =
    "@10.0.0.1/32 192.0.2.0/24 0 : 65535 33434 : 33523 0x11/0xFF\n"
    "@0.0.0.0/0 192.0.2.0/24 1024 : 2047 80 : 80 0x06/0xFF 0x1000/0x1200\n"
    "@2001:db8::1/128 ::/0 0 : 65535 0 : 65535 0x3a/0xFF\n";

constexpr const char* acl = R"({"acl":{"acl-sets":{"acl-set":{"a list with quite a long name":{
"acl-entries":{"acl-entry":{
"1":{"config":{"sequence-id":1},"actions":{"config":{"forwarding-action":"ACCEPT"}},
 "ip":{"config":{"protocol":"IP_TCP","source-ip-address":"20.0.0.0/8"}},
 "transport":{"config":{"destination-port":"100..200"}}},
"2":{"config":{"sequence-id":2},"actions":{"config":{"forwarding-action":"DROP"}},
 "ip":{"config":{"source-ip-address":"2001:db8::/32"}}}}}}}}}})";

struct Path {
  const char* name;
  const char* input;
  std::function<void(InputFile&, OutputBuffer&)> run;
  bool mayAbort = false;  ///< what it builds has queues
};

std::vector<Path> paths() {
  auto const table = [](void (*show)(InputFile&, OutputBuffer&, TableForm), TableForm form) {
    return [show, form](InputFile& in, OutputBuffer& out) { show(in, out, form); };
  };
  return {
      {"tcamshow ip", snapshot, table(showIp, TableForm::text)},
      {"tcamshow ip6", snapshot, table(showIp6, TableForm::text)},
      {"tcamshow mac", snapshot, table(showMac, TableForm::text)},
      {"tcamshow tcam", snapshot, table(showTcam, TableForm::text)},
      {"tcamshow --json tcam", snapshot, table(showTcam, TableForm::jsonLines)},
      {"tcamshow usage --detail", snapshot,
       [](InputFile& in, OutputBuffer& out) { showUsage(in, out, true); }, true},
      {"tcamshow summary", snapshot, showSummary, true},
      {"tcamshow inspect", snapshot, inspect, true},
      {"tcamshow inspect --types", snapshot,
       [](InputFile&, OutputBuffer& out) { inspectTypes(out); }},
      {"tcamshow import classbench", filters, importClassbench},
      {"tcamshow import openconfig", acl,
       [](InputFile& in, OutputBuffer& out) {
         std::vector<std::string> warnings;
         importOpenconfig(in, out, warnings);
       }},
  };
}

TEST(TcamshowFaults, EveryCommandThrowsAndWritesABeginningOfItsOutput) {
  for (const Path& path : paths()) {
    TemporaryFile const file(path.input);
    Sink sink;
    auto const run = [&] {
      InputFile in(file.path());
      OutputBuffer out(sink.descriptor());
      path.run(in, out);
      out.flush();
    };
    run();
    std::string const expected = sink.take();
    ASSERT_GT(expected.size(), 40U) << path.name;
    everyFault(path.name,
               [&](Fault& fault) {
                 bool const isDone = path.mayAbort ? fault.triesOrAborts(run) : fault.tries(run);
                 std::string const got = sink.take();
                 fault.check(isDone ? got == expected : expected.starts_with(got),
                             "the output is whole, or a beginning of it");
                 run();
                 fault.check(sink.take() == expected, "it works afterwards");
               },
               {.inChild = path.mayAbort});
  }
}

TEST(TcamshowFaults, ABadLineIsToldAsItselfOrAsMemory) {
  struct Row {
    const char* name;
    std::string input;
    void (*run)(InputFile&, OutputBuffer&);
  };
  std::string const header = "{\"type\":\"snapshot\",\"version\":1}\n";
  auto const ip = [](InputFile& in, OutputBuffer& out) { showIp(in, out, TableForm::text); };
  Row const rows[] = {
      {"a bad member", header + "{\"type\":\"entry\",\"table\":\"ip\",\"shadowId\":-1}\n", ip},
      {"a bad line", header + "{\"type\":\"entry\",\"table\":\"ip\",\"shadowId\":}\n", ip},
      {"a bad filter", "@1.2.3.4/33 1.2.3.4/32 0 : 65535 0 : 65535 6/255\n", importClassbench},
      {"a bad document", "{\"acl\":[1,2,",
       [](InputFile& in, OutputBuffer& out) {
         std::vector<std::string> warnings;
         importOpenconfig(in, out, warnings);
       }},
  };
  for (const Row& row : rows) {
    TemporaryFile const file(row.input);
    Sink sink;
    everyFault(row.name, [&](Fault& fault) {
      bool isTold = false;
      bool const isDone = fault.tries([&] {
        InputFile in(file.path());
        OutputBuffer out(sink.descriptor());
        try {
          row.run(in, out);
        } catch (const InputError&) {
          isTold = true;
        }
      });
      fault.check(isDone == isTold, "a fault of the input, or none of it");
    });
  }
}

}  // namespace
}  // namespace tcamshow
