#include "scoring/factory/ScoringFactory.h"

#include <sstream>
#include <xercesc/util/PlatformUtils.hpp>
#include <xercesc/util/XMLException.hpp>
#include <xercesc/util/XMLUni.hpp>

#include "scoring/common/KelDiagnostics.h"
#include "scoring/common/KelScoringConst.h"
#include "scoring/common/KelSettings.h"
#include "scoring/factory/CompositeCreation.h"
#include "scoring/factory/SoloModelCreation.h"
#include "scoring/model/ScoringModel.h"
#include "scoring/model/ScoringMutex.h"

namespace KelScoring_20 {

using KelCommon_1_3::KelDiagnostics;
using KelCommon_1_3::KelStatus;
using KelXML_1_3::KelSettings;
using xercesc::XMLPlatformUtils;
using namespace KelScoringConst;

namespace {

using Files = std::vector<std::string>;
using Streams = std::vector<std::stringstream*>;

std::unique_ptr<ScoringModel> Refuse(KelStatus& status, long code, const std::string& reason) {
  KelDiagnostics::Report(reason);
  status = KelStatus(code, false);
  return nullptr;
}

// One file wins over the ensemble. A status that an earlier call left stops it.
std::unique_ptr<ScoringModel> CreateFromOnlyFile(KelSettings& settings, const std::string& path, KelStatus& status) {
  if (path.empty()) return Refuse(status, kFilesOrModelIDsMissing, "\"scoring_pmmlFiles\" holds an empty file name");
  if (!status.IsOK()) {
    KelDiagnostics::Report("the factory still has the status of an earlier call, which Detach clears");
    return nullptr;
  }
  return CreateSoloModelFromFile(settings, path, status);
}

std::unique_ptr<ScoringModel> CreateFromFiles(KelSettings& settings, const Files& files, KelStatus& status) {
  std::vector<std::string> ids;
  if (!settings.GetSettingValByName(kSettingScoringModelIDs, ids)) {
    return Refuse(
        status, kFilesOrModelIDsMissing,
        "\"scoring_pmmlFiles\" holds " + std::to_string(files.size()) + " files, and no \"scoring_modelIDs\"");
  }
  const auto makeMember = [&](std::size_t position) {
    return position < files.size() ? CreateSoloModelFromFile(settings, files[position], status)
                                   : Refuse(status, kFilesOrModelIDsMissing,
                                            "\"scoring_pmmlFiles\" holds no file for \"" + ids[position] + '"');
  };
  return CreateMultiModel(ids, makeMember, status);
}

std::unique_ptr<ScoringModel> CreateFromStreamAt(KelSettings& settings, const Streams& streams, std::size_t position,
                                                 KelStatus& status) {
  if (position >= streams.size() || streams[position] == nullptr) {
    return Refuse(status, kStreamsWithoutModelIDs, "there is no stream at position " + std::to_string(position));
  }
  return CreateSoloModel(settings, *streams[position], status);
}

std::unique_ptr<ScoringModel> CreateFromStreams(KelSettings& settings, const Streams& streams, KelStatus& status) {
  const auto makeMember = [&](std::size_t position) { return CreateFromStreamAt(settings, streams, position, status); };
  KelSettings description;
  if (settings.GetSettingValByName(kSettingScoringSplitModel, description)) {
    return CreateSplitModel(description, makeMember, status);
  }
  std::vector<std::string> ids;
  if (settings.GetSettingValByName(kSettingScoringModelIDs, ids)) return CreateMultiModel(ids, makeMember, status);
  if (streams.size() == 1) return makeMember(0);
  return Refuse(
      status, kStreamsWithoutModelIDs,
      std::to_string(streams.size()) + " streams, and neither \"scoring_splitModel\" nor \"scoring_modelIDs\"");
}

}  // namespace

ScoringFactory::ScoringFactory() { static_cast<void>(InitXerces()); }

ScoringFactory::~ScoringFactory() {
  fModel.reset();
  TermXerces();
}

// Starts and ends nest in the platform, which counts them.
KelStatus ScoringFactory::InitXerces() {
  if (fXercesInitialized) return fStatus;
  try {
    const ScoringMutexLock lock(ScoringMutexContainer::GetMutex());
    XMLPlatformUtils::Initialize(xercesc::XMLUni::fgXercescDefaultLocale, nullptr, nullptr, nullptr);
    fXercesInitialized = true;
  } catch (const xercesc::XMLException&) {
    fStatus = KelStatus(kXmlPlatformFailed, false);
  }
  return fStatus;
}

void ScoringFactory::TermXerces() {
  if (!fXercesInitialized) return;
  const ScoringMutexLock lock(ScoringMutexContainer::GetMutex());
  XMLPlatformUtils::Terminate();
}

// Begins a creation: an old reason is no longer told. False, and the status tells why, if there can't be one.
bool ScoringFactory::MayCreate() {
  KelDiagnostics::Clear();
  if (fModel != nullptr) {
    fStatus = KelStatus(kFactoryHoldsModel, false);
    return false;
  }
  if (!fXercesInitialized) {
    fStatus = KelStatus(kXmlPlatformFailed, false);
    return false;
  }
  return true;
}

ScoringModel* ScoringFactory::CreateScoringModel(KelSettings& settings, std::istream& stream) {
  if (!MayCreate()) return nullptr;
  fModel = CreateSoloModel(settings, stream, fStatus);
  return fModel.get();
}

ScoringModel* ScoringFactory::CreateScoringModel(KelSettings& settings, const std::string& path) {
  if (!MayCreate()) return nullptr;
  fModel = CreateSoloModelFromFile(settings, path, fStatus);
  return fModel.get();
}

ScoringModel* ScoringFactory::CreateScoringModel(KelSettings& settings) {
  if (!MayCreate()) return nullptr;
  Files files;
  settings.GetSettingValByName(kSettingScoringPmmlFiles, files);
  fModel = files.size() == 1 ? CreateFromOnlyFile(settings, files.front(), fStatus)
                             : CreateFromFiles(settings, files, fStatus);
  return fModel.get();
}

ScoringModel* ScoringFactory::CreateScoringModel(KelSettings& settings, const Streams& streams) {
  if (!MayCreate()) return nullptr;
  fModel = CreateFromStreams(settings, streams, fStatus);
  return fModel.get();
}

void ScoringFactory::Attach(ScoringModel* model) {
  fModel.reset();
  fModel.reset(model);
}

ScoringModel* ScoringFactory::Detach() {
  fStatus = KelStatus();
  return fModel.release();
}

}  // namespace KelScoring_20
