// Prints an entry as JSON. The formatter decides the members of the object; the printer writes
// them. With a printer, displayEntryRequest writes no row.
#include <cstdio>
#include <iostream>
#include <ostream>
#include <string_view>

#include "VelmorTcamManagerBase/VelmorTcamCliHelper.h"
#include "VelmorTcamManagerBase/VelmorTcamCliTypes.h"

/// Writes each document as one line.
class JsonPrinter : public pravo::Printer {
 public:
  explicit JsonPrinter(std::ostream& out) : out_(out) {}

  void objectBegin(std::string_view name) override { begin(name, '{'); }
  void objectEnd() override { end('}'); }
  void arrayBegin(std::string_view name) override { begin(name, '['); }
  void arrayEnd() override { end(']'); }

 private:
  void printText(std::string_view name, std::string_view text) override {
    item(name);
    quote(text);
  }
  void printUnsigned(std::string_view name, pravo::U64 number) override {
    item(name);
    out_ << number;
  }
  void printSigned(std::string_view name, pravo::S64 number) override {
    item(name);
    out_ << number;
  }
  void printBool(std::string_view name, bool value) override {
    item(name);
    out_ << (value ? "true" : "false");
  }

  void begin(std::string_view name, char bracket) {
    item(name);
    out_ << bracket;
    isFirst_ = true;
    ++depth_;
  }
  void end(char bracket) {
    out_ << bracket;
    isFirst_ = false;
    if (--depth_ > 0) return;
    out_ << '\n';
    isFirst_ = true;
  }
  void item(std::string_view name) {
    if (!isFirst_) out_ << ',';
    isFirst_ = false;
    if (name.empty()) return;  // an element of an array, or the document
    quote(name);
    out_ << ':';
  }
  void quote(std::string_view text) {
    out_ << '"';
    for (char const c : text) {
      if (c == '"' || c == '\\') {
        out_ << '\\' << c;
      } else if (static_cast<unsigned char>(c) < 0x20) {
        char escape[8];
        std::snprintf(escape, sizeof escape, "\\u%04x", static_cast<unsigned>(c));
        out_ << escape;
      } else {
        out_ << c;
      }
    }
    out_ << '"';
  }

  std::ostream& out_;
  bool isFirst_ = true;  // nothing has been written yet in the open container
  int depth_ = 0;
};

class AclFormat : public VelmorTcam::IpEntryRequestCliFormat {
 public:
  Halvo::String formatActions(const PtrConst&) const override { return "permit"; }

  void formatEntryRequestJson(const VelmorTcam::RequestKey& requestKey,
                              const VelmorTcam::RuleId& ruleId, const Halvo::String& description,
                              const PtrConst& entryShadow, VelmorTcam::U64 hits,
                              pravo::Printer* printer) const override {
    printer->objectBegin();
    printer->attribute("acl", requestKey.name().view());
    printer->attribute("sequence", ruleId.sequenceNum());
    printer->attribute("description", description.view());
    printer->attribute("id", entryShadow->shadowId());
    if (entryShadow->counterStatus() == VelmorTcam::hwQualStatusProgrammed) {
      printer->attribute("hits", hits);
    }
    printer->objectBegin("source");
    printAddress(*entryShadow, VelmorTcam::qualifierSrcIp, *printer);
    printer->objectEnd();
    printer->arrayBegin("actions");
    printer->attribute({}, formatActions(entryShadow).view());
    printer->arrayEnd();
    printer->objectEnd();
  }

 private:
  /// Prints nothing if the qualifier is not programmed. Always read the status first.
  static void printAddress(const VelmorTcam::VelmorTcamEntryShadow& shadow,
                           VelmorTcam::QualifierType type, pravo::Printer& printer) {
    if (shadow.getHwQualStatus(type, type) != VelmorTcam::hwQualStatusProgrammed) return;
    VelmorTcam::Qualifier const qual = shadow.qualifier(type)->hwQualData(type)->qual();
    printer.attribute("address", Trelix::IpAddr::fromHostOrder(qual.value()).stringValue().view());
    printer.attribute("mask", Trelix::IpAddr::fromHostOrder(qual.mask()).stringValue().view());
  }
};

int main() {
  auto const format = Halvo::makePtr<AclFormat>();
  format->initializedIs(true);

  auto const shadow = Halvo::makePtr<VelmorTcam::VelmorTcamEntryShadow>(17);
  shadow->hwQualIs(VelmorTcam::qualifierSrcIp, VelmorTcam::Qualifier(0x0A000000, 0xFF000000));
  shadow->counterStatusIs(VelmorTcam::hwQualStatusProgrammed);

  JsonPrinter printer(std::cout);
  format->displayEntryRequest(0, VelmorTcam::RequestKey("office"), VelmorTcam::RuleId(10),
                              "from \"10/8\"", shadow, 1234, &printer);
}
