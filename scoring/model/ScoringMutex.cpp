#include "scoring/model/ScoringMutex.h"

namespace KelScoring_20 {

// Initialised at compile time, so that it is there for static objects of a host, too.
constinit ScoringMutex ScoringMutexContainer::fMutex;

ScoringMutex* ScoringMutexContainer::GetMutex() noexcept { return &fMutex; }

}  // namespace KelScoring_20
