#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "scoring/common/KelExport.h"
#include "scoring/common/KelMV.h"

namespace KelCommon_1_3 {

class ValueRecord;

/// One value of a record: null, a number, a text, or named members (a composite value).
///
/// A copy is deep and independent. Copying or assigning a number or null never allocates. A value that changes its
/// kind keeps its text buffer, so that a field that alternates between null and text settles down to no allocation.
/// A value that is moved from is null. A value belongs to one thread at a time.
class KEL_EXPORT Value {
 public:
  /// What `GetType` gives. Values of different kinds order by these numbers.
  enum Kind : std::uint16_t { kNull = 0, kNumber = 3, kText = 4, kMembers = 5 };

  /// The null value, to compare with or to assign from.
  static const Value NULL_VALUE;

  constexpr Value() noexcept {}
  Value(int number) noexcept : fNumber(number), fKind(kNumber) {}
  Value(double number) noexcept : fNumber(number), fKind(kNumber) {}
  Value(const std::string& text) : fKind(kText), fText(text) {}
  Value(const char* text) : fKind(kText), fText(text) {}
  Value(const Value& other);
  Value(Value&& other) noexcept;
  ~Value();

  Value& operator=(const Value& other) {
    if (other.fKind <= kNumber) {
      fNumber = other.fNumber;
      fKind = other.fKind;
      return *this;
    }
    return AssignDeep(other);
  }
  Value& operator=(Value&& other) noexcept;
  Value& operator=(double number) noexcept {
    fNumber = number;
    fKind = kNumber;
    return *this;
  }
  Value& operator=(int number) noexcept { return *this = static_cast<double>(number); }
  Value& operator=(const std::string& text) {
    fText = text;
    fKind = kText;
    return *this;
  }
  Value& operator=(const char* text) {
    fText = text;
    fKind = kText;
    return *this;
  }

  /// Makes the value null; its buffers stay for the next text or members.
  void SetNull() noexcept { fKind = kNull; }

  /// A strict weak order: by kind code, then by content. NaN equals itself and is below all numbers, -0 equals 0, a
  /// text never equals a number. Texts order bytewise; members order as sequences of (name, value) pairs.
  bool operator<(const Value& other) const;
  bool operator==(const Value& other) const;

  /// The member `name`, appended as null if it is absent. Whatever else the value held is dropped: it becomes
  /// composite. Members keep their order; the search is sublinear.
  Value& operator[](const std::string& name);
  Value& operator[](const char* name);

  /// The number in place. A value of another kind becomes the number that `GetReal` gives for it.
  operator double&() {
    if (fKind != kNumber) BecomeNumber();
    return fNumber;
  }

  /// The number; for a text the number that the whole text is (white space of XML around it is allowed, the host's
  /// locale doesn't matter); `KelMV::gMissingValue` for everything else. A numeric text is decimal, with a sign and an
  /// exponent if it likes; words such as "inf" and "nan", hexadecimal digits and what is too large for a finite number
  /// are no number.
  [[nodiscard]] double GetReal() const {
    if (fKind == kNumber) return fNumber;
    return fKind == kText ? TextAsNumber() : KelMV::gMissingValue;
  }
  /// The text; for a number the shortest text that reads back as the same number; empty for null and members.
  [[nodiscard]] std::string GetString() const;
  /// The text in place, without a copy; empty unless the kind is text. Valid until the value changes.
  [[nodiscard]] const std::string& Text() const noexcept { return fKind == kText ? fText : EmptyText(); }
  /// The members, null unless the value is composite. The value owns them.
  [[nodiscard]] const ValueRecord* Members() const noexcept { return fKind == kMembers ? fMembers.get() : nullptr; }
  /// The members for writing: a value of another kind becomes composite, taking up the member names that it had
  /// when it was last composite, all null. So a composite output that is written anew each record doesn't allocate.
  ValueRecord& MakeMembers();

  [[nodiscard]] std::uint16_t GetType() const noexcept { return fKind; }
  [[nodiscard]] bool IsNull() const noexcept { return fKind == kNull; }

 private:
  friend class ValueRecord;  // looks for records that lie within each other, the unused ones included

  static const std::string& EmptyText() noexcept;
  [[nodiscard]] double TextAsNumber() const;
  void BecomeNumber();
  Value& StartMembers(const std::string& name);
  Value& AssignDeep(const Value& other);

  struct DeleteRecord {
    void operator()(ValueRecord* record) const noexcept;
  };

  double fNumber = 0.0;
  Kind fKind = kNull;
  std::string fText;                                    // kept as a buffer while the kind is another
  std::unique_ptr<ValueRecord, DeleteRecord> fMembers;  // likewise
};

}  // namespace KelCommon_1_3
