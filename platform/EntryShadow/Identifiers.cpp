// The text forms of the identifiers.
#include "EntryShadow/Identifiers.h"

#include <utility>

#include "Zel/Types/Record.h"

namespace VelmorTcam {

namespace {

template <class T>
void recordWrite(Halvo::String& out, const char* type, const char* attribute, const T& value) {
  Zel::serAttrPre(out, type, attribute, value);
  out += '}';
}

// Reads a record with a single attribute.
template <class T>
T recordRead(Zel::CharRange& in, const char* type, const char* attribute) {
  T value{};
  Zel::desAttrPre(in, type, attribute, &value);
  Zel::impl::recordMarkRead(in, '}');
  return value;
}

}  // namespace

void valueToSequence(Halvo::String& out, const RequestKey& key) {
  recordWrite(out, "VelmorTcam::RequestKey", "name", key.name());
}
void valueToSequence(Halvo::String& out, const RuleId& rule) {
  recordWrite(out, "VelmorTcam::RuleId", "sequenceNum", rule.sequenceNum());
}
void valueToSequence(Halvo::String& out, const TcamGroupId& group) {
  recordWrite(out, "VelmorTcam::TcamGroupId", "number", group.number());
}

void sequenceToValue(Zel::CharRange& in, RequestKey* key) {
  *key = RequestKey(recordRead<Halvo::String>(in, "VelmorTcam::RequestKey", "name"));
}
void sequenceToValue(Zel::CharRange& in, RuleId* rule) {
  *rule = RuleId(recordRead<Halvo::U32>(in, "VelmorTcam::RuleId", "sequenceNum"));
}
void sequenceToValue(Zel::CharRange& in, TcamGroupId* group) {
  *group = TcamGroupId(recordRead<Halvo::U16>(in, "VelmorTcam::TcamGroupId", "number"));
}

}  // namespace VelmorTcam
