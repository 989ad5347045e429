#include "DeviceFramework2/DeviceException.h"

#include "DeviceFramework2/CmdResultNotAvailableException.h"

#include <gtest/gtest.h>

namespace {

using Veltrani::DeviceFramework2::CmdResultNotAvailableException;
using Veltrani::DeviceFramework2::DeviceException;

TEST(DeviceException, BelongsToTheFamilyOfTheSuite) {
    try {
        throw DeviceException("file.cpp", 12, L"text");
    } catch (const VeltraniException& fault) {
        EXPECT_EQ(fault.fullDescription(), L"text @ file.cpp:12");
        return;
    }
    FAIL() << "not caught as VeltraniException";
}

TEST(DeviceException, WithoutALocationItIsItsMessage) {
    EXPECT_EQ(DeviceException(L"text").fullDescription(), L"text");
}

TEST(CmdResultNotAvailableException, NamesTheCommandTypeAndIsADeviceException) {
    const CmdResultNotAvailableException fault("GetFirmware");
    const DeviceException& base = fault;
    EXPECT_EQ(base.message, L"The command GetFirmware has no result");
    EXPECT_EQ(base.line, -1);
}

}  // namespace
