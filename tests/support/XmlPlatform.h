#pragma once

#include <gtest/gtest.h>
#include <xercesc/util/PlatformUtils.hpp>

namespace KelTest {

/// Keeps the XML platform up while all tests of a program run, for those that need it without a factory:
///
///     const auto* const kPlatform = KelTest::XmlPlatform::KeepUp();
class XmlPlatform : public testing::Environment {
 public:
  static testing::Environment* KeepUp() { return testing::AddGlobalTestEnvironment(new XmlPlatform); }

  void SetUp() override { xercesc::XMLPlatformUtils::Initialize(); }
  void TearDown() override { xercesc::XMLPlatformUtils::Terminate(); }
};

}  // namespace KelTest
