#include "tools/kelscore/LoadedModel.h"

#include <algorithm>
#include <cerrno>
#include <filesystem>
#include <fstream>
#include <optional>
#include <sstream>
#include <system_error>
#include <utility>

#include "scoring/common/KelDiagnostics.h"
#include "scoring/common/KelScoringConst.h"
#include "scoring/common/KelVarList.h"
#include "tools/kelscore/Failure.h"
#include "tools/kelscore/ModelSettings.h"
#include "tools/kelscore/PlugInCall.h"
#include "tools/kelscore/PmmlDocument.h"
#include "tools/kelscore/StatusText.h"

namespace kelscore {
namespace {

using KelCommon_1_3::KelDiagnostics;
using KelCommon_1_3::KelStatus;
using KelCommon_1_3::ValueRecord;
using KelScoring_20::ScoringModel;
namespace KelScoringConst = KelScoring_20::KelScoringConst;

std::string NameOf(const ModelArguments& arguments) {
  if (!arguments.path.empty()) return arguments.path;
  if (!arguments.members.empty()) return "ensemble of " + std::to_string(arguments.members.size());
  if (!arguments.splitMembers.empty()) return "split model of " + std::to_string(arguments.splitMembers.size());
  return arguments.settingsFile;
}

void CheckFile(const std::string& path) {
  std::error_code ignored;
  if (std::filesystem::is_directory(path, ignored))
    throw Failure(kNoModel, path + ": is a folder, not a PMML document");
}

std::stringstream ReadDocument(const std::string& path) {
  CheckFile(path);
  std::ifstream file(path, std::ios::binary);
  if (!file)
    throw Failure(kNoModel, path + ": no model: the file can't be opened: " + std::generic_category().message(errno));
  std::stringstream document;
  if (file.peek() != std::ifstream::traits_type::eof()) document << file.rdbuf();
  return document;
}

// The first document that knows a field says how it is read.
void AddNewFields(std::vector<ModelField> more, std::vector<ModelField>& fields) {
  for (ModelField& field : more) {
    const auto known =
        std::find_if(fields.begin(), fields.end(), [&field](const ModelField& f) { return f.name == field.name; });
    if (known == fields.end()) {
      fields.push_back(std::move(field));
    } else {
      known->needed = known->needed || field.needed;
    }
  }
}

std::vector<std::string> Categories(const KelXML_1_3::IKelVariable& variable) {
  std::vector<std::string> categories;
  if (variable.GetMeasureLevel() == KelXML_1_3::kContinuous) return categories;
  const KelXML_1_3::IKelEncoder& encoder = *variable.GetEncoder();
  for (int i = 0; i < encoder.GetValueCount(); ++i) categories.push_back(encoder.GetStringValueAt(i));
  return categories;
}

}  // namespace

LoadedModel::LoadedModel(const ModelArguments& arguments, Console& console)
    : fConsole(console),
      fArguments(arguments),
      fName(NameOf(arguments)),
      fSettings(MakeSettings(arguments)),
      fModelElements(ModelElements(fSettings)),
      fMembers(FindMembers(arguments, fSettings, console)) {
  if (arguments.splitMembers.empty()) WarnOfIdentifiers(fMembers, console);
  for (const std::string& path : Paths()) CheckFile(path);
  KelDiagnostics::Clear();
  std::string thrown;
  if (!CallPlugIn([this] { Create(); }, thrown)) throw Failure(kNoModel, fName + ": no model: " + thrown);
  const KelStatus status = fFactory.GetStatus();
  fModel.reset(fFactory.Detach());
  if (!fModel) Fail(status);
  if (!status.IsOK()) console.Tell(fName + ": warning: " + StatusText(status));
  ReadFirstDocument();
}

void LoadedModel::ReadFirstDocument() {
  const std::vector<std::string> paths = Paths();
  if (paths.empty()) return;
  std::ifstream document(paths.front(), std::ios::binary);
  fDataFields = ReadDataFields(document);
}

std::vector<std::string> LoadedModel::Paths() const {
  std::vector<std::string> paths;
  for (const Member& member : fMembers) paths.push_back(member.path);
  if (paths.empty() && !fArguments.path.empty()) paths.push_back(fArguments.path);
  if (paths.empty()) fSettings.GetSettingValByName(KelScoringConst::kSettingScoringPmmlFiles, paths);
  return paths;
}

void LoadedModel::Create() {
  const bool hasMembers = !fArguments.members.empty() || !fArguments.splitMembers.empty();
  if (!fArguments.path.empty()) {
    fFactory.CreateScoringModel(fSettings, fArguments.path);
  } else if (hasMembers) {
    CreateFromStreams();
  } else {
    fFactory.CreateScoringModel(fSettings);
  }
}

// By way of files a single one would be no ensemble.
void LoadedModel::CreateFromStreams() {
  const bool isSplit = !fArguments.splitMembers.empty();
  AddMembers(fArguments, isSplit ? FieldsOfDocuments() : std::vector<ModelField>(), fSettings, fConsole);
  std::vector<std::stringstream> documents;
  for (const std::string& path : Paths()) documents.push_back(ReadDocument(path));
  std::vector<std::stringstream*> streams;
  streams.reserve(documents.size());
  for (std::stringstream& document : documents) streams.push_back(&document);
  fFactory.CreateScoringModel(fSettings, streams);
}

// A composite doesn't say which of its members fails: made one by one, that member fails again.
void LoadedModel::Fail(const KelStatus& status) const {
  const std::string reason = FailureReason();
  if (fArguments.path.empty()) {
    for (const std::string& path : Paths()) {
      if (path.empty()) continue;
      ModelArguments member = fArguments;
      member.path = path;
      member.members.clear();
      member.splitMembers.clear();
      const LoadedModel works(member, fConsole);
    }
  }
  throw Failure(kNoModel, fName + ": no model: " + StatusText(status) + reason);
}

// Where the XML is at fault, only a pass of our own can say the place; what the library says then is a consequence.
std::string LoadedModel::FailureReason() const {
  const std::string told = KelDiagnostics::Last();
  KelDiagnostics::Clear();
  std::ifstream document(fArguments.path, std::ios::binary);
  const std::optional<std::string> fault = document ? FindXmlFault(document) : std::nullopt;
  const std::string reason = fault ? KelDiagnostics::Last() : told;
  return (fault ? ": not well-formed XML, " + *fault : "") + (reason.empty() ? "" : ": " + reason);
}

std::vector<ModelField> LoadedModel::Fields() const {
  std::vector<ModelField> fields =
      fMembers.empty() ? ModelFields(fModel->GetVarList(), fDataFields) : FieldsOfDocuments();
  for (const std::string& name : fArguments.splitFields) AddNewFields({{name, FieldKind::kText, true}}, fields);
  return fields;
}

// The model tells the variables of its first member only, or merges them without what a table needs.
std::vector<ModelField> LoadedModel::FieldsOfDocuments() const {
  std::vector<ModelField> fields;
  for (const ModelDocument& document : ReadDocuments())
    AddNewFields(ModelFields(document.variables, document.dataFields), fields);
  return fields;
}

std::vector<std::string> LoadedModel::TargetCategories() const {
  std::vector<std::string> categories;
  const KelXML_1_3::KelVarList& variables = fModel->GetVarList();
  for (int i = 0; i < variables.Size() && categories.empty(); ++i) {
    const KelXML_1_3::IKelVariable& variable = *variables.GetVarAt(i);
    if (RoleOf(variable, fDataFields) == KelXML_1_3::kRoleTarget) categories = Categories(variable);
  }
  return categories;
}

std::vector<ModelDocument> LoadedModel::ReadDocuments() const {
  std::vector<ModelDocument> documents;
  for (const std::string& path : Paths()) documents.push_back(ReadModelDocument(path, fModelElements));
  return documents;
}

ValueRecord AnnouncedOutputs(const LoadedModel& model) {
  ValueRecord outputs;
  KelStatus status;
  std::string reason;
  const bool returned = CallPlugIn([&] { status = model.Model().Scorable(outputs); }, reason);
  if (returned && !status.IsError()) return outputs;
  throw Failure(kNoModel,
                model.Name() + ": the model can't tell its outputs: " + (returned ? StatusText(status) : reason));
}

}  // namespace kelscore
