#include "tools/kelscore/Members.h"

#include <algorithm>
#include <set>

#include "scoring/common/KelScoringConst.h"
#include "scoring/common/KelVecValue.h"
#include "scoring/common/Value.h"
#include "tools/kelscore/CsvText.h"
#include "tools/kelscore/Failure.h"
#include "tools/kelscore/FieldValue.h"

namespace kelscore {
namespace {

using KelCommon_1_3::Value;
using KelXML_1_3::KelSettings;
using KelXML_1_3::KelVecValue;
namespace Const = KelScoring_20::KelScoringConst;

std::vector<std::string> ReadList(const KelSettings& settings, const char* key) {
  std::vector<std::string> texts;
  settings.GetSettingValByName(key, texts);
  return texts;
}

std::vector<Member> MembersOfSettings(const KelSettings& settings, Console& console) {
  const std::vector<std::string> files = ReadList(settings, Const::kSettingScoringPmmlFiles);
  const std::vector<std::string> ids = ReadList(settings, Const::kSettingScoringModelIDs);
  if (files.size() == 1) {
    if (!ids.empty()) console.Tell("warning: one document is a model by itself; the identifiers are ignored");
    return {};
  }
  if (files.size() > ids.size()) console.Tell("warning: documents without an identifier are ignored");
  std::vector<Member> members;
  for (std::size_t i = 0; i < std::min(files.size(), ids.size()); ++i) members.push_back({ids[i], {}, files[i]});
  return members;
}

std::string KeyText(const std::vector<std::string>& key) {
  std::string text;
  for (const std::string& value : key) text += (text.empty() ? "" : ",") + value;
  return Quoted(text);
}

FieldKind KindOf(const std::string& name, const std::vector<ModelField>& fields) {
  const auto field =
      std::find_if(fields.begin(), fields.end(), [&name](const ModelField& known) { return known.name == name; });
  return field == fields.end() ? FieldKind::kText : field->kind;
}

using Key = std::vector<Value>;

// What a key has too much is kept as text: it matches nothing.
Key ReadKey(const std::vector<std::string>& texts, const std::vector<std::string>& splitFields,
            const std::vector<ModelField>& fields) {
  Key key(texts.size());
  std::string scratch;
  for (std::size_t i = 0; i < texts.size(); ++i) {
    const FieldKind kind = i < splitFields.size() ? KindOf(splitFields[i], fields) : FieldKind::kText;
    if (!texts[i].empty() && !ReadFieldValue(kind, {}, texts[i], key[i], scratch))
      throw Failure(kBadUsage, "--split-member: " + Quoted(texts[i]) + " is no number, as the field " +
                                   Quoted(splitFields[i]) + " is");
  }
  return key;
}

void WarnOfKey(const SplitMemberArgument& member, std::size_t fieldCount, bool standsTwice, Console& console) {
  const std::string key = "warning: key " + KeyText(member.key);
  if (standsTwice) console.Tell(key + " stands twice; " + member.path + " is never used");
  if (member.key.size() != fieldCount)
    console.Tell(key + " has " + std::to_string(member.key.size()) + " values for " + std::to_string(fieldCount) +
                 " split fields; " + member.path + " is never used");
}

KelSettings DescribeSplit(const ModelArguments& arguments, const std::vector<ModelField>& fields, Console& console) {
  KelSettings description;
  std::vector<std::string> ids;
  std::set<Key> keys;
  for (const SplitMemberArgument& member : arguments.splitMembers) {
    const Key key = ReadKey(member.key, arguments.splitFields, fields);
    WarnOfKey(member, arguments.splitFields.size(), !keys.insert(key).second, console);
    ids.push_back("member " + std::to_string(ids.size() + 1));
    description.AddSetting(ids.back(), KelVecValue<Value>(key), true);
  }
  description.AddSetting(Const::kSettingScoringSplitFields, arguments.splitFields, true);
  description.AddSetting(Const::kSettingScoringSplitModelIDs, ids, true);
  return description;
}

}  // namespace

std::vector<Member> FindMembers(const ModelArguments& arguments, const KelSettings& settings, Console& console) {
  std::vector<Member> members;
  for (const auto& [id, path] : arguments.members) members.push_back({id, {}, path});
  for (const SplitMemberArgument& member : arguments.splitMembers) members.push_back({"", member.key, member.path});
  if (members.empty() && arguments.path.empty()) members = MembersOfSettings(settings, console);
  return members;
}

void WarnOfIdentifiers(const std::vector<Member>& members, Console& console) {
  std::set<std::string> ids;
  for (const Member& member : members) {
    if (!ids.insert(member.id).second)
      console.Tell("warning: identifier " + Quoted(member.id) + " stands twice; the outputs of " + member.path +
                   " replace the earlier member's");
  }
}

void AddMembers(const ModelArguments& arguments, const std::vector<ModelField>& fields, KelSettings& settings,
                Console& console) {
  if (!arguments.members.empty()) {
    std::vector<std::string> ids;
    for (const auto& [id, path] : arguments.members) ids.push_back(id);
    settings.AddSetting(Const::kSettingScoringModelIDs, ids, true);
  }
  if (!arguments.splitMembers.empty())
    settings.AddSetting(Const::kSettingScoringSplitModel, DescribeSplit(arguments, fields, console), true);
}

}  // namespace kelscore
