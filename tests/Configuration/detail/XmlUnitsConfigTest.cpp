#include "Configuration/detail/XmlDisplayConfigs.h"

#include "Configuration/XMLConfigFile.h"

#include <gtest/gtest.h>

#include <string>

namespace {

TEST(XmlUnitsConfig, AnswersTheNativeUnit) {
    for (const std::string unit : {"mm", "cm", "m", "in", "ft", "custom"}) {
        const auto config = XMLConfigFile::parse("<Display version='1'><Units native='" + unit + "'/></Display>", "t");
        ASSERT_NE(config->getNativeUnitsConfig(), nullptr);
        EXPECT_EQ(config->getNativeUnitsConfig()->getUnitName(), std::wstring(unit.begin(), unit.end()));
    }
}

}  // namespace
