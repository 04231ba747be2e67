#include "plugins/torvane/models/ParameterSums.h"

#include <cmath>
#include <utility>

namespace Torvane {

using KelTransformNS::Cell;

namespace {

// The value of one factor; false if the record doesn't tell it. A category is known where it isn't missing.
bool Value(const ParameterFactor& factor, const Cell& cell, double& value) noexcept {
  switch (factor.kind) {
    case ParameterFactor::kIsText:
      value = cell.state == Cell::kText && cell.textId == factor.index ? 1.0 : 0.0;
      return cell.state != Cell::kMissing;
    case ParameterFactor::kIsNumber:
      value = cell.state == Cell::kNumber && cell.number == factor.number ? 1.0 : 0.0;
      return cell.state != Cell::kMissing;
    case ParameterFactor::kContrast:
      return factor.contrast->Find(cell, factor.index, value);
    case ParameterFactor::kNumber:
      value = cell.number;
      break;
    case ParameterFactor::kSquare:
      value = cell.number * cell.number;
      break;
    case ParameterFactor::kPower:
      value = std::pow(cell.number, factor.number);
      break;
  }
  return cell.state == Cell::kNumber;
}

}  // namespace

const Contrast* ParameterSums::Own(std::unique_ptr<const Contrast> contrast) {
  return fContrasts.emplace_back(std::move(contrast)).get();
}

ParameterSums::Factors ParameterSums::AddFactors(const std::vector<ParameterFactor>& factors) {
  const auto first = static_cast<std::uint32_t>(fFactors.size());
  fFactors.insert(fFactors.end(), factors.begin(), factors.end());
  return {first, static_cast<std::uint32_t>(fFactors.size())};
}

void ParameterSums::AddTerm(double beta, Factors factors, Factors more) {
  const std::uint32_t count = (factors.end - factors.first) + (more.end - more.first);
  if (count == 0) {
    fTerms.push_back({beta, 0, 0, Term::kConstant});
    return;
  }
  const ParameterFactor& factor = fFactors[factors.first < factors.end ? factors.first : more.first];
  if (count == 1 && factor.kind == ParameterFactor::kNumber) {
    fTerms.push_back({beta, factor.slot, 0, Term::kNumber});
  } else if (count == 1 && factor.kind == ParameterFactor::kIsText) {
    fTerms.push_back({beta, factor.slot, factor.index, Term::kIsText});
  } else {
    fTerms.push_back({beta, static_cast<std::uint32_t>(fProducts.size()), 0, Term::kProduct});
    fProducts.push_back({factors, more});
  }
}

std::uint32_t ParameterSums::StartSum() {
  fFirstTerms.push_back(static_cast<std::uint32_t>(fTerms.size()));
  return static_cast<std::uint32_t>(fFirstTerms.size() - 1);
}

void ParameterSums::Finish() {
  StartSum();
  if (fProducts.empty()) fFactors.clear();
  fTerms.shrink_to_fit();
  fProducts.shrink_to_fit();
  fFactors.shrink_to_fit();
}

bool ParameterSums::Evaluate(std::uint32_t sum, const Cell* frame, double& result) const noexcept {
  double y = 0.0;
  const Term* const end = fTerms.data() + fFirstTerms[sum + 1];
  for (const Term* term = fTerms.data() + fFirstTerms[sum]; term != end; ++term) {
    if (term->kind == Term::kNumber) {
      const Cell& cell = frame[term->slot];
      if (cell.state != Cell::kNumber) return false;
      y += term->beta * cell.number;
    } else if (term->kind == Term::kIsText) {
      const Cell& cell = frame[term->slot];
      if (cell.state == Cell::kMissing) return false;
      if (cell.textId == term->text) y += term->beta;
    } else if (term->kind == Term::kConstant) {
      y += term->beta;
    } else {
      double value = 1.0;
      if (!Multiply(fProducts[term->slot], frame, value)) return false;
      y += term->beta * value;
    }
  }
  result = y;
  return true;
}

bool ParameterSums::Multiply(const Product& product, const Cell* frame, double& value) const noexcept {
  return Multiply(product.factors, frame, value) && Multiply(product.more, frame, value);
}

bool ParameterSums::Multiply(Factors factors, const Cell* frame, double& value) const noexcept {
  for (std::uint32_t i = factors.first; i < factors.end; ++i) {
    double number = 0.0;
    if (!Torvane::Value(fFactors[i], frame[fFactors[i].slot], number)) return false;
    value *= number;
  }
  return true;
}

}  // namespace Torvane
