#pragma once

#include <gtest/gtest.h>
#include <xercesc/util/PlatformUtils.hpp>

/// Keeps the XML platform up while the tests of a program run.
class XmlPlatform : public ::testing::Environment {
 public:
  void SetUp() override { xercesc::XMLPlatformUtils::Initialize(); }
  void TearDown() override { xercesc::XMLPlatformUtils::Terminate(); }
};

inline ::testing::Environment* const kXmlPlatform = ::testing::AddGlobalTestEnvironment(new XmlPlatform);
