// A program of somebody else: writes what was measured of a dome and of its projector into the configuration.
#include "Configuration/IScreenConfig.h"
#include "Configuration/ProjectorConfig.h"
#include "Configuration/XMLConfigFile.h"

#include <iostream>

int main() {
    const auto config = XMLConfigFile::parse(R"(<Display version="1" lengthUnit="mm" angleUnit="deg">
  <Units native="m"/>
  <Screen shape="Sphere">
    <Radius value="5000"/> <!-- as ordered -->
  </Screen>
  <Projectors>
    <Projector id="left">
      <Orientation z="-55.0" x="0" y="0"/>
      <Frustum left="-35" right="35" bottom="-22" top="30"/>
    </Projector>
  </Projectors>
</Display>)",
                                             "dome.xml");
    config->getMutableScreenConfig()->setRadius(5.125);  // native units
    ProjectorConfig* const left = config->getProjectorConfig(L"left");
    left->setPosition({0.312, -0.5, 1.205});
    left->setOrientationX(-0.05);  // radians
    left->setFrustumRight(0.6125);
    std::cout << config->text();  // or config->save("dome.xml")
}
