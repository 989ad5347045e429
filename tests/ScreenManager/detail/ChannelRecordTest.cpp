#include "ScreenManager/detail/ChannelEntries.h"

#include "Common/VeltraniException.h"
#include "support/ProjectorConfigDouble.h"

#include <gtest/gtest.h>

namespace {

TEST(ChannelRecord, IsTheRecordItself) {
    const ProjectorConfigDouble record(L"P1");
    EXPECT_EQ(&Veltrani::ScreenManagerDetail::requireRecord(&record, 3), &record);
}

TEST(ChannelRecord, AMissingOneIsToldByTheNumberOfItsChannel) {
    try {
        static_cast<void>(Veltrani::ScreenManagerDetail::requireRecord(nullptr, 3));
        FAIL() << "nothing was thrown";
    } catch (const VeltraniException& fault) {
        EXPECT_EQ(fault.message,
                  L"The configuration lists a projector for channel 3 (counted from 0), but has no record of it");
    }
}

}  // namespace
