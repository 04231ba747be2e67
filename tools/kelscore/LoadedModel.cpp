#include "tools/kelscore/LoadedModel.h"

#include <exception>
#include <filesystem>
#include <fstream>
#include <new>
#include <optional>

#include "scoring/common/KelDiagnostics.h"
#include "scoring/common/KelVarList.h"
#include "scoring/common/ValueRecord.h"
#include "tools/kelscore/Failure.h"
#include "tools/kelscore/ModelSettings.h"
#include "tools/kelscore/PmmlDocument.h"
#include "tools/kelscore/StatusText.h"

namespace kelscore {

using KelCommon_1_3::KelDiagnostics;
using KelCommon_1_3::KelStatus;
using KelCommon_1_3::ValueRecord;
using KelScoring_20::ScoringModel;

LoadedModel::LoadedModel(const ModelArguments& arguments, Console& console) : fPath(arguments.path) {
  if (std::filesystem::is_directory(fPath)) throw Failure(kNoModel, fPath + ": is a folder, not a PMML document");
  Create(arguments);
  const KelStatus status = fFactory.GetStatus();
  fModel.reset(fFactory.Detach());
  if (!fModel) throw Failure(kNoModel, fPath + ": no model: " + StatusText(status) + FailureReason());
  if (!status.IsOK()) console.Tell(fPath + ": warning: " + StatusText(status));
  std::ifstream document(fPath, std::ios::binary);
  fDataFields = ReadDataTypes(document);
}

// A plug-in may throw whatever it likes.
void LoadedModel::Create(const ModelArguments& arguments) {
  KelDiagnostics::Clear();
  KelXML_1_3::KelSettings settings = MakeSettings(arguments);
  try {
    fFactory.CreateScoringModel(settings, fPath);
  } catch (const std::bad_alloc&) {
    throw;
  } catch (const std::exception& error) {
    throw Failure(kNoModel, fPath + ": no model: the plug-in threw an exception: " + error.what());
  } catch (...) {
    throw Failure(kNoModel, fPath + ": no model: the plug-in threw an exception");
  }
}

// The library tells a status and a plug-in a reason; where the XML is at fault, only a pass of our own can say.
std::string LoadedModel::FailureReason() const {
  std::string reason = KelDiagnostics::Last();
  std::ifstream document(fPath, std::ios::binary);
  const std::optional<std::string> fault = document ? FindXmlFault(document) : std::nullopt;
  if (reason.empty()) reason = KelDiagnostics::Last();
  return (fault ? ": not well-formed XML, " + *fault : "") + (reason.empty() ? "" : ": " + reason);
}

ValueRecord AnnouncedOutputs(const LoadedModel& model) {
  ValueRecord outputs;
  const KelStatus status = model.Model().Scorable(outputs);
  if (status.IsError())
    throw Failure(kNoModel, model.Path() + ": the model can't tell its outputs: " + StatusText(status));
  return outputs;
}

std::vector<std::string> TargetCategories(const ScoringModel& model) {
  std::vector<std::string> categories;
  const KelXML_1_3::IKelVariable* target = model.GetVarList().GetTargetRespVariable();
  if (!target || target->GetMeasureLevel() == KelXML_1_3::kContinuous) return categories;
  for (int i = 0; i < target->GetEncoder()->GetValueCount(); ++i)
    categories.push_back(target->GetEncoder()->GetStringValueAt(i));
  return categories;
}

}  // namespace kelscore
