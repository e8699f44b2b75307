// How far hardware has got with an entry.
//
// Threads: functions of their arguments alone; safe from any thread.
#pragma once

#include <cstdint>
#include <optional>

#include "snapshot/Snapshot.h"

namespace tcamshow {

/// The state that a status of a qualifier or range checker stands for: 7 programmed, 4 failed, 0
/// not known, all others pending.
constexpr EntryState stateOfStatus(std::uint8_t status) noexcept {
  if (status == statusProgrammed) return EntryState::programmed;
  if (status == VelmorTcam::hwQualStatusFailed) return EntryState::failed;
  return status == VelmorTcam::hwQualStatusInvalid ? EntryState::unknown : EntryState::pending;
}

/// The state of an entry: the one that was given unless that is "programmed". Then, or where none
/// was, its qualifiers and range checkers decide: programmed if all are, failed if one has failed,
/// unknown if nothing is known of all that are not programmed, else pending.
inline EntryState stateOf(const Entry& entry) noexcept {
  if (entry.givenState && *entry.givenState != EntryState::programmed) return *entry.givenState;
  bool isSomeUnknown = false;
  bool isSomePending = false;
  bool isSomeFailed = false;
  auto const note = [&](std::uint8_t status) {
    EntryState const state = stateOfStatus(status);
    isSomeUnknown = isSomeUnknown || state == EntryState::unknown;
    isSomePending = isSomePending || state == EntryState::pending;
    isSomeFailed = isSomeFailed || state == EntryState::failed;
  };
  for (const Qualifier& qualifier : entry.qualifiers) note(qualifier.status);
  for (const RangeChecker& checker : entry.rangeCheckers) note(checker.status);
  if (isSomeFailed) return EntryState::failed;
  if (isSomePending) return EntryState::pending;
  return isSomeUnknown ? EntryState::unknown : EntryState::programmed;
}

/// Whether hardware looks packets up in the entry.
inline bool isInstalled(const Entry& entry) noexcept {
  return stateOf(entry) == EntryState::programmed;
}

inline bool countersAreProgrammed(const Entry& entry) noexcept {
  return entry.counterStatus == statusProgrammed;
}

/// The hits that a question is about: those since the older snapshot, if there is one, or else all.
/// None where nothing is known of them.
inline std::optional<std::uint64_t> hitsOf(const Entry& entry) noexcept {
  if (entry.since) return entry.since->hits;
  return countersAreProgrammed(entry) ? std::optional(entry.hits) : std::nullopt;
}
/// The bytes, likewise.
inline std::optional<std::uint64_t> bytesOf(const Entry& entry) noexcept {
  return entry.since ? entry.since->bytes : entry.bytes;
}

}  // namespace tcamshow
