#include "DisplayReport/coverage/DisplayLights.h"

#include "LitDisplays.h"

namespace {

using namespace Veltrani::DisplayReport;
using testing::ElementsAre;
using testing::HasSubstr;

class DisplayLightsTest : public LitDisplayTest {};

TEST_F(DisplayLightsTest, AChannelWithoutLightKeepsTheOthersInTheirPlaces) {
    load(displays::FLAT, displays::projector("A", displays::WHOLE_AREA) + displays::projector("B", "") +
                             displays::projector("C", displays::WHOLE_AREA));
    const DisplayLights display = DisplayLights::of(*m_config, surface());
    EXPECT_THAT(display.faults, ElementsAre("", HasSubstr("no screen area"), ""));
    EXPECT_THAT(display.places, ElementsAre(0U, 2U));
    ASSERT_EQ(display.lights.size(), 2U);
    EXPECT_TRUE(display.lights[1]->landingOf({0.5, 0.5}).hits);
}

TEST_F(DisplayLightsTest, WhatTheSurfaceDoesNotHaveIsAFaultOfTheChannel) {
    m_folder.write("wall.obj", displays::PANEL_OBJ);
    load(displays::MESH, displays::projector("A", displays::WHOLE_AREA));
    const DisplayLights display = DisplayLights::of(*m_config, surface());
    EXPECT_THAT(display.faults, ElementsAre(HasSubstr("The mesh has no 2D coordinates")));
    EXPECT_TRUE(display.lights.empty());
}

}  // namespace
