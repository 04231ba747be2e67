#include "scoring/common/Value.h"

#include <cmath>
#include <utility>

#include "components/kelcommon/NumberText.h"
#include "scoring/common/ValueRecord.h"

namespace KelCommon_1_3 {
namespace {

bool EqualNumbers(double left, double right) { return left == right || (std::isnan(left) && std::isnan(right)); }

// NaN is below all numbers and equals itself.
bool LessNumbers(double left, double right) {
  if (std::isnan(left)) return !std::isnan(right);
  return left < right;
}

bool EqualMembers(const ValueRecord& left, const ValueRecord& right) {
  if (left.Layout() != right.Layout() || left.Size() != right.Size()) return false;
  for (int i = 0; i < left.Size(); ++i) {
    if (left.NameAt(i) != right.NameAt(i) || !(left.At(i) == right.At(i))) return false;
  }
  return true;
}

bool LessMembers(const ValueRecord& left, const ValueRecord& right) {
  for (int i = 0; i < left.Size() && i < right.Size(); ++i) {
    if (const int names = left.NameAt(i).compare(right.NameAt(i)); names != 0) return names < 0;
    if (left.At(i) < right.At(i)) return true;
    if (right.At(i) < left.At(i)) return false;
  }
  return left.Size() < right.Size();
}

}  // namespace

const Value Value::NULL_VALUE;

void Value::DeleteRecord::operator()(ValueRecord* record) const noexcept { delete record; }

Value::Value(const Value& other) : fNumber(other.fNumber), fKind(other.fKind) {
  if (fKind == kText) fText = other.fText;
  if (fKind == kMembers) fMembers.reset(new ValueRecord(*other.fMembers));
}

Value::Value(Value&& other) noexcept
    : fNumber(other.fNumber),
      fKind(std::exchange(other.fKind, kNull)),
      fText(std::move(other.fText)),
      fMembers(std::move(other.fMembers)) {}

Value::~Value() = default;

Value& Value::operator=(Value&& other) noexcept {
  if (this == &other) return *this;
  fNumber = other.fNumber;
  fKind = std::exchange(other.fKind, kNull);
  if (fKind == kText) fText.swap(other.fText);
  // Last, because it ends `other` if that was one of this value's own members.
  if (fKind == kMembers) fMembers = std::exchange(other.fMembers, nullptr);
  return *this;
}

Value& Value::AssignDeep(const Value& other) {
  if (other.fKind == kText) {
    fText = other.fText;
    fKind = kText;
    return *this;
  }
  // From here on `other` may be gone: it can be one of this value's own members.
  if (fMembers) {
    *fMembers = *other.fMembers;
  } else {
    fMembers.reset(new ValueRecord(*other.fMembers));
  }
  fKind = kMembers;
  return *this;
}

bool Value::operator<(const Value& other) const {
  if (fKind != other.fKind) return fKind < other.fKind;
  switch (fKind) {
    case kNull:
      return false;
    case kNumber:
      return LessNumbers(fNumber, other.fNumber);
    case kText:
      return fText < other.fText;
    case kMembers:
      return LessMembers(*fMembers, *other.fMembers);
  }
  return false;
}

bool Value::operator==(const Value& other) const {
  if (fKind != other.fKind) return false;
  switch (fKind) {
    case kNull:
      return true;
    case kNumber:
      return EqualNumbers(fNumber, other.fNumber);
    case kText:
      return fText == other.fText;
    case kMembers:
      return EqualMembers(*fMembers, *other.fMembers);
  }
  return false;
}

Value& Value::operator[](const std::string& name) { return fKind == kMembers ? (*fMembers)[name] : StartMembers(name); }

Value& Value::operator[](const char* name) { return fKind == kMembers ? (*fMembers)[name] : StartMembers(name); }

Value& Value::StartMembers(const std::string& name) {
  const FieldKey key(name);  // a copy, as the caller's name may stand in what is dropped here
  ValueRecord& members = MakeMembers();
  members.Clear();
  return members[key];
}

std::string Value::GetString() const {
  if (fKind == kNumber) return NumberToText(fNumber);
  return Text();
}

ValueRecord& Value::MakeMembers() {
  if (fKind == kMembers) return *fMembers;
  if (fMembers) {
    fMembers->SetAllNull();
  } else {
    fMembers.reset(new ValueRecord);
  }
  fKind = kMembers;
  return *fMembers;
}

const std::string& Value::EmptyText() noexcept {
  static const std::string empty;
  return empty;
}

double Value::TextAsNumber() const { return TextToNumber(fText).value_or(KelMV::gMissingValue); }

void Value::BecomeNumber() {
  fNumber = GetReal();
  fKind = kNumber;
}

}  // namespace KelCommon_1_3
