// Shared by the tests of reflection.
#pragma once

#include <gtest/gtest.h>

#include <initializer_list>
#include <string>
#include <vector>

#include "VelmorTcamManagerBase/VelmorTcamCliTypes.h"
#include "Zel/Base/Error.h"
#include "Zel/Types/ModuleInspectData.h"
#include "Zel/Types/Reflect.h"

namespace velmortest {

using Halvo::Node;
using Halvo::Ptr;
using Halvo::String;
using Zel::Attribute;
using Zel::AttributeKind;
using Zel::Op;
using Zel::OpResult;
using Zel::TypeDescriptor;
using Zel::Value;
using EntryInfo = VelmorTcam::CliShowTcamUsageEntryInfo;

inline const TypeDescriptor& typeNamed(const std::string& name) {
  const TypeDescriptor* const type = Zel::findType("VelmorTcam::" + name);
  EXPECT_NE(type, nullptr) << name;
  return type != nullptr ? *type : Zel::typeOf<bool>();
}

/// Does an operation and returns its result. The operation is expected to be supported.
template <class Object>
Value call(Object&& object, Halvo::U32 number, Op op, std::vector<Value> const& arguments = {}) {
  Value result;
  EXPECT_EQ(Zel::attributeOp(object, number, op, arguments, result), OpResult::done)
      << number << " " << Zel::opName(op);
  return result;
}

/// The number of a type's attribute.
inline Halvo::U32 attributeNumber(const std::string& type, const char* attribute) {
  const Attribute* const found = Zel::findAttribute(typeNamed(type), attribute);
  EXPECT_NE(found, nullptr) << type << "::" << attribute;
  return found == nullptr ? 0 : found->number;
}

/// The attributes of a type, those of its bases first.
inline std::vector<const Attribute*> attributesOf(const TypeDescriptor& type) {
  std::vector<const Attribute*> all;
  Zel::forEachAttribute(type, [&](const Attribute& attribute) { all.push_back(&attribute); });
  return all;
}

/// A value of the type, made from the number if its constructor takes something.
inline Value valueOf(const TypeDescriptor& type, Halvo::U32 number) {
  std::string const name = type.name;
  if (name == "bool") return Value(number % 2 != 0);
  if (name == "U8") return Value(static_cast<Halvo::U8>(number));
  if (name == "U16") return Value(static_cast<Halvo::U16>(number));
  if (name == "U32") return Value(Halvo::U32{number});
  if (name == "U64") return Value(Halvo::U64{number});
  if (name == "S16") return Value(static_cast<Halvo::S16>(number));
  if (name == "String") return Value(String(std::to_string(number)));
  if (type.kind == Zel::TypeKind::enumeration) {
    return Value::fromText(type, type.enumValues[number % type.enumValues.size()].name);
  }
  std::vector<Value> arguments;
  for (Zel::TypeRef const parameter : type.constructor.parameters) {
    if (parameter != nullptr) arguments.push_back(valueOf(parameter(), number));
  }
  if (type.kind == Zel::TypeKind::value) return Value::make(type, arguments);
  if (name == "VelmorTcam::VelmorTcamEntryShadow") {
    return Value(Halvo::makePtr<VelmorTcam::VelmorTcamEntryShadow>(number));
  }
  return Value(Zel::createNode(type, arguments));
}

/// All readable state of an object as a text, for comparison.
inline std::string stateOf(const Value& object) {
  const TypeDescriptor* const type = object.type();
  if (type == nullptr || type->attributes.empty()) return object.text().str();
  std::string state = std::string(type->name) + "{";
  auto const read = [&](const Attribute& attribute, Op op) {
    Value result;
    if (object.record() != nullptr) {
      EXPECT_EQ(Zel::attributeOp(object, attribute.number, op, {}, result), OpResult::done);
    } else {
      auto const node = object.as<Ptr<const Node>>();
      EXPECT_EQ(Zel::attributeOp(*node, attribute.number, op, {}, result), OpResult::done);
    }
    return result;
  };
  for (const Attribute* attribute : attributesOf(*type)) {
    if (attribute->supports(Op::read)) {
      state += std::string(attribute->name) + "=" + stateOf(read(*attribute, Op::read)) + ";";
    }
    if (attribute->supports(Op::iterate)) {
      state += std::string(attribute->name) + "(" + read(*attribute, Op::count).text().str() + ")[";
      auto const cursor = read(*attribute, Op::iterate).as<Ptr<Zel::Cursor>>();
      Value key;
      Value element;
      while (cursor->next(key, element)) {
        state += key.text().str() + ":" + stateOf(element) + ",";
      }
      state += "]";
    }
  }
  return state + "}";
}

/// Puts values into every attribute that takes some.
inline void fill(const Value& object) {
  auto const node = object.as<Ptr<Node>>();
  for (const Attribute* attribute : attributesOf(*object.type())) {
    for (Halvo::U32 number : {3U, 1U, 2U}) {
      switch (attribute->kind) {
        case AttributeKind::readWrite:
          // A plain formatter stops the process when `initialized` is set.
          if (std::string(attribute->name) == "initialized") break;
          call(*node, attribute->number, Op::write, {valueOf(attribute->type(), number)});
          break;
        case AttributeKind::orderedMap:
        case AttributeKind::hashMap:
          call(*node, attribute->number, Op::createOrGet, {valueOf(attribute->keyType(), number)});
          break;
        case AttributeKind::entrySet:
          call(*node, attribute->number, Op::insert,
               {valueOf(attribute->type(), number), Value(true)});
          break;
        case AttributeKind::queue:
          call(*node, attribute->number, Op::enqueue, {valueOf(attribute->type(), number)});
          break;
        default:
          break;
      }
    }
  }
}

/// The message of the error that `body` is expected to throw.
template <class Error, class Body>
std::string errorOf(Body body) {
  try {
    body();
  } catch (const Error& error) {
    EXPECT_NE(dynamic_cast<const Zel::Error*>(&error), nullptr);
    return error.what();
  } catch (const std::exception& error) {
    ADD_FAILURE() << "another error: " << error.what();
    return {};
  }
  ADD_FAILURE() << "no error";
  return {};
}

}  // namespace velmortest
