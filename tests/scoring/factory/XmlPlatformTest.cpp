#include <chrono>
#include <dlfcn.h>
#include <future>
#include <gtest/gtest.h>
#include <memory>
#include <string>
#include <thread>
#include <vector>
#include <xercesc/framework/MemoryManager.hpp>
#include <xercesc/util/PlatformUtils.hpp>
#include <xercesc/util/XMLException.hpp>
#include <xercesc/util/XMLUni.hpp>

#include "scoring/factory/ScoringFactory.h"
#include "scoring/model/ScoringMutex.h"
#include "scoring/model/ScoringSoloModel.h"
#include "tests/scoring/factory/HostSettings.h"
#include "tests/support/PmmlText.h"
#include "tests/support/ScriptedScorer.h"

// This program puts its own start and end of the XML platform in front of those of the parser's library, to watch them
// and to make them fail.

namespace {

using Calls = std::vector<std::string>;

Calls gCalls;
bool gStartFails = false;
bool gLockWasFree = false;

// Whether another thread can take the process-wide lock now. If it can't, this waits for a moment.
bool LockIsFree() {
  auto taken = std::make_shared<std::promise<void>>();
  std::future<void> wasTaken = taken->get_future();
  std::thread([taken] {
    const KelScoring_20::ScoringMutexLock lock(KelScoring_20::ScoringMutexContainer::GetMutex());
    taken->set_value();
  }).detach();
  return wasTaken.wait_for(std::chrono::milliseconds(20)) == std::future_status::ready;
}

void Watch(const char* call) {
  gCalls.emplace_back(call);
  gLockWasFree = gLockWasFree || LockIsFree();
}

class Heap : public xercesc::MemoryManager {
 public:
  xercesc::MemoryManager* getExceptionMemoryManager() override { return this; }
  void* allocate(XMLSize_t size) override { return ::operator new(size); }
  void deallocate(void* memory) override { ::operator delete(memory); }
};

Heap gHeap;

class StartFailure : public xercesc::XMLException {
 public:
  StartFailure() : XMLException(__FILE__, __LINE__, &gHeap) {}
  [[nodiscard]] const XMLCh* getType() const override { return xercesc::XMLUni::fgXMLString; }
};

template <typename Function>
Function Next(const char* mangledName) {
  return reinterpret_cast<Function>(dlsym(RTLD_NEXT, mangledName));
}

}  // namespace

XERCES_CPP_NAMESPACE_BEGIN

__attribute__((visibility("default"))) void XMLPlatformUtils::Initialize(const char* const locale,
                                                                         const char* const nlsHome,
                                                                         PanicHandler* const panicHandler,
                                                                         MemoryManager* const memoryManager) {
  using Start = void (*)(const char*, const char*, PanicHandler*, MemoryManager*);
  EXPECT_STREQ(locale, XMLUni::fgXercescDefaultLocale);
  EXPECT_TRUE(nlsHome == nullptr && panicHandler == nullptr && memoryManager == nullptr);
  Watch("Initialize");
  if (gStartFails) throw StartFailure();
  static const auto start =
      Next<Start>("_ZN11xercesc_3_216XMLPlatformUtils10InitializeEPKcS2_PNS_12PanicHandlerEPNS_13MemoryManagerE");
  start(locale, nlsHome, panicHandler, memoryManager);
}

__attribute__((visibility("default"))) void XMLPlatformUtils::Terminate() {
  Watch("Terminate");
  static const auto end = Next<void (*)()>("_ZN11xercesc_3_216XMLPlatformUtils9TerminateEv");
  end();
}

XERCES_CPP_NAMESPACE_END

namespace KelScoring_20 {
namespace {

class XmlPlatform : public testing::Test {
 protected:
  XmlPlatform() {
    gCalls.clear();
    gStartFails = false;
    gLockWasFree = false;
  }
  ~XmlPlatform() override { EXPECT_FALSE(gLockWasFree) << "start or end of the platform without the lock"; }

  // A model that tells when it dies.
  static ScoringSoloModel* LoggedModel(const std::string& name) {
    auto* model = new ScoringSoloModel(KelXML_1_3::KelSettings(), KelXML_1_3::KelVarList());
    model->SetScorer(new KelTest::ScriptedScorer(gCalls, name));
    return model;
  }
};

TEST_F(XmlPlatform, Factory_StartsAndEndsItOnce) {
  {
    const ScoringFactory factory;
    EXPECT_TRUE(factory.GetStatus().IsOK());
    EXPECT_EQ(gCalls, Calls{"Initialize"});
  }
  EXPECT_EQ(gCalls, (Calls{"Initialize", "Terminate"}));
  EXPECT_TRUE(LockIsFree());
}

TEST_F(XmlPlatform, FirstOfTwoFactoriesEnds_SecondWorksOn) {
  auto first = std::make_unique<ScoringFactory>();
  ScoringFactory second;
  first.reset();
  KelXML_1_3::KelSettings settings = KelTest::HostSettings("dom");
  std::stringstream stream = KelTest::PmmlText().Stream();
  EXPECT_NE(second.CreateScoringModel(settings, stream), nullptr);
}

TEST_F(XmlPlatform, HeldModel_DiesBeforeThePlatformEnds) {
  {
    ScoringFactory factory;
    factory.Attach(LoggedModel("model"));
  }
  EXPECT_EQ(gCalls, (Calls{"Initialize", "~model", "Terminate"}));
}

TEST_F(XmlPlatform, Attach_DestroysWhatIsHeldAndKeepsTheStatus) {
  ScoringFactory factory;
  KelXML_1_3::KelSettings settings;
  EXPECT_EQ(factory.CreateScoringModel(settings, "no such file"), nullptr);
  factory.Attach(LoggedModel("first"));
  factory.Attach(LoggedModel("second"));
  EXPECT_EQ(gCalls, (Calls{"Initialize", "~first"}));
  factory.Attach(nullptr);
  EXPECT_EQ(gCalls, (Calls{"Initialize", "~first", "~second"}));
  EXPECT_EQ(factory.GetStatus().GetErrorCode(), 260004);
  EXPECT_EQ(factory.Detach(), nullptr);
  EXPECT_TRUE(factory.GetStatus().IsOK());
}

TEST_F(XmlPlatform, FailedStart_ShowsInTheStatusAndRefusesCreations) {
  gStartFails = true;
  {
    ScoringFactory factory;
    EXPECT_TRUE(factory.GetStatus().IsError());
    EXPECT_EQ(factory.GetStatus().GetErrorCode(), 103);
    factory.Detach();
    KelXML_1_3::KelSettings settings = KelTest::HostSettings("stream");
    std::stringstream stream = KelTest::PmmlText().Stream();
    EXPECT_EQ(factory.CreateScoringModel(settings, stream), nullptr);
    EXPECT_EQ(factory.GetStatus().GetErrorCode(), 103);
    EXPECT_EQ(stream.tellg(), 0);
    EXPECT_EQ(factory.CreateScoringModel(settings, "no such file"), nullptr);
    EXPECT_EQ(factory.GetStatus().GetErrorCode(), 103);
    factory.Attach(LoggedModel("model"));  // a held model is the first thing that is looked for
    EXPECT_EQ(factory.CreateScoringModel(settings, stream), nullptr);
    EXPECT_EQ(factory.GetStatus().GetErrorCode(), 260002);
  }
  EXPECT_EQ(gCalls, (Calls{"Initialize", "~model"}));  // no second attempt, and no end without a start
  EXPECT_TRUE(LockIsFree());
}

}  // namespace
}  // namespace KelScoring_20
