#include "scoring/factory/CompositeCreation.h"

#include <optional>

#include "scoring/common/KelScoringConst.h"
#include "scoring/common/KelSettings.h"
#include "scoring/common/KelVecValue.h"
#include "scoring/model/ScoringMultiModel.h"
#include "scoring/model/ScoringSplitModel.h"

namespace KelScoring_20 {

using KelCommon_1_3::KelStatus;
using KelCommon_1_3::Value;
using KelXML_1_3::IKelSettingValue;
using KelXML_1_3::KelSettings;
using KelXML_1_3::KelVecValue;

namespace {

using Key = ScoringSplitModel::Key;

// The key that a description has for a member. None if it isn't there exactly once as a list: that leaves the member
// out.
std::optional<Key> FindKey(const KelSettings& description, const std::string& id) {
  const auto entries = description.GetSettingByName(id);
  if (entries.size() != 1 || entries.front() == nullptr) return std::nullopt;
  const IKelSettingValue* value = entries.front()->ReadValue();
  if (const auto* key = dynamic_cast<const KelVecValue<Value>*>(value)) return key->fValue;
  if (const auto* texts = dynamic_cast<const KelVecValue<std::string>*>(value)) {
    return Key(texts->fValue.begin(), texts->fValue.end());
  }
  return std::nullopt;
}

std::vector<std::string> Texts(const KelSettings& settings, const char* key) {
  std::vector<std::string> texts;
  settings.GetSettingValByName(key, texts);
  return texts;
}

}  // namespace

std::unique_ptr<ScoringModel> CreateMultiModel(const std::vector<std::string>& ids, const MakeMember& makeMember,
                                               KelStatus& status) {
  auto composite = std::make_unique<ScoringMultiModel>();
  for (std::size_t i = 0; i < ids.size(); ++i) {
    std::unique_ptr<ScoringModel> member = makeMember(i);
    if (member == nullptr) break;
    status = KelStatus();
    std::string id = ids[i];  // before the member is let go: copying can fail
    composite->AddModel(std::move(id), member.release());
  }
  if (status.IsError()) return nullptr;
  return composite;
}

std::unique_ptr<ScoringModel> CreateSplitModel(const KelSettings& description, const MakeMember& makeMember,
                                               KelStatus& status) {
  const std::vector<std::string> ids = Texts(description, KelScoringConst::kSettingScoringSplitModelIDs);
  auto composite = std::make_unique<ScoringSplitModel>();
  for (std::size_t i = 0; i < ids.size(); ++i) {
    const std::optional<Key> key = FindKey(description, ids[i]);
    if (!key) continue;
    std::unique_ptr<ScoringModel> member = makeMember(i);
    if (member == nullptr) break;
    status = KelStatus();
    if (composite->AddModel(*key, member.get())) static_cast<void>(member.release());
  }
  if (status.IsError()) return nullptr;
  std::vector<std::string> fields = Texts(description, KelScoringConst::kSettingScoringSplitFields);
  composite->SetSplitFields(fields);
  return composite;
}

}  // namespace KelScoring_20
