// Scores one record: the least that a host does.
#include <fstream>
#include <iostream>
#include <memory>

#include "scoring/common/KelDiagnostics.h"
#include "scoring/common/KelSettings.h"
#include "scoring/common/ValueRecord.h"
#include "scoring/factory/ScoringFactory.h"
#include "scoring/model/ScoringModel.h"

int main(int count, char** arguments) {
  if (count != 2) {
    std::cerr << "usage: " << arguments[0] << " churn.pmml\n";
    return 2;
  }

  // Which elements are models, and which plug-in scores them.
  KelXML_1_3::KelSettings models;
  models.AddSetting("TreeModel", "", true);
  KelXML_1_3::KelSettings plugIns;
  plugIns.AddSetting("Torvane", "torvane", true);
  KelXML_1_3::KelSettings settings;
  settings.AddSetting("modelDll", models, true);
  settings.AddSetting("scoringDll", plugIns, true);

  KelScoring_20::ScoringFactory factory;
  std::ifstream document(arguments[1], std::ios::binary);
  factory.CreateScoringModel(settings, document);
  const KelCommon_1_3::KelStatus created = factory.GetStatus();  // before Detach, which clears it
  const std::unique_ptr<KelScoring_20::ScoringModel> model(factory.Detach());
  if (!model) {
    std::cerr << created.GetErrorCode() << ": " << created.GetMessage() << "\n"
              << KelCommon_1_3::KelDiagnostics::Last() << "\n";
    return 1;
  }

  KelCommon_1_3::ValueRecord out;
  model->Scorable(out);  // all names that the model can fill; a host may choose fewer

  KelCommon_1_3::ValueRecord in;
  in.Add("tenure", 5);
  in.Add("contract", "monthly");
  in.Add("charges", 89.5);
  in.Add("complaints", 2);
  const KelCommon_1_3::KelStatus scored = model->Score(in, out);
  if (scored.IsError()) {
    std::cerr << scored.GetErrorCode() << ": " << scored.GetMessage() << "\n";
    return 1;
  }
  for (int i = 0; i < out.Size(); ++i) {
    std::cout << out.NameAt(i) << " = " << out.At(i).GetString() << "\n";
    const KelCommon_1_3::ValueRecord* members = out.At(i).Members();  // of a composite value: "probcategory"
    for (int k = 0; members && k < members->Size(); ++k)
      std::cout << "  " << members->NameAt(k) << " = " << members->At(k).GetString() << "\n";
  }
  return 0;
}
