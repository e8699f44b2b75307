// tcamshow's commands, each with every allocation failing in turn.
#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "../tcamshow/TemporaryFile.h"
#include "EveryFault.h"
#include "Sink.h"
#include "io/InputError.h"
#include "io/OutputBuffer.h"
#include "questions/Capacity.h"
#include "questions/Diff.h"
#include "questions/Lint.h"
#include "questions/Listing.h"
#include "questions/Measures.h"
#include "snapshot/EntryStore.h"
#include "snapshot/SnapshotReader.h"
#include "snapshot/SnapshotWriter.h"
#include "snapshot/StoreSource.h"
#include "sources/Classbench.h"
#include "sources/Openconfig.h"
#include "views/Capacity.h"
#include "views/Diff.h"
#include "views/Inspect.h"
#include "views/Lint.h"
#include "views/List.h"
#include "views/Metrics.h"
#include "views/Tables.h"
#include "views/Usage.h"

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
{"type":"entry","table":"ip","shadowId":5,"groupId":3,"action":"deny","qualifiers":{"qualifierSrcIp":{"value":"10.0.0.1","mask":"255.0.0.0"},"qualifierIpProtocol":{"value":6,"mask":255}}}
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

using Open = std::unique_ptr<Source> (*)(InputFile file, Complaints& complaints);
using Show = std::function<void(Source&, OutputBuffer&)>;

struct Path {
  const char* name;
  const char* input;
  Open open;
  Show show;
  bool mayAbort = false;  ///< what it builds has queues
};

std::vector<Path> paths() {
  auto const shows = [](Table table, TableForm form) {
    return [table, form](Source& in, OutputBuffer& out) { showTable(in, out, table, form); };
  };
  return {
      {"tcamshow ip", snapshot, openSnapshot, shows(Table::ip, TableForm::text)},
      {"tcamshow ip6", snapshot, openSnapshot, shows(Table::ip6, TableForm::text)},
      {"tcamshow mac", snapshot, openSnapshot, shows(Table::mac, TableForm::text)},
      {"tcamshow tcam", snapshot, openSnapshot, shows(Table::tcam, TableForm::text)},
      {"tcamshow --json tcam", snapshot, openSnapshot, shows(Table::tcam, TableForm::jsonLines)},
      {"tcamshow usage --detail", snapshot, openSnapshot,
       [](Source& in, OutputBuffer& out) { showUsage(in, out, true); }, true},
      {"tcamshow usage --json --detail", snapshot, openSnapshot,
       [](Source& in, OutputBuffer& out) { showUsageJson(in, out, true); }, true},
      {"tcamshow summary", snapshot, openSnapshot, showSummary, true},
      {"tcamshow summary --json", snapshot, openSnapshot, showSummaryJson, true},
      {"tcamshow capacity", snapshot, openSnapshot,
       [](Source& in, OutputBuffer& out) {
         showCapacity(capacityOf(in, [](const Place&) { return true; }), {}, out);
       }},
      {"tcamshow capacity --json", snapshot, openSnapshot,
       [](Source& in, OutputBuffer& out) {
         showCapacityJson(capacityOf(in, [](const Place&) { return true; }), out);
       }},
      {"tcamshow metrics --lint --per-entry", snapshot, openSnapshot,
       [](Source& in, OutputBuffer& out) {
         EntryStore const store(in);
         Complaints complaints;
         showMetrics(measuresOf(store, {usualLintClasses, true}, complaints), {}, usualLintClasses,
                     MetricsFormat::openmetrics, out);
       }},
      {"tcamshow list", snapshot, openSnapshot,
       [](Source& in, OutputBuffer& out) {
         EntryStore const store(in);
         Complaints complaints;
         showList(Listing(storeSource(store, complaints), {}, complaints), {.isColoured = true},
                  out);
       }},
      {"tcamshow lint --with redundant", snapshot, openSnapshot,
       [](Source& in, OutputBuffer& out) {
         EntryStore const store(in);
         LintView view(out, false);
         for (const PlaceInfo& place : store.places()) {
           view.show(store, place, lintOf(store, place, allLintClasses), allLintClasses);
         }
       }},
      {"tcamshow diff", snapshot, openSnapshot,
       [](Source& in, OutputBuffer& out) {
         EntryStore const a(in);
         Complaints complaints;
         EntryStore const b(*storeSource(a, complaints));
         DiffView view(out, PlaceBy::place, true);
         DiffCounts counts;
         for (const CommonPlace& place : commonPlaces(a, b, PlaceBy::place)) {
           view.placeIs(place);
           diffPlace(a, b, place, PairBy::match, counts,
                     [&view](const Difference& difference) { view.show(difference); });
         }
         view.showCounts(counts);
       }},
      {"tcamshow inspect", snapshot, openSnapshot, inspect, true},
      {"tcamshow inspect --types", snapshot, openSnapshot,
       [](Source&, OutputBuffer& out) { inspectTypes(out); }},
      {"tcamshow import classbench", filters, openClassbench, writeSnapshot},
      {"tcamshow import openconfig", acl, openOpenconfig, writeSnapshot},
  };
}

TEST(TcamshowFaults, EveryCommandThrowsAndWritesABeginningOfItsOutput) {
  for (const Path& path : paths()) {
    TemporaryFile const file(path.input);
    Sink sink;
    auto const run = [&] {
      Complaints complaints;
      OutputBuffer out(sink.descriptor());
      auto const source = path.open(InputFile(file.path()), complaints);
      path.show(*source, out);
      out.flush();
      static_cast<void>(complaints.texts());
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
    Open open;
    Show show;
  };
  std::string const header = "{\"type\":\"snapshot\",\"version\":1}\n";
  auto const ip = [](Source& in, OutputBuffer& out) {
    showTable(in, out, Table::ip, TableForm::text);
  };
  Row const rows[] = {
      {"a bad member", header + "{\"type\":\"entry\",\"table\":\"ip\",\"shadowId\":-1}\n",
       openSnapshot, ip},
      {"a bad line", header + "{\"type\":\"entry\",\"table\":\"ip\",\"shadowId\":}\n", openSnapshot,
       ip},
      {"a bad filter", "@1.2.3.4/33 1.2.3.4/32 0 : 65535 0 : 65535 6/255\n", openClassbench,
       writeSnapshot},
      {"a bad document", "{\"acl\":[1,2,", openOpenconfig, writeSnapshot},
  };
  for (const Row& row : rows) {
    TemporaryFile const file(row.input);
    Sink sink;
    everyFault(row.name, [&](Fault& fault) {
      bool isTold = false;
      bool const isDone = fault.tries([&] {
        Complaints complaints;
        OutputBuffer out(sink.descriptor());
        try {
          row.show(*row.open(InputFile(file.path()), complaints), out);
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
