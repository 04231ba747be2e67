#include "components/keltransform/text/Utf16.h"

#include <cstdint>
#include <unicode/uchar.h>
#include <unicode/ustring.h>

namespace KelTransformNS {
namespace {

constexpr UChar32 kReplacement = 0xFFFD;

std::int32_t SizeOf(std::size_t size) noexcept { return static_cast<std::int32_t>(size); }

}  // namespace

void ToUtf16(std::string_view text, std::u16string& result) {
  result.resize(text.size());  // no character takes more units than bytes
  UErrorCode code = U_ZERO_ERROR;
  std::int32_t size = 0;
  u_strFromUTF8WithSub(result.data(), SizeOf(result.size()), &size, text.data(), SizeOf(text.size()), kReplacement,
                       nullptr, &code);
  result.resize(U_SUCCESS(code) != 0 ? static_cast<std::size_t>(size) : 0);
}

void ToUtf8(std::u16string_view text, std::string& result) {
  constexpr std::size_t kMostBytes = 3;  // of one unit
  result.resize(kMostBytes * text.size());
  UErrorCode code = U_ZERO_ERROR;
  std::int32_t size = 0;
  u_strToUTF8WithSub(result.data(), SizeOf(result.size()), &size, text.data(), SizeOf(text.size()), kReplacement,
                     nullptr, &code);
  result.resize(U_SUCCESS(code) != 0 ? static_cast<std::size_t>(size) : 0);
}

void AppendFolded(std::u16string_view text, std::u16string& result) {
  constexpr std::size_t kMostUnits = 3;  // of one unit
  const std::size_t before = result.size();
  result.resize(before + kMostUnits * text.size());
  UErrorCode code = U_ZERO_ERROR;
  const std::int32_t size = u_strFoldCase(result.data() + before, SizeOf(result.size() - before), text.data(),
                                          SizeOf(text.size()), U_FOLD_CASE_DEFAULT, &code);
  result.resize(before + (U_SUCCESS(code) != 0 ? static_cast<std::size_t>(size) : 0));
}

}  // namespace KelTransformNS
