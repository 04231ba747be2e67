#include "plugins/torvane/models/KernelVectors.h"

#include <cmath>
#include <utility>

namespace Torvane {
namespace {

// Below one number that isn't 0 in so many, lists of those are faster than sums over all.
constexpr std::size_t kSparseness = 16;

double Power(double base, double degree) noexcept {
  if (degree == 1.0) return base;
  return degree == 2.0 ? base * base : std::pow(base, degree);
}

}  // namespace

void Kernel::Apply(double* figures, std::size_t count) const noexcept {
  double* const end = figures + count;
  switch (kind) {
    case Kind::kLinear:
      return;
    case Kind::kPolynomial:
      for (double* figure = figures; figure != end; ++figure) *figure = Power(gamma * *figure + coef0, degree);
      return;
    case Kind::kRadialBasis:
      for (double* figure = figures; figure != end; ++figure) *figure = std::exp(-gamma * *figure);
      return;
    case Kind::kSigmoid:
      for (double* figure = figures; figure != end; ++figure) *figure = std::tanh(gamma * *figure + coef0);
      return;
  }
}

KernelVectors::KernelVectors(const Kernel& kernel, SparseRows vectors, std::size_t fieldCount)
    : fKernel(kernel),
      fFieldCount(fieldCount),
      fIsSparse(vectors.CellCount() <= fieldCount * vectors.RowCount() / kSparseness) {
  if (fIsSparse) {
    fSparse = std::move(vectors);
    fSparse.ShrinkToFit();
  } else {
    fDense = DenseRows(vectors.Expand(fieldCount), fieldCount);
  }
}

void KernelVectors::Evaluate(const double* x, double* scratch, double* values) const noexcept {
  const bool isOfDistances = fKernel.kind == Kernel::Kind::kRadialBasis;
  if (fIsSparse && isOfDistances) {
    fSparse.SquaredDistances(x, fFieldCount, scratch, values);
  } else if (fIsSparse) {
    fSparse.Products(x, values);
  } else if (isOfDistances) {
    fDense.SquaredDistances(x, values);
  } else {
    fDense.Products(x, values);
  }
  fKernel.Apply(values, Count());
}

}  // namespace Torvane
