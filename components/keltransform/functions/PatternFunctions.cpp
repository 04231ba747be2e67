#include "components/keltransform/functions/PatternFunctions.h"

#include <new>

#include "components/keltransform/functions/Evaluation.h"
#include "components/keltransform/text/Utf16.h"

namespace KelTransformNS {
namespace {

using Outcome = RegularExpression::Outcome;

// The texts of one call, whose memory stays for the next record.
struct Buffers {
  std::u16string text;
  std::u16string replacement;
  std::u16string result;
  std::string made;
};

Buffers& BuffersOfThisThread() {
  thread_local Buffers buffers;
  return buffers;
}

// False if the text is too long for a regular expression.
bool Take(const Cell& cell, std::u16string& text) {
  NumberBuffer buffer;
  const std::string_view from = TextOf(cell, buffer);
  if (from.size() > MadeTexts::kMaxBytes) return false;
  ToUtf16(from, text);
  return true;
}

Cell FindMatch(const RegularExpression& expression, const Cell& text, Buffers& buffers) {
  if (!Take(text, buffers.text)) return Cell::Invalid();
  const Outcome outcome = expression.Find(buffers.text);
  if (outcome == Outcome::kGivenUp) return Cell::Invalid();
  return Cell::Number(outcome == Outcome::kFound ? 1.0 : 0.0);
}

Cell MakeReplaced(const RegularExpression& expression, const Operands& operands, const TextPool& pool,
                  Buffers& buffers) {
  if (!Take(operands[0], buffers.text) || !Take(operands[1], buffers.replacement)) return Cell::Invalid();
  switch (expression.Replace(buffers.text, buffers.replacement, buffers.result)) {
    case Outcome::kNotFound:
      return operands[0];
    case Outcome::kGivenUp:
      return Cell::Invalid();
    case Outcome::kFound:
      break;
  }
  ToUtf8(buffers.result, buffers.made);
  return MadeTexts::OfThisThread().Make(pool, [&](TextSink& sink) {
    sink.Append(buffers.made);
    return true;
  });
}

}  // namespace

Cell Matches(const RegularExpression& expression, const Operands& operands) noexcept {
  if (operands[0].state != Cell::kText) return WithoutValues(operands);
  try {
    return FindMatch(expression, operands[0], BuffersOfThisThread());
  } catch (const std::bad_alloc&) {
    return Cell::Invalid();
  }
}

Cell ReplaceMatches(const RegularExpression& expression, const Operands& operands, const TextPool& pool) noexcept {
  if (operands[0].state != Cell::kText || operands[1].state != Cell::kText) return WithoutValues(operands);
  try {
    return MakeReplaced(expression, operands, pool, BuffersOfThisThread());
  } catch (const std::bad_alloc&) {
    return Cell::Invalid();
  }
}

}  // namespace KelTransformNS
