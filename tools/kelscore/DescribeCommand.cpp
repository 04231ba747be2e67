#include "tools/kelscore/DescribeCommand.h"

#include <string>

#include "tools/kelscore/DescriptionFormats.h"
#include "tools/kelscore/Files.h"
#include "tools/kelscore/LoadedModel.h"
#include "tools/kelscore/ModelDescription.h"

namespace kelscore {

ExitStatus RunDescribe(const DescribeArguments& arguments, Console& console) {
  const LoadedModel model(arguments.model, console);
  const ModelDescription description = Describe(model);
  OutputFile(std::string(kStandardStream)).Write(arguments.json ? ToJson(description) : ToText(description));
  return kSuccess;
}

}  // namespace kelscore
