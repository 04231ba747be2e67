#pragma once

#include <cstddef>
#include <vector>

#include "fuzz/Markup.h"
#include "fuzz/Random.h"

namespace KelFuzz {

/// Changes documents so that many of them stay near to ones that can be scored: elements and attributes are deleted,
/// doubled, swapped, and taken over from other documents, numbers go to extremes, words become other words of the same
/// attribute. The same calls on the same seed give the same documents.
class Mutator {
 public:
  explicit Mutator(Random random) : fRandom(random) {}

  /// A document whose elements and words go into others.
  void AddDonor(Markup document);
  [[nodiscard]] std::size_t DonorCount() const noexcept { return fDonors.size(); }

  /// Goes on with other numbers.
  void Restart(Random random) noexcept { fRandom = random; }

  /// One to six changes.
  void Mutate(Markup& root);

 private:
  using Elements = std::vector<Markup*>;

  void MutateOnce(Markup& root);
  void ChangeAttribute(Elements& elements);
  void DeleteAttribute(Elements& elements);
  void TakeAttribute(Elements& elements);
  void ChangeText(Elements& elements);
  void DeleteChild(Elements& elements);
  void DoubleChild(Elements& elements);
  void SwapElements(Elements& elements);
  void TakeElement(Elements& elements);
  void InsertElement(Elements& elements);
  void Rename(Elements& elements);
  void Nest(Elements& elements);

  std::string ChangedValue(Elements& elements, const std::string& attribute, const std::string& value);
  std::string WordOf(Elements& elements, const std::string& attribute);
  Markup* PickNamed(Elements& elements, const std::string& name);
  Markup* PickParent(Elements& elements);
  Elements& DonorElements(Elements& own);

  struct Donor {
    Markup root;
    Elements elements;
  };

  Random fRandom;
  std::vector<Donor> fDonors;
};

}  // namespace KelFuzz
