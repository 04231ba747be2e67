#pragma once

#include <cstddef>
#include <cstdint>

#include "plugins/torvane/models/DenseRows.h"
#include "plugins/torvane/models/SparseRows.h"

namespace Torvane {

/// A function that compares two vectors x and y; gamma, coef0 and degree are its parameters.
struct Kernel {
  enum class Kind : std::uint8_t {
    kLinear,       // <x, y>
    kPolynomial,   // (gamma <x, y> + coef0) ^ degree
    kRadialBasis,  // exp(-gamma |x - y|^2)
    kSigmoid,      // tanh(gamma <x, y> + coef0)
  };

  /// Turns products, or for the radial basis function squared distances, into values in place.
  void Apply(double* figures, std::size_t count) const noexcept;

  Kind kind = Kind::kLinear;
  double gamma = 1.0;
  double coef0 = 1.0;
  double degree = 1.0;
};

/// The vectors that records are compared with by a kernel. Vectors that are almost empty stay so. Immutable.
class KernelVectors {
 public:
  KernelVectors() = default;
  KernelVectors(const Kernel& kernel, SparseRows vectors, std::size_t fieldCount);

  [[nodiscard]] std::size_t Count() const noexcept { return fIsSparse ? fSparse.RowCount() : fDense.RowCount(); }
  [[nodiscard]] std::size_t ScratchCount() const noexcept { return fIsSparse ? 2 * fFieldCount : 0; }
  /// values[i] = the kernel of the finite vector `x` and vector i.
  void Evaluate(const double* x, double* scratch, double* values) const noexcept;

 private:
  Kernel fKernel;
  std::size_t fFieldCount = 0;
  bool fIsSparse = false;
  DenseRows fDense;
  SparseRows fSparse;
};

}  // namespace Torvane
