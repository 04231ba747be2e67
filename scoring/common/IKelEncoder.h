#pragma once

#include <string>
#include <vector>

#include "scoring/common/KelExport.h"

namespace KelXML_1_3 {

/// The categories and declared missing values of a variable. The order of the virtual operations is fixed.
///
/// The kind never changes: a numeric encoder holds numbers, a string encoder texts. Several threads may ask one
/// encoder that none of them changes.
class KEL_EXPORT IKelEncoder {
 public:
  static constexpr int kNumericKind = 2;
  static constexpr int kStringKind = 3;

  virtual ~IKelEncoder();
  [[nodiscard]] virtual int GetValueKind() const = 0;
  [[nodiscard]] virtual int GetValueCount() const = 0;
  /// Appends a category. A category that is there is ignored together with its label; a string encoder takes no
  /// number and the other way round; a numeric one ignores the missing mark and NaN.
  virtual void AddStringValue(const std::string& value, const std::string& label = std::string()) = 0;
  virtual void AddNumericValue(double value, const std::string& label = std::string()) = 0;
  /// The category's index as a double, -1.0 for none. A numeric encoder encodes the number that the whole text is; a
  /// string encoder knows no number. Declared missing values don't affect encoding.
  [[nodiscard]] virtual double EncodeString(const std::string& value) const = 0;
  [[nodiscard]] virtual double EncodeNumber(double value) const = 0;
  /// Whether the value was declared missing (not whether it is null).
  [[nodiscard]] virtual bool IsMissingString(const std::string& value) const = 0;
  [[nodiscard]] virtual bool IsMissingNumber(double value) const = 0;
  /// The category at an index, as text (a number: its shortest text) or as number (a text: the number that it is,
  /// else the missing mark). Empty text or the missing mark outside the range.
  [[nodiscard]] virtual std::string GetStringValueAt(int index) const = 0;
  [[nodiscard]] virtual double GetNumericValueAt(int index) const = 0;
  virtual void SetBinLabels(const std::vector<std::string>& labels) = 0;
  virtual void AddMissingNumber(double value, const std::string& label) = 0;
  virtual void AddMissingString(const std::string& value, const std::string& label) = 0;
  /// Values in the closed range are declared invalid.
  virtual void SetInvalidRange(double low, double high) = 0;
  /// The labels beside the categories; an empty entry is no label, and the list may be shorter than the categories.
  [[nodiscard]] virtual const std::vector<std::string>* GetValueLabels() const = 0;

  // Behind the fixed operations.
  /// False, and the arguments unchanged, if no range was set.
  virtual bool GetInvalidRange(double& low, double& high) const = 0;
  [[nodiscard]] virtual const std::vector<std::string>& GetBinLabels() const = 0;
  [[nodiscard]] virtual int GetMissingCount() const = 0;
  /// The declared missing value at an index, as text, and its label.
  [[nodiscard]] virtual std::string GetMissingStringAt(int index) const = 0;
  [[nodiscard]] virtual std::string GetMissingLabelAt(int index) const = 0;
};

}  // namespace KelXML_1_3
