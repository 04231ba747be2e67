#include "benchmarks/HandWritten.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>

#include "benchmarks/Documents.h"

namespace HandWritten {
namespace {

const char* const kCategories[] = {"low", "middle", "high"};

std::vector<std::string> FieldNames(int count) {
  std::vector<std::string> names;
  for (int i = 0; i < count; ++i) names.push_back(Documents::FieldName(i));
  return names;
}

std::vector<double> Coefficients(int terms, int table) {
  std::vector<double> coefficients;
  for (int i = 0; i < terms; ++i) coefficients.push_back(Documents::Coefficient(i, table));
  return coefficients;
}

}  // namespace

NamedVariant& Binding::Rebind(NamedRecord& record, std::size_t field) {
  for (std::size_t i = 0; i < record.size(); ++i) {
    if (record[i].name != fNames[field]) continue;
    fPositions[field] = i;
    return record[i];
  }
  std::abort();
}

NamedRecord MakeRecord(const std::vector<std::string>& names) {
  NamedRecord record;
  for (const std::string& name : names) record.push_back({name, {}});
  return record;
}

Linear::Linear(int terms) : coefficients(Coefficients(terms, 0)), inputs(FieldNames(terms)), outputs({"prediction"}) {}

void Linear::Score(NamedRecord& in, NamedRecord& out) {
  double sum = 1.0;
  bool missing = false;
  for (std::size_t i = 0; i < coefficients.size(); ++i) {
    if (const double* x = std::get_if<double>(&inputs.At(in, i).value)) {
      sum += coefficients[i] * *x;
    } else {
      missing = true;
    }
  }
  auto& prediction = outputs.At(out, 0).value;
  if (missing) {
    prediction = std::monostate();
  } else {
    prediction = sum;
  }
}

double Linear::Score(const double* x) const {
  double sum = 1.0;
  for (std::size_t i = 0; i < coefficients.size(); ++i) sum += coefficients[i] * x[i];
  return sum;
}

Multinomial::Multinomial(int terms)
    : coefficients{Coefficients(terms, 0), Coefficients(terms, 1), Coefficients(terms, 2)},
      inputs(FieldNames(terms)),
      outputs({"prediction", "probability", "low", "middle", "high"}),
      scratch(static_cast<std::size_t>(terms)) {}

void Multinomial::Score(const double* x, double* probabilities) const {
  double highest = -HUGE_VAL;
  for (int table = 0; table < 3; ++table) {
    double sum = 1.0;
    for (std::size_t i = 0; i < coefficients[table].size(); ++i) sum += coefficients[table][i] * x[i];
    probabilities[table] = sum;
    highest = std::max(highest, sum);
  }
  double total = 0.0;
  for (int table = 0; table < 3; ++table) total += probabilities[table] = std::exp(probabilities[table] - highest);
  for (int table = 0; table < 3; ++table) probabilities[table] /= total;
}

void Multinomial::Score(NamedRecord& in, NamedRecord& out) {
  for (std::size_t i = 0; i < scratch.size(); ++i) {
    const double* x = std::get_if<double>(&inputs.At(in, i).value);
    if (x == nullptr) return;
    scratch[i] = *x;
  }
  double probabilities[3];
  Score(scratch.data(), probabilities);
  const auto winner = std::max_element(probabilities, probabilities + 3) - probabilities;
  outputs.At(out, 0).value = kCategories[winner];
  outputs.At(out, 1).value = probabilities[winner];
  for (std::size_t i = 0; i < 3; ++i) outputs.At(out, 2 + i).value = probabilities[i];
}

Tree20::Tree20() : inputs(FieldNames(4)), outputs({"prediction"}) {}

double Tree20::Score(const double* x) {
  int node = 0;
  while (2 * node + 1 < 20) {
    const bool left = x[node % 4] <= node % 5 - 2;
    const int child = 2 * node + (left ? 1 : 2);
    if (child >= 20) return NAN;  // node 9 has one child
    node = child;
  }
  return node;
}

void Tree20::Score(NamedRecord& in, NamedRecord& out) {
  auto& prediction = outputs.At(out, 0).value;
  int node = 0;
  while (2 * node + 1 < 20) {
    const double* x = std::get_if<double>(&inputs.At(in, static_cast<std::size_t>(node % 4)).value);
    const int child = x == nullptr ? 20 : 2 * node + (*x <= node % 5 - 2 ? 1 : 2);
    if (child >= 20) {
      prediction = std::monostate();
      return;
    }
    node = child;
  }
  prediction = static_cast<double>(node);
}

}  // namespace HandWritten
