#include "scoring/common/KelDiagnostics.h"

namespace KelCommon_1_3 {
namespace {

thread_local std::string lastReason;

}  // namespace

void KelDiagnostics::Report(const std::string& reason) { lastReason = reason; }

std::string KelDiagnostics::Last() { return lastReason; }

void KelDiagnostics::Clear() { lastReason.clear(); }

}  // namespace KelCommon_1_3
