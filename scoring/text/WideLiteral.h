#pragma once

#include <cstddef>
#include <xercesc/util/XercesDefs.hpp>

namespace KelScoring_20 {

/// A name of the vocabulary as the wide text that the XML parser compares with, made when the program is compiled.
template <std::size_t N>
struct WideLiteral {
  consteval WideLiteral(const char (&literal)[N]) {  // plain ASCII, as all names of the vocabulary are
    for (std::size_t i = 0; i < N; ++i) text[i] = static_cast<XMLCh>(literal[i]);
  }
  XMLCh text[N]{};
};

}  // namespace KelScoring_20
