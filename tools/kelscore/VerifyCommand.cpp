#include "tools/kelscore/VerifyCommand.h"

#include <optional>
#include <string>

#include "tools/kelscore/Files.h"
#include "tools/kelscore/LoadedModel.h"
#include "tools/kelscore/Verification.h"
#include "tools/kelscore/VerificationFormats.h"
#include "tools/kelscore/Verifier.h"

namespace kelscore {

ExitStatus RunVerify(const VerifyArguments& arguments, Console& console) {
  const LoadedModel model(arguments.model, console);
  const std::string& path = arguments.model.path;
  const std::optional<Verification> verification = ReadVerification(path, model.ReadDocuments().front().element);
  if (!verification) throw Failure(kInputOutputFailed, path + ": holds no verification rows (ModelVerification)");
  const VerificationReport report = Verify(model, *verification, console);
  OutputFile(std::string(kStandardStream)).Write(arguments.json ? ToJson(report) : ToText(report));
  return report.differing.empty() ? kSuccess : kSomeRowsFailed;
}

}  // namespace kelscore
