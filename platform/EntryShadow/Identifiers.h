// The identifiers that the CLI of the agent passes to the formatters.
//
// Threads: plain values. Different threads may use different objects at the same time. Several
// threads may read one object while no thread changes it.
#pragma once

#include <compare>
#include <utility>

#include "Halvo/String.h"
#include "VelmorPlatformExport.h"
#include "Zel/Base/CharRange.h"
#include "Zel/Base/Types.h"
#include "Zel/Types/TypeModule.h"

namespace VelmorTcam {

/// The name of the request (an access list, a policy) that an entry was programmed for.
class RequestKey {
 public:
  RequestKey() = default;
  explicit RequestKey(Halvo::String name) : name_(std::move(name)) {}
  const Halvo::String& name() const noexcept { return name_; }
  friend bool operator==(const RequestKey&, const RequestKey&) = default;
  friend std::strong_ordering operator<=>(const RequestKey&, const RequestKey&) = default;

 private:
  Halvo::String name_;
};

/// Identifies one rule of a request by its sequence number, 0 to 2^32-1. The highest number is the
/// drop rule, which the tables show as "Drop".
class RuleId {
 public:
  static constexpr Halvo::U32 dropSequenceNum = 0xFFFFFFFF;

  constexpr RuleId() = default;
  constexpr explicit RuleId(Halvo::U32 sequenceNum) noexcept : sequenceNum_(sequenceNum) {}
  constexpr Halvo::U32 sequenceNum() const noexcept { return sequenceNum_; }
  friend constexpr auto operator<=>(const RuleId&, const RuleId&) = default;

 private:
  Halvo::U32 sequenceNum_ = 0;
};

/// The number of a TCAM group, 0 to 65535. Of a wider number only the low 16 bits are kept.
class TcamGroupId {
 public:
  constexpr TcamGroupId() = default;
  constexpr TcamGroupId(Halvo::U32 number) noexcept : number_(static_cast<Halvo::U16>(number)) {}
  constexpr Halvo::U16 number() const noexcept { return number_; }
  friend constexpr auto operator<=>(const TcamGroupId&, const TcamGroupId&) = default;

 private:
  Halvo::U16 number_ = 0;
};

/// The text forms: VelmorTcam::RequestKey{name="acl"}, VelmorTcam::RuleId{sequenceNum=10},
/// VelmorTcam::TcamGroupId{number=3}. See Zel/Types/Record.h.
VELMOR_PLATFORM_API void valueToSequence(Halvo::String& out, const RequestKey& key);
VELMOR_PLATFORM_API void valueToSequence(Halvo::String& out, const RuleId& rule);
VELMOR_PLATFORM_API void valueToSequence(Halvo::String& out, const TcamGroupId& group);
VELMOR_PLATFORM_API void sequenceToValue(Zel::CharRange& in, RequestKey* key);
VELMOR_PLATFORM_API void sequenceToValue(Zel::CharRange& in, RuleId* rule);
VELMOR_PLATFORM_API void sequenceToValue(Zel::CharRange& in, TcamGroupId* group);

ZEL_DECLARE_TYPE(VELMOR_PLATFORM_API, RequestKey);
ZEL_DECLARE_TYPE(VELMOR_PLATFORM_API, RuleId);
ZEL_DECLARE_TYPE(VELMOR_PLATFORM_API, TcamGroupId);

}  // namespace VelmorTcam
