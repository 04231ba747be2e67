#pragma once

#include <string>
#include <utility>
#include <variant>
#include <vector>

/// What one would write by hand for one model: the limits that the library is measured against.
namespace HandWritten {

struct NamedVariant {
  std::string name;
  std::variant<std::monostate, double, std::string> value;
};
using NamedRecord = std::vector<NamedVariant>;

/// Fields remembered by position; each access checks that the name at the position is still the one.
class Binding {
 public:
  explicit Binding(std::vector<std::string> names) : fNames(std::move(names)), fPositions(fNames.size(), 0) {}
  NamedVariant& At(NamedRecord& record, std::size_t field) {
    const std::size_t position = fPositions[field];
    if (position < record.size() && record[position].name == fNames[field]) return record[position];
    return Rebind(record, field);
  }
  [[nodiscard]] std::size_t Size() const noexcept { return fNames.size(); }

 private:
  NamedVariant& Rebind(NamedRecord& record, std::size_t field);

  std::vector<std::string> fNames;
  std::vector<std::size_t> fPositions;
};

NamedRecord MakeRecord(const std::vector<std::string>& names);

/// The models of `Documents`, on named variants and on plain arrays.
struct Linear {
  explicit Linear(int terms);
  void Score(NamedRecord& in, NamedRecord& out);
  [[nodiscard]] double Score(const double* x) const;

  std::vector<double> coefficients;
  Binding inputs;
  Binding outputs;
};

struct Multinomial {
  explicit Multinomial(int terms);
  /// Fills "prediction", "probability" and one output for each category.
  void Score(NamedRecord& in, NamedRecord& out);
  void Score(const double* x, double* probabilities) const;

  std::vector<double> coefficients[3];
  Binding inputs;
  Binding outputs;
  std::vector<double> scratch;
};

struct Tree20 {
  Tree20();
  void Score(NamedRecord& in, NamedRecord& out);
  [[nodiscard]] static double Score(const double* x);

  Binding inputs;
  Binding outputs;
};

}  // namespace HandWritten
