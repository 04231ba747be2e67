#include "scoring/common/ValueRecord.h"

#include <algorithm>
#include <functional>
#include <stdexcept>
#include <utility>

#include "components/kelcommon/Hashing.h"

namespace KelCommon_1_3 {
namespace {

// Up to this many names, looking through the hashes one by one is faster than an index.
constexpr std::size_t kUnindexedSize = 16;
// The index has a power of two of slots and at least twice as many as names, so a search ends after a slot or two.
constexpr std::size_t kSlotsPerName = 2;
constexpr std::size_t kFirstIndexSize = 128;
constexpr std::size_t kFirstCapacity = 8;
// An expected size comes from a caller's estimate; one that is far off must not cost memory.
constexpr int kLargestExpectedSize = 4096;
constexpr std::int32_t kFreeSlot = -1;

const std::string kNoName;

}  // namespace

FieldKey::FieldKey(std::string name) : fName(std::move(name)), fHash(HashBytes(fName)) {}

ValueRecord::ValueRecord(int expectedSize) {
  if (expectedSize <= 0) return;
  const auto size = static_cast<std::size_t>(std::min(expectedSize, kLargestExpectedSize));
  fValues.reserve(size);
  fNames.reserve(size);
  fHashes.reserve(size);
}

ValueRecord::ValueRecord(const ValueRecord&) = default;

ValueRecord::ValueRecord(ValueRecord&& other) noexcept { Swap(other); }

ValueRecord& ValueRecord::operator=(const ValueRecord& other) {
  if (this == &other) return *this;
  const bool copyInPlace = fLayout == other.fLayout && !Encloses(other) && !other.Encloses(*this);
  if (copyInPlace) {
    fValues = other.fValues;  // the names are the same
  } else {
    *this = ValueRecord(other);
  }
  return *this;
}

ValueRecord& ValueRecord::operator=(ValueRecord&& other) noexcept {
  // Taken over first: `other` may lie in one of the values that go.
  ValueRecord taken(std::move(other));
  Swap(taken);
  return *this;
}

ValueRecord::~ValueRecord() = default;

int ValueRecord::Add(const std::string& name, const Value& value) { return AddHashed(name, HashBytes(name), value); }

int ValueRecord::Add(const FieldKey& key, const Value& value) { return AddHashed(key.Name(), key.Hash(), value); }

int ValueRecord::AddHashed(std::string_view name, std::uint64_t hash, const Value& value) {
  int position = Find(name, hash);
  if (position < 0) {
    // Appending can move this record's values, of which `value` may be one.
    const std::less<const Value*> before;
    const Value* const first = fValues.data();
    const bool isOwn = !before(&value, first) && before(&value, first + fValues.size());
    const std::size_t ownPosition = isOwn ? static_cast<std::size_t>(&value - first) : 0;
    position = Append(name, hash);
    (*this)[position] = isOwn ? fValues[ownPosition] : value;
  } else {
    (*this)[position] = value;
  }
  return position;
}

int ValueRecord::IndexOf(const std::string& name) const {
  if (fNames.empty()) return -1;
  return Find(name, HashBytes(name));
}

int ValueRecord::IndexOf(const FieldKey& key) const { return Find(key.Name(), key.Hash()); }

const std::string& ValueRecord::NameAt(int position) const noexcept {
  return InRange(position) ? fNames[static_cast<std::size_t>(position)] : kNoName;
}

Value& ValueRecord::operator[](const std::string& name) { return (*this)[FindOrAppend(name, HashBytes(name))]; }

Value& ValueRecord::operator[](const char* name) { return (*this)[FindOrAppend(name, HashBytes(name))]; }

Value& ValueRecord::operator[](const FieldKey& key) { return (*this)[FindOrAppend(key.Name(), key.Hash())]; }

std::vector<std::string> ValueRecord::Names(bool /*all*/) const { return fNames; }

void ValueRecord::SetAllNull() noexcept {
  for (Value& value : fValues) value.SetNull();
}

void ValueRecord::Clear() noexcept {
  fValues.clear();
  fNames.clear();
  fHashes.clear();
  fIndex.clear();
  fLayout = 0;
}

// By way of a record of its own: `other` may be this record, or lie in one of its values.
void ValueRecord::TakeNames(const ValueRecord& other) {
  ValueRecord taken;
  taken.fNames = other.fNames;
  taken.fHashes = other.fHashes;
  taken.fIndex = other.fIndex;
  taken.fValues.resize(other.fValues.size());
  taken.fLayout = other.fLayout;
  Swap(taken);
}

void ValueRecord::ThrowOutOfRange(int position) {
  throw std::out_of_range("ValueRecord: no value at position " + std::to_string(position));
}

bool ValueRecord::Matches(std::size_t position, std::string_view name, std::uint64_t hash) const {
  return fHashes[position] == hash && fNames[position] == name;
}

int ValueRecord::Find(std::string_view name, std::uint64_t hash) const {
  if (!fIndex.empty()) return FindIndexed(name, hash);
  for (std::size_t i = 0; i < fHashes.size(); ++i) {
    if (Matches(i, name, hash)) return static_cast<int>(i);
  }
  return -1;
}

int ValueRecord::FindIndexed(std::string_view name, std::uint64_t hash) const {
  const std::size_t mask = fIndex.size() - 1;
  for (std::size_t slot = hash & mask; fIndex[slot] != kFreeSlot; slot = (slot + 1) & mask) {
    if (Matches(static_cast<std::size_t>(fIndex[slot]), name, hash)) return fIndex[slot];
  }
  return -1;
}

int ValueRecord::FindOrAppend(std::string_view name, std::uint64_t hash) {
  const int position = Find(name, hash);
  return position >= 0 ? position : Append(name, hash);
}

int ValueRecord::Append(std::string_view name, std::uint64_t hash) {
  std::string ownName(name);
  ReserveOneMore();
  // Nothing below can fail, so names, values and index never get out of step.
  fNames.push_back(std::move(ownName));
  fHashes.push_back(hash);
  fValues.emplace_back();
  fLayout = HashChain(fLayout, hash);
  const auto position = static_cast<std::int32_t>(fValues.size() - 1);
  if (!fIndex.empty()) EnterIndex(position);
  return position;
}

void ValueRecord::ReserveOneMore() {
  const std::size_t size = fValues.size();
  if (std::min({fValues.capacity(), fNames.capacity(), fHashes.capacity()}) == size) {
    const std::size_t capacity = std::max(kFirstCapacity, 2 * size);
    fNames.reserve(capacity);
    fHashes.reserve(capacity);
    fValues.reserve(capacity);
  }
  if (size >= kUnindexedSize && (size + 1) * kSlotsPerName > fIndex.size()) Reindex();
}

void ValueRecord::Reindex() {
  std::vector<std::int32_t> slots(std::max(kFirstIndexSize, 2 * fIndex.size()), kFreeSlot);
  fIndex.swap(slots);
  for (std::size_t i = 0; i < fHashes.size(); ++i) EnterIndex(static_cast<std::int32_t>(i));
}

void ValueRecord::EnterIndex(std::int32_t position) noexcept {
  const std::size_t mask = fIndex.size() - 1;
  std::size_t slot = fHashes[static_cast<std::size_t>(position)] & mask;
  while (fIndex[slot] != kFreeSlot) slot = (slot + 1) & mask;
  fIndex[slot] = position;
}

bool ValueRecord::Encloses(const ValueRecord& record) const noexcept {
  return std::any_of(fValues.begin(), fValues.end(), [&record](const Value& value) {
    const ValueRecord* const members = value.fMembers.get();
    return members != nullptr && (members == &record || members->Encloses(record));
  });
}

void ValueRecord::Swap(ValueRecord& other) noexcept {
  fValues.swap(other.fValues);
  fNames.swap(other.fNames);
  fHashes.swap(other.fHashes);
  fIndex.swap(other.fIndex);
  std::swap(fLayout, other.fLayout);
}

}  // namespace KelCommon_1_3
