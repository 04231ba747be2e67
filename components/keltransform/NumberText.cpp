#include "components/keltransform/NumberText.h"

#include <charconv>
#include <cmath>

namespace KelTransformNS {
namespace {

// Between these magnitudes people expect plain digits.
bool IsPlain(double number) {
  const double magnitude = std::fabs(number);
  return magnitude >= 1e-5 && magnitude < 1e16;
}

}  // namespace

std::string_view ShortestText(double number, NumberBuffer& buffer) noexcept {
  if (number == 0.0) number = 0.0;  // drops the sign
  char* const begin = buffer.data();
  char* const end = begin + buffer.size() - 1;
  char* const last = IsPlain(number) ? std::to_chars(begin, end, number, std::chars_format::fixed).ptr
                                     : std::to_chars(begin, end, number).ptr;
  *last = '\0';
  return {begin, static_cast<std::size_t>(last - begin)};
}

}  // namespace KelTransformNS
