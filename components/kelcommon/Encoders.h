#pragma once

#include <memory>
#include <string>
#include <vector>

#include "components/kelcommon/LabelledList.h"
#include "scoring/common/IKelEncoder.h"

namespace KelXML_1_3 {

/// What encoders of all kinds share, and how variables copy them.
class BaseEncoder : public IKelEncoder {
 public:
  ~BaseEncoder() override;
  [[nodiscard]] virtual std::unique_ptr<BaseEncoder> Clone() const = 0;

  void SetBinLabels(const std::vector<std::string>& labels) override;
  [[nodiscard]] const std::vector<std::string>& GetBinLabels() const override;
  void SetInvalidRange(double low, double high) override;
  bool GetInvalidRange(double& low, double& high) const override;

 private:
  std::vector<std::string> fBinLabels;
  bool fHasInvalidRange = false;
  double fInvalidLow = 0.0;
  double fInvalidHigh = 0.0;
};

/// Categories and declared missing values of one type, `double` or `std::string`.
template <typename Entry>
class ListEncoder : public BaseEncoder {
 public:
  [[nodiscard]] int GetValueCount() const override;
  [[nodiscard]] std::string GetStringValueAt(int index) const override;
  [[nodiscard]] const std::vector<std::string>* GetValueLabels() const override;
  [[nodiscard]] int GetMissingCount() const override;
  [[nodiscard]] std::string GetMissingStringAt(int index) const override;
  [[nodiscard]] std::string GetMissingLabelAt(int index) const override;

 protected:
  LabelledList<Entry> fValues;
  LabelledList<Entry> fMissing;
};

/// The encoder of numbers: of a categorical variable with numeric categories, or of a continuous one, which has none.
/// A text that is asked about stands for the number that it is; one that is added is ignored.
class NumericEncoder : public ListEncoder<double> {
 public:
  [[nodiscard]] std::unique_ptr<BaseEncoder> Clone() const override;
  [[nodiscard]] int GetValueKind() const override;
  void AddStringValue(const std::string& value, const std::string& label) override;
  void AddNumericValue(double value, const std::string& label) override;
  [[nodiscard]] double EncodeString(const std::string& value) const override;
  [[nodiscard]] double EncodeNumber(double value) const override;
  [[nodiscard]] bool IsMissingString(const std::string& value) const override;
  [[nodiscard]] bool IsMissingNumber(double value) const override;
  [[nodiscard]] double GetNumericValueAt(int index) const override;
  void AddMissingNumber(double value, const std::string& label) override;
  void AddMissingString(const std::string& value, const std::string& label) override;
};

/// The encoder of texts. It knows no number and ignores one that is added.
class StringEncoder : public ListEncoder<std::string> {
 public:
  [[nodiscard]] std::unique_ptr<BaseEncoder> Clone() const override;
  [[nodiscard]] int GetValueKind() const override;
  void AddStringValue(const std::string& value, const std::string& label) override;
  void AddNumericValue(double value, const std::string& label) override;
  [[nodiscard]] double EncodeString(const std::string& value) const override;
  [[nodiscard]] double EncodeNumber(double value) const override;
  [[nodiscard]] bool IsMissingString(const std::string& value) const override;
  [[nodiscard]] bool IsMissingNumber(double value) const override;
  [[nodiscard]] double GetNumericValueAt(int index) const override;
  void AddMissingNumber(double value, const std::string& label) override;
  void AddMissingString(const std::string& value, const std::string& label) override;
};

}  // namespace KelXML_1_3
