#include "views/Inspect.h"

#include <algorithm>
#include <cstddef>
#include <string>
#include <string_view>

#include "Zel/Format/Format.h"
#include "Zel/Types/ModuleInspectData.h"
#include "Zel/Types/Reflect.h"
#include "views/TextOutput.h"
#include "views/UsageTree.h"

namespace tcamshow {

namespace {

using Zel::Attribute;
using Zel::AttributeKind;
using Zel::Op;
using Zel::OpResult;
using Zel::TypeDescriptor;
using Zel::TypeKind;
using Zel::Value;

/// Prints objects and values by their descriptors alone.
class Walker {
 public:
  explicit Walker(TextOutput& out) : out_(out) {}

  /// The attributes of what `holder` holds, an object or a record.
  void attributes(const Value& holder, std::size_t depth) {
    const TypeDescriptor* const type = holder.type();
    if (type == nullptr) return;
    Zel::forEachAttribute(*type, [&](const Attribute& attribute) {
      if (attribute.supports(Op::iterate)) return collection(holder, attribute, depth);
      if (!attribute.supports(Op::read)) return;
      Value value;
      if (done(holder, attribute, Op::read, value)) line(depth, attribute, {}, value);
    });
  }

  void root(const Halvo::Ptr<const Halvo::Node>& node) {
    Value const holder(node);
    out_.write(holder.text().view());
    out_.writeOwn("\n");
    attributes(holder, 1);
  }

 private:
  static bool done(const Value& holder, const Attribute& attribute, Op op, Value& result) {
    if (holder.record() != nullptr) {
      return Zel::attributeOp(holder, attribute.number, op, {}, result) == OpResult::done;
    }
    auto const node = holder.as<Halvo::Ptr<const Halvo::Node>>();
    return Zel::attributeOp(*node, attribute, op, {}, result) == OpResult::done;
  }

  /// A text form. The library writes U+0080 to U+009F as the escapes of their two bytes; they are
  /// shown as every other view shows them.
  void write(std::string_view text) {
    constexpr std::string_view lead = "\\xc2\\x";
    if (text.size() < lead.size() || text.find(lead) == text.npos) [[likely]]
      return out_.write(text);
    std::string shown;
    for (std::size_t at = 0; at != text.size();) {
      // An escaped backslash begins no other escape.
      std::size_t const size = text[at] != '\\' ? 1 : text.substr(at, lead.size()) == lead ? 8 : 2;
      if (size == 8) {
        shown += {'\\', 'u', '{', upper(text[at + 6]), upper(text[at + 7]), '}'};
      } else {
        shown += text.substr(at, size);
      }
      at += size;
    }
    out_.write(shown);
  }
  static char upper(char digit) noexcept {
    return digit >= 'a' ? static_cast<char>(digit - 'a' + 'A') : digit;
  }

  void indent(std::size_t depth) {
    static constexpr std::string_view blanks = "                                ";
    for (std::size_t size = 2 * depth; size != 0;) {
      std::size_t const count = std::min(size, blanks.size());
      out_.writeOwn(blanks.substr(0, count));
      size -= count;
    }
  }

  void collection(const Value& holder, const Attribute& attribute, std::size_t depth) {
    Value count;
    Value cursor;
    if (!done(holder, attribute, Op::count, count)) return;
    if (!done(holder, attribute, Op::iterate, cursor)) return;
    indent(depth);
    out_.write(Zel::_fmt("%s %s: %s\n", Zel::attributeKindName(attribute.kind), attribute.name,
                         count.text())
                   .view());
    auto const elements = cursor.as<Halvo::Ptr<Zel::Cursor>>();
    Value key;
    Value element;
    for (std::size_t index = 0; elements->next(key, element); ++index) {
      line(depth + 1, attribute,
           key.empty() ? Zel::_fmt("[%lu]", index) : Zel::_fmt("[%s]", key.text()), element);
    }
  }

  /// One attribute, or one element of it; what is inside it follows.
  void line(std::size_t depth, const Attribute& attribute, const Halvo::String& index,
            const Value& value) {
    indent(depth);
    const TypeDescriptor* const held = value.type();
    const TypeDescriptor& type = held != nullptr ? *held : attribute.type();
    bool const isInside = held != nullptr && !type.attributes.empty();
    out_.writeOwn(type.name);
    out_.writeOwn(" ");
    out_.writeOwn(attribute.name);
    write(index.view());
    if (!isInside) {
      out_.writeOwn(" = ");
      write(value.text().view());
    }
    out_.writeOwn("\n");
    if (isInside) attributes(value, depth + 1);
  }

  TextOutput& out_;
};

const char* kindName(TypeKind kind) {
  switch (kind) {
    case TypeKind::enumeration:
      return "enumeration";
    case TypeKind::value:
      return "value";
    case TypeKind::node:
      return "node";
    case TypeKind::basic:
      break;
  }
  return "basic";
}

void writeParameters(std::span<const Zel::TypeRef> types, TextOutput& out) {
  const char* separator = "(";
  for (Zel::TypeRef const type : types) {
    if (type == nullptr) break;
    out.write(separator);
    out.write(type().name);
    separator = ", ";
  }
  out.write(*separator == '(' ? "()" : ")");
}

void showAttribute(const Attribute& attribute, TextOutput& out) {
  out.write(Zel::_fmt("  %u %s %s", attribute.number, Zel::attributeKindName(attribute.kind),
                      attribute.name)
                .view());
  if (attribute.kind == AttributeKind::operation) {
    writeParameters(attribute.parameters(), out);
    if (attribute.type != nullptr) out.write(Zel::_fmt(" -> %s", attribute.type().name).view());
  } else {
    out.write(": ");
    if (attribute.keyType != nullptr) {
      out.write(Zel::_fmt("%s -> ", attribute.keyType().name).view());
    }
    out.write(attribute.type().name);
  }
  out.write("; ");
  const char* separator = "";
  for (Zel::U32 op = 0; op < Zel::opCount; ++op) {
    if (!attribute.supports(static_cast<Op>(op))) continue;
    out.write(separator);
    out.write(Zel::opName(static_cast<Op>(op)));
    separator = ", ";
  }
  out.write("\n");
}

void showType(const TypeDescriptor& type, TextOutput& out) {
  out.write(Zel::_fmt("%s: %s", type.name, kindName(type.kind)).view());
  if (type.base != nullptr) out.write(Zel::_fmt(", derives from %s", type.base->name).view());
  if (type.kind == TypeKind::value || type.create != nullptr) {
    out.write(", made from ");
    writeParameters(type.constructor.parameters, out);
  }
  out.write("\n");
  for (const Zel::EnumValue& value : type.enumValues) {
    out.write(Zel::_fmt("  %d %s\n", value.number, value.name).view());
  }
  Zel::forEachAttribute(type, [&](const Attribute& attribute) { showAttribute(attribute, out); });
}

}  // namespace

void inspect(Source& source, OutputBuffer& output) {
  TextOutput out(output);
  Usage const usage(source);
  Walker walker(out);
  walker.root(Halvo::Ptr<const Halvo::Node>::share(&usage.chip()));
  walker.root(summaryOf(usage));
}

void inspectTypes(OutputBuffer& output) {
  TextOutput out(output);
  for (const auto* module = Halvo::ModuleInspectData::first(); module != nullptr;
       module = module->next()) {
    if (module->module().name != std::string_view("VelmorTcamCliTypes")) continue;
    for (const TypeDescriptor* const type : module->module().types) showType(*type, out);
  }
}

}  // namespace tcamshow
