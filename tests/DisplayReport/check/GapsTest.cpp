// Pictures that do not meet.
#include "CheckedDisplays.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace {

using namespace Veltrani::DisplayReport;
using testing::Contains;
using testing::HasSubstr;
using testing::Not;

std::vector<std::string> foundIn(const std::string& name, const std::string& from, const std::string& to) {
    sound::Display display = sound::named(name);
    display.text = changed(display.text, from, to);
    DisplayFolder folder;
    const DisplayDescription description = folder.checked(display);
    EXPECT_EQ(description.count(Severity::WARNING), 0U) << "pictures may stand apart";
    return reported(description);
}

TEST(Gaps, AChannelThatMeetsNoOtherIsRemarkedOn) {
    const auto found = foundIn("seated-dome", "left='-35' right='35' bottom='-22' top='30'",
                               "left='-17' right='17' bottom='-11' top='15'");
    EXPECT_THAT(found,
                Contains("channel Left: it shares nothing of its picture with any other channel, so that nothing "
                         "can be blended: check its field of view, and the size of the screen, unless the "
                         "pictures are meant to stand apart [narrow-overlap]"));
    EXPECT_THAT(found, Contains(HasSubstr("channel Right: it shares nothing")));
}

TEST(Gaps, ChannelsThatMeetOnOneSideAreNot) {
    EXPECT_THAT(foundIn("wall", "left='0.31' right='0.69'", "left='0.31' right='0.62'"),
                Not(Contains(HasSubstr("channel Centre: it shares nothing"))));
    EXPECT_THAT(foundIn("wall", "left='0.31' right='0.69'", "left='0.31' right='0.62'"),
                Contains(HasSubstr("channel Right: it shares nothing")));
    EXPECT_THAT(foundIn("planetarium", "<Name>Sky</Name>", "<Name>Dome</Name>"),
                Not(Contains(HasSubstr("it shares nothing"))))
        << "there is one channel only";
}

}  // namespace
