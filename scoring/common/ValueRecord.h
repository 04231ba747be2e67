#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "scoring/common/KelExport.h"
#include "scoring/common/Value.h"

namespace KelCommon_1_3 {

/// Identifies the names of a record and their order: two records have equal layouts if, and but for a 64-bit hash
/// collision under a seed of this process only if, they hold the same names in the same order. A reader binds names
/// to positions once for a layout and afterwards compares this one number. 0 is the layout of an empty record.
using RecordLayout = std::uint64_t;

/// A field name with its hash, for lookups that must not hash per record.
class KEL_EXPORT FieldKey {
 public:
  explicit FieldKey(std::string name);
  [[nodiscard]] const std::string& Name() const noexcept { return fName; }
  [[nodiscard]] std::uint64_t Hash() const noexcept { return fHash; }

 private:
  std::string fName;
  std::uint64_t fHash;
};

/// An ordered list of named values; names are distinct.
///
/// Reading and writing by position costs no search. A record belongs to one thread at a time; several threads may
/// read one record that none of them changes.
class KEL_EXPORT ValueRecord {
 public:
  /// `expectedSize` is a hint of how many fields will be added; it limits nothing.
  explicit ValueRecord(int expectedSize = 0);
  ValueRecord(const ValueRecord&);
  ValueRecord(ValueRecord&&) noexcept;
  ValueRecord& operator=(const ValueRecord&);
  ValueRecord& operator=(ValueRecord&&) noexcept;
  ~ValueRecord();

  /// Appends `name` with a copy of `value`; if the name is there, its value is replaced in place. Gives the position.
  /// `value` may be one of this record's own values.
  int Add(const std::string& name, const Value& value);
  int Add(const FieldKey& key, const Value& value);

  [[nodiscard]] bool Contains(const std::string& name) const { return IndexOf(name) >= 0; }
  [[nodiscard]] bool Contains(const FieldKey& key) const { return IndexOf(key) >= 0; }
  /// The position of `name`, -1 if absent.
  [[nodiscard]] int IndexOf(const std::string& name) const;
  [[nodiscard]] int IndexOf(const FieldKey& key) const;

  [[nodiscard]] int Size() const noexcept { return static_cast<int>(fValues.size()); }
  /// The name and a copy of the value at a position; empty and null for a position outside the record.
  [[nodiscard]] std::string GetName(int position) const { return NameAt(position); }
  [[nodiscard]] Value Get(int position) const { return At(position); }
  /// The same without copies. The references die with the next added name.
  [[nodiscard]] const std::string& NameAt(int position) const noexcept;
  [[nodiscard]] const Value& At(int position) const noexcept {
    return InRange(position) ? fValues[static_cast<std::size_t>(position)] : Value::NULL_VALUE;
  }

  /// The value at a position, for writing. Throws `std::out_of_range` for a position outside the record.
  Value& operator[](int position) {
    if (!InRange(position)) ThrowOutOfRange(position);
    return fValues[static_cast<std::size_t>(position)];
  }
  /// The value of `name`, appended as null if the name is absent.
  Value& operator[](const std::string& name);
  Value& operator[](const char* name);
  Value& operator[](const FieldKey& key);

  /// All names in order. The flag chooses nothing so far; callers pass true.
  [[nodiscard]] std::vector<std::string> Names(bool all) const;

  /// See `RecordLayout`. Changes whenever a name is added.
  [[nodiscard]] RecordLayout Layout() const noexcept { return fLayout; }

  /// Sets every value to null and keeps the names, so that the record can be used for the next row.
  void SetAllNull() noexcept;
  /// Removes all names and values; capacity stays.
  void Clear() noexcept;

  /// All values in order, for readers that have bound their positions. Dies with the next added name.
  [[nodiscard]] std::span<const Value> Values() const noexcept { return fValues; }

  /// Replaces all names and values by the names of `other`, each with null. Quicker than adding them one by one.
  void TakeNames(const ValueRecord& other);

 private:
  [[nodiscard]] bool InRange(int position) const noexcept {
    return static_cast<std::size_t>(static_cast<unsigned>(position)) < fValues.size();
  }
  [[noreturn]] static void ThrowOutOfRange(int position);
  [[nodiscard]] int Find(std::string_view name, std::uint64_t hash) const;
  [[nodiscard]] int FindIndexed(std::string_view name, std::uint64_t hash) const;
  [[nodiscard]] bool Matches(std::size_t position, std::string_view name, std::uint64_t hash) const;
  int FindOrAppend(std::string_view name, std::uint64_t hash);
  int Append(std::string_view name, std::uint64_t hash);
  int AddHashed(std::string_view name, std::uint64_t hash, const Value& value);
  void ReserveOneMore();
  void Reindex();
  void EnterIndex(std::int32_t position) noexcept;
  [[nodiscard]] bool Encloses(const ValueRecord& record) const noexcept;
  void Swap(ValueRecord& other) noexcept;

  std::vector<Value> fValues;
  std::vector<std::string> fNames;
  std::vector<std::uint64_t> fHashes;  // of the names, beside them
  std::vector<std::int32_t> fIndex;    // open addressing over fHashes; empty while the record is small
  RecordLayout fLayout = 0;
};

}  // namespace KelCommon_1_3
