#pragma once

#include <limits>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "scoring/common/XMLElement.h"

namespace KelScoring_20 {

/// What one field of a dictionary declares.
struct Field {
  static constexpr double kLowest = std::numeric_limits<double>::lowest();
  static constexpr double kHighest = std::numeric_limits<double>::max();

  [[nodiscard]] bool HasInvalidRange() const { return invalidLow != kLowest || invalidHigh != kHighest; }

  std::string name;
  std::string label;
  bool isCategorical = true;
  bool isOrdinal = false;
  bool isNumeric = true;  ///< values are read as numbers
  int storageType = 0;
  std::optional<std::string> flagTrueText;         ///< the true category of a flag, as text
  std::optional<double> flagTrueNumber;            ///< the same as a number, if it is one
  std::unique_ptr<KelXML_1_3::XMLElement> format;  ///< how to display values, may be null
  std::vector<double> validNumbers;                ///< categories and missing values of a numeric field
  std::vector<double> missingNumbers;
  std::vector<std::string> validStrings;  ///< the same of any other field
  std::vector<std::string> missingStrings;
  std::vector<std::string> validLabels;  ///< without empty ones, so they may be fewer than the values
  std::vector<std::string> missingLabels;
  double intervalLow = kLowest;
  double intervalHigh = kHighest;
  double invalidLow = kLowest;
  double invalidHigh = kHighest;
};

}  // namespace KelScoring_20
