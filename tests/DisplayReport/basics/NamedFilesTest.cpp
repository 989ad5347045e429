#include "DisplayReport/basics/NamedFiles.h"

#include "support/ConfigManagerDouble.h"
#include "support/ScreenConfigDouble.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using Veltrani::DisplayReport::filesOf;

TEST(NamedFiles, NamesScreensMapsAndModels) {
    ScreenConfigDouble screen;
    screen.contentMeshFile = L"/wall.obj";
    screen.measuredMeshFile = L"/measured.obj";
    screen.modelPcdFile = L"/scan.pcd";
    ProjectorConfigDouble mapped(L"A");
    mapped.customPlanarFile = L"/a.map";
    ProjectorConfigDouble modelled(L"B");
    modelled.projectionModelName = L"BrownConrady:/lens.yml";
    ProjectorConfigDouble plain(L"C");
    plain.projectionModelName = L"Rectilinear";
    ConfigManagerDouble config;
    config.screen = &screen;
    config.projectors = {&mapped, &modelled, &plain};
    EXPECT_THAT(filesOf(config), ElementsAre(L"/wall.obj", L"/measured.obj", L"/scan.pcd", L"/a.map", L"/lens.yml"));
}

TEST(NamedFiles, AServiceThatAnswersOneMeshForEveryNumberHasOneMesh) {
    ScreenConfigDouble screen;
    screen.contentMeshFile = L"/wall.obj";
    EXPECT_THAT(Veltrani::DisplayReport::contentMeshesOf(screen), ElementsAre(L"/wall.obj"));
}

TEST(NamedFiles, AConfigurationOfNumbersNamesNone) {
    EXPECT_THAT(filesOf(ConfigManagerDouble()), IsEmpty());
}

}  // namespace
