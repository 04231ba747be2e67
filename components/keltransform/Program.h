#pragma once

#include <cstdint>
#include <memory>
#include <vector>

#include "components/keltransform/Cell.h"
#include "scoring/common/KelExport.h"

namespace KelTransformNS {

/// Compiled expressions: flat code over the slots of a frame. Immutable and shared by threads; a run allocates
/// nothing. The text pool that it was compiled with must outlive it.
class KEL_EXPORT Program {
 public:
  Program();
  Program(Program&&) noexcept;
  Program& operator=(Program&&) noexcept;
  ~Program();

  /// Computes everything, what is used before what uses it.
  void Run(Frame frame) const noexcept;
  [[nodiscard]] bool IsEmpty() const noexcept;

  /// The part of the program that computes the slots marked in `needed` (one mark per slot of the frame). Marks the
  /// slots that this part reads as well, so that the caller sees which inputs it must fill.
  [[nodiscard]] Program Select(std::vector<bool>& needed) const;

 private:
  friend class CodeBuilder;
  struct Code;
  std::unique_ptr<Code> fCode;
};

}  // namespace KelTransformNS
