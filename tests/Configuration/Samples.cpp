#include "Samples.h"

#include "Common/Utf8.h"
#include "Common/VeltraniException.h"
#include "Configuration/XMLConfigFile.h"

#include <sstream>
#include <stdexcept>

std::string fullConfiguration() {
    return R"(<?xml version="1.0" encoding="UTF-8"?>
<!-- The simulator dome of hall 2 -->
<Display xmlns:v="urn:example:vendor" version="1" lengthUnit="m" angleUnit="deg" v:revision="7">
    <Units native="m"/>
    <Screen shape="Sphere" fileUnit="custom" scale="0.0254" allow="eye-outside">
        <EyePoint x="0.1" y="-0.2" z="1.25"/>
        <Centre x="0" y="0" z="1.5"/>
        <Orientation z="10" x="-5" y="2.5"/>
        <Radius value="400" lengthUnit="cm"/>
        <Azimuth min="-110" max="110"/>
        <Elevation min="-0.5" max="1.25" angleUnit="rad"/>
        <MeasuredMesh file="scans/measured.obj"/>
        <ModelCloud file="/data/scans/model.pcd"/>
        <ImportOrientation up="Y" forward="-Z"/>
    </Screen>
    <TargetData type="SphericalCollimated">
        <TargetPosition x="0" y="0" z="1.3"/>
        <Mirror radius="3.5">
            <Orientation z="1" x="2" y="3"/>
            <Position x="0" y="2500" z="100" lengthUnit="mm"/>
        </Mirror>
        <YawTable>
            <Pair measured="-60" corrected="-61.5"/>
            <Pair measured="0" corrected="0"/>
            <Pair measured="60" corrected="62"/>
        </YawTable>
        <PitchTable>
            <Pair measured="-20" corrected="-20.25"/>
            <Pair measured="20" corrected="20.5"/>
        </PitchTable>
    </TargetData>
    <Projectors>
        <!-- the left one was replaced in spring -->
        <Projector id="02000000000A" section="projector 1" oldId="left" allow="misses-screen same-picture">
            <Name>Left &amp; lower</Name>
            <Device><Device type="PJLink" mac="02:00:00:00:00:0a" host="192.0.2.10" port="4352"/></Device>
            <Resolution width="1920" height="1200"/>
            <PondOfMirror sizes="14 7 10 0"/>
            <CustomPlanarMap file="warp/left.txt"/>
            <ProjectionModel name="BrownConrady" file="lenses/left.yml"/>
            <Orientation z="-35" x="12.5" y="0.25"/>
            <Frustum left="-30" right="31" bottom="-20" top="19"/>
            <Position x="1.5" y="-0.5" z="2.75"/>
            <ScreenArea left="0" right="0.55" bottom="-0.05" top="1.05"/>
            <Layout xMin="-2" xMax="0.25" yMin="0" yMax="1.5"/>
            <Note>shift locked, lamp of spring</Note>
            <v:LampHours>1234</v:LampHours>
        </Projector>
        <Projector id="right">
            <ScreenArea left="0.45" right="1"/>
        </Projector> <!-- no device yet -->
    </Projectors>
    <v:Notes><Free>anything</Free></v:Notes>
</Display>
)";
}

std::string smallConfiguration() {
    return "<Display version=\"1\"><Units native=\"m\"/></Display>";
}

std::string displayAround(std::string_view elements) {
    return "<Display version=\"1\" lengthUnit=\"m\" angleUnit=\"deg\"><Units native=\"m\"/>\n" + std::string(elements) +
           "\n</Display>\n";
}

std::string projectors(std::string_view elements) {
    return displayAround("<Projectors>\n" + std::string(elements) + "\n</Projectors>");
}

std::vector<std::string> validConfigurations() {
    return {
        fullConfiguration(),
        smallConfiguration(),
        displayAround(R"(<Screen shape="Flat" fileUnit="mm"><Size width="4" height="2.5"/><Centre x="0" y="3" z="1"/>
<Orientation z="0" x="0" y="0"/><EyePoint x="0" y="0" z="0"/></Screen><TargetData type="PlanarBasic"/>)"),
        displayAround(R"(<Screen shape="Cylinder"><Size height="3"/><Radius value="5"/>
<Azimuth min="-90" max="90"/></Screen><TargetData type="PlanarAdvanced"/><Projectors/>)"),
        displayAround(R"(<Screen shape="Ruled">
<LowerRail><Point x="-1" y="2" z="0"/><Point x="0" y="2.5" z="0"/><Point x="1" y="2" z="0"/></LowerRail>
<UpperRail><Point x="-1" y="2" z="2"/><Point x="0" y="2.5" z="2"/><Point x="1" y="2" z="2"/></UpperRail>
</Screen><TargetData type="CustomPlanar"/>)"),
        displayAround(R"(<Screen shape="Mesh" fileUnit="in"><ContentMesh file="a.obj"/><ContentMesh file="b.obj"/>
<ImportOrientation up="Z" forward="Y"/></Screen><TargetData type="ProjectorCentric"/>)"),
        displayAround(R"(<Screen shape="Sphere"><Radius value="4"/></Screen>
<TargetData type="Spherical"><Mirror radius="1"/></TargetData>)"),
        R"(<Display version="1"><Units native="custom"/><Screen shape="Sphere" lengthUnit="custom"><Radius value="4"/>
</Screen><TargetData type="3D"/></Display>)"};
}

std::string replaced(std::string text, std::string_view before, std::string_view after) {
    const std::size_t at = text.find(before);
    if (at == std::string::npos) {
        throw std::logic_error("not in the sample: " + std::string(before));
    }
    return text.replace(at, before.size(), after);
}

std::vector<std::string> faultsOf(std::string_view text) {
    static const std::string NAME = "test.xml";
    std::vector<std::string> faults;
    try {
        static_cast<void>(XMLConfigFile::parse(text, NAME));
    } catch (const VeltraniParseException& fault) {
        std::istringstream lines(Veltrani::toUtf8(fault.message));
        for (std::string line; std::getline(lines, line);) {
            if (line.rfind(NAME + ":", 0) != 0) {
                throw std::logic_error("not a fault of the document: " + line);
            }
            faults.push_back(line.substr(NAME.size() + 1));
        }
    }
    return faults;
}
