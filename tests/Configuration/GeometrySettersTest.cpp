#include "Common/VeltraniException.h"
#include "Configuration/IScreenConfig.h"
#include "Configuration/ProjectorConfig.h"
#include "Configuration/TargetLocatorConfig.h"
#include "Configuration/XMLConfigFile.h"
#include "Samples.h"
#include "support/TemporaryFolder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstdint>
#include <functional>
#include <limits>
#include <memory>
#include <random>
#include <string>
#include <vector>

/// Laws of every setter of the geometry, over every unit and over values that nobody means.
namespace {

using Vector = Point<double, 3>;

constexpr double INF = std::numeric_limits<double>::infinity();
constexpr double NOT_A_NUMBER = std::numeric_limits<double>::quiet_NaN();

enum class Quantity { LENGTH, POSITIVE_LENGTH, ANGLE, NUMBER };

/// A number of a configuration with the operations that read and change it. The other numbers that an operation takes
/// stay what they are.
struct Setting {
    std::string name;
    Quantity quantity;
    std::function<double(const XMLConfigFile&)> get;
    std::function<void(XMLConfigFile&, double)> set;
};

const ProjectorConfig& entryOf(const XMLConfigFile& config) {
    return *config.getProjectorConfig(config.getProjectorConfigIds().front());
}

ProjectorConfig& entryOf(XMLConfigFile& config) {
    return *config.getProjectorConfig(config.getProjectorConfigIds().front());
}

IScreenConfig& screenOf(XMLConfigFile& config) {
    return *config.getMutableScreenConfig();
}

TargetLocatorConfig& targetOf(XMLConfigFile& config) {
    return *config.getMutableTargetLocatorConfig();
}

Setting channelNumber(const std::string& name, Quantity quantity, double (ProjectorConfig::*get)() const,
                      void (ProjectorConfig::*set)(double)) {
    return {name, quantity, [get](const XMLConfigFile& config) { return (entryOf(config).*get)(); },
            [set](XMLConfigFile& config, double value) { (entryOf(config).*set)(value); }};
}

Setting screenNumber(const std::string& name, double (IScreenConfig::*get)() const,
                     void (IScreenConfig::*set)(double)) {
    return {name, Quantity::POSITIVE_LENGTH,
            [get](const XMLConfigFile& config) { return (config.getScreenConfig()->*get)(); },
            [set](XMLConfigFile& config, double value) { (screenOf(config).*set)(value); }};
}

/// Each component of a point is a setting of its own.
template <class Record>
void addPoint(std::vector<Setting>& settings, const std::string& name, Quantity quantity,
              const std::function<Record&(XMLConfigFile&)>& record, Vector (Record::*get)() const,
              void (Record::*set)(const Vector&)) {
    for (std::size_t i = 0; i < 3; ++i) {
        const auto read = [=](const XMLConfigFile& config) {
            return (record(const_cast<XMLConfigFile&>(config)).*get)()[i];
        };
        settings.push_back(
            {name + "[" + std::to_string(i) + "]", quantity, read, [=](XMLConfigFile& config, double value) {
                 Vector wanted = (record(config).*get)();
                 wanted[i] = value;
                 (record(config).*set)(wanted);
             }});
    }
}

std::vector<Setting> channelSettings() {
    using P = ProjectorConfig;
    std::vector<Setting> all{
        channelNumber("orientation Z", Quantity::ANGLE, &P::getOrientationZ, &P::setOrientationZ),
        channelNumber("orientation X", Quantity::ANGLE, &P::getOrientationX, &P::setOrientationX),
        channelNumber("orientation Y", Quantity::ANGLE, &P::getOrientationY, &P::setOrientationY),
        channelNumber("frustum top", Quantity::ANGLE, &P::getFrustumTop, &P::setFrustumTop),
        channelNumber("frustum bottom", Quantity::ANGLE, &P::getFrustumBottom, &P::setFrustumBottom),
        channelNumber("frustum left", Quantity::ANGLE, &P::getFrustumLeft, &P::setFrustumLeft),
        channelNumber("frustum right", Quantity::ANGLE, &P::getFrustumRight, &P::setFrustumRight),
        channelNumber("screen left", Quantity::NUMBER, &P::getScreenLeft, &P::setScreenLeft),
        channelNumber("screen right", Quantity::NUMBER, &P::getScreenRight, &P::setScreenRight),
        channelNumber("screen top", Quantity::NUMBER, &P::getScreenTop, &P::setScreenTop),
        channelNumber("screen bottom", Quantity::NUMBER, &P::getScreenBottom, &P::setScreenBottom),
        channelNumber("layout xMin", Quantity::LENGTH, &P::getLayoutXMin, &P::setLayoutXMin),
        channelNumber("layout xMax", Quantity::LENGTH, &P::getLayoutXMax, &P::setLayoutXMax),
        channelNumber("layout yMin", Quantity::LENGTH, &P::getLayoutYMin, &P::setLayoutYMin),
        channelNumber("layout yMax", Quantity::LENGTH, &P::getLayoutYMax, &P::setLayoutYMax)};
    const std::function<P&(XMLConfigFile&)> entry = [](XMLConfigFile& config) -> P& { return entryOf(config); };
    addPoint(all, "position", Quantity::LENGTH, entry, &P::getPosition, &P::setPosition);
    return all;
}

/// The settings of a sphere and of collimated target data, those of channels included. Limits and tables have laws of
/// their own.
std::vector<Setting> allSettings() {
    std::vector<Setting> all = channelSettings();
    const std::function<IScreenConfig&(XMLConfigFile&)> screen = screenOf;
    const std::function<TargetLocatorConfig&(XMLConfigFile&)> target = targetOf;
    using S = IScreenConfig;
    using T = TargetLocatorConfig;
    addPoint(all, "eye point", Quantity::LENGTH, screen, &S::getEyePoint, &S::setEyePoint);
    addPoint(all, "centre", Quantity::LENGTH, screen, &S::getCentre, &S::setCentre);
    addPoint(all, "screen orientation", Quantity::ANGLE, screen, &S::getOrientation, &S::setOrientation);
    all.push_back(screenNumber("radius", &S::getRadius, &S::setRadius));
    addPoint(all, "target position", Quantity::LENGTH, target, &T::getTargetPosition, &T::setTargetPosition);
    addPoint(all, "mirror orientation", Quantity::ANGLE, target, &T::getMirrorOrientation, &T::setMirrorOrientation);
    addPoint(all, "mirror position", Quantity::LENGTH, target, &T::getMirrorPosition, &T::setMirrorPosition);
    all.push_back({"mirror radius", Quantity::POSITIVE_LENGTH,
                   [](const XMLConfigFile& config) { return config.getTargetLocatorConfig()->getMirrorRadius(); },
                   [](XMLConfigFile& config, double value) { targetOf(config).setMirrorRadius(value); }});
    return all;
}

/// The sample of everything, in these units. Some of its elements state units of their own.
std::unique_ptr<XMLConfigFile> sampleIn(const std::string& native, const std::string& length,
                                        const std::string& angle) {
    std::string text = replaced(fullConfiguration(), "native=\"m\"", "native=\"" + native + "\"");
    text = replaced(text, "lengthUnit=\"m\" angleUnit=\"deg\"",
                    "lengthUnit=\"" + length + "\" angleUnit=\"" + angle + "\"");
    if (angle == "rad") {
        text = replaced(text, "min=\"-110\" max=\"110\"", "min=\"-2\" max=\"2\"");
    }
    return XMLConfigFile::parse(text, "cfg/display.xml");
}

bool isSame(double a, double b) {
    return std::bit_cast<std::uint64_t>(a) == std::bit_cast<std::uint64_t>(b);
}

std::vector<double> valuesOf(const XMLConfigFile& config, const std::vector<Setting>& settings) {
    std::vector<double> values;
    for (const Setting& setting : settings) {
        values.push_back(setting.get(config));
    }
    return values;
}

/// The parts of two texts that differ, from the first difference to the last.
std::pair<std::string, std::string> difference(const std::string& before, const std::string& after) {
    const std::size_t shorter = std::min(before.size(), after.size());
    std::size_t front = 0;
    while (front < shorter && before[front] == after[front]) {
        ++front;
    }
    std::size_t back = 0;
    while (back < shorter - front && before[before.size() - 1 - back] == after[after.size() - 1 - back]) {
        ++back;
    }
    return {before.substr(front, before.size() - front - back), after.substr(front, after.size() - front - back)};
}

bool isInsideOneNumber(const std::string& text) {
    return text.find_first_not_of("0123456789+-.e") == std::string::npos;
}

double anyValue(std::mt19937_64& random, Quantity quantity) {
    const int range = quantity == Quantity::ANGLE ? 1 : 12;
    std::uniform_real_distribution<double> mantissa(1.0, 2.0);
    std::uniform_int_distribution<int> exponent(-10, range);
    const double size = std::ldexp(mantissa(random), exponent(random));
    return quantity != Quantity::POSITIVE_LENGTH && (random() & 1U) != 0 ? -size : size;
}

TEST(GeometrySetters, AnyValueInAnyUnitIsHeldFromThenOnAndNothingElseChanges) {
    std::mt19937_64 random(1801);
    const TemporaryFolder folder;
    const std::vector<Setting> settings = allSettings();
    for (const std::string native : {"mm", "cm", "m", "in", "ft"}) {
        for (const std::string length : {"mm", "cm", "m", "in", "ft"}) {
            const auto config = sampleIn(native, length, length == "cm" ? "rad" : "deg");
            for (std::size_t i = 0; i < settings.size(); ++i) {
                const std::string before = config->text();
                std::vector<double> values = valuesOf(*config, settings);
                const double wanted = anyValue(random, settings[i].quantity);
                settings[i].set(*config, wanted);
                const double held = settings[i].get(*config);
                EXPECT_NEAR(held, wanted, std::abs(wanted) * 2.0 * std::numeric_limits<double>::epsilon());
                const auto [old, now] = difference(before, config->text());
                EXPECT_TRUE(isInsideOneNumber(old) && isInsideOneNumber(now)) << old << " became " << now;
                values[i] = held;
                EXPECT_TRUE(std::ranges::equal(valuesOf(*config, settings), values, isSame)) << settings[i].name;
                settings[i].set(*config, held);
                EXPECT_EQ(difference(before, config->text()).second, now) << "set to what is there";
            }
            config->save(folder.file("display.xml"));
            const auto again = XMLConfigFile::load(folder.file("display.xml"));
            EXPECT_TRUE(std::ranges::equal(valuesOf(*again, settings), valuesOf(*config, settings), isSame));
            EXPECT_EQ(again->text(), config->text());
        }
    }
}

TEST(GeometrySetters, TheOldValueBringsBackTheTextOfBefore) {
    const auto config = XMLConfigFile::parse(fullConfiguration(), "cfg/display.xml");
    const std::string before = config->text();
    for (const Setting& setting : allSettings()) {
        const double old = setting.get(*config);
        setting.set(*config, old + 0.123);
        EXPECT_NE(config->text(), before) << setting.name;
        setting.set(*config, old);
        EXPECT_EQ(config->text(), before) << setting.name;
    }
}

TEST(GeometrySetters, WhatTheGetterReturnsChangesNoByte) {
    for (const std::string& text : validConfigurations()) {
        const auto config = XMLConfigFile::parse(text, "cfg/display.xml");
        if (config->getProjectorConfigIds().empty()) {
            config->addProjectorConfig(L"a");
        }
        const std::string before = config->text();
        for (const Setting& setting : channelSettings()) {
            setting.set(*config, setting.get(*config));
        }
        ProjectorConfig& entry = entryOf(*config);
        entry.setProjectionModelName(entry.getProjectionModelName());
        entry.setCustomPlanarFile(entry.getCustomPlanarFile());
        if (IScreenConfig* const screen = config->getMutableScreenConfig()) {
            screen->setEyePoint(screen->getEyePoint());
            screen->setCentre(screen->getCentre());
            screen->setOrientation(screen->getOrientation());
            screen->setRadius(screen->getRadius());
            screen->setWidth(screen->getWidth());
            screen->setHeight(screen->getHeight());
            screen->setAzimuth(screen->getAzimuthMin(), screen->getAzimuthMax());
            screen->setElevation(screen->getElevationMin(), screen->getElevationMax());
            screen->setRails(screen->getLowerRail(), screen->getUpperRail());
        }
        if (TargetLocatorConfig* const target = config->getMutableTargetLocatorConfig()) {
            target->setTargetPosition(target->getTargetPosition());
            target->setMirrorOrientation(target->getMirrorOrientation());
            target->setMirrorPosition(target->getMirrorPosition());
            target->setMirrorRadius(target->getMirrorRadius());
            target->setYawTable(target->getYawTable());
            target->setPitchTable(target->getPitchTable());
        }
        EXPECT_EQ(config->text(), before);
    }
}

/// A hostile value is refused with one message and nothing changed, or held as any other.
void offer(const Setting& setting, XMLConfigFile& config, double value, int& refusals) {
    const std::vector<Setting> settings = allSettings();
    const std::string before = config.text();
    const std::vector<double> values = valuesOf(config, settings);
    try {
        setting.set(config, value);
        const auto again = XMLConfigFile::parse(config.text(), "cfg/display.xml");
        EXPECT_TRUE(isSame(setting.get(*again), setting.get(config))) << setting.name << " " << value;
        EXPECT_TRUE(std::isfinite(setting.get(config))) << setting.name;
    } catch (const VeltraniException& fault) {
        ++refusals;
        EXPECT_EQ(fault.file.rfind("Platform/Configuration/detail/", 0), 0U);
        EXPECT_EQ(fault.message.find(L'\n'), std::wstring::npos);
        for (const wchar_t* part : {L": <", L">", L": found ", L", expected ", L"; "}) {
            EXPECT_NE(fault.message.find(part), std::wstring::npos) << setting.name;
        }
        EXPECT_EQ(config.text(), before) << setting.name << " " << value;
        EXPECT_TRUE(std::ranges::equal(valuesOf(config, settings), values, isSame)) << setting.name << " " << value;
    }
}

TEST(GeometrySetters, HostileValuesAreRefusedWholeOrHeld) {
    for (const std::string native : {"mm", "m"}) {
        for (const std::string length : {"mm", "m", "ft"}) {
            const auto config = sampleIn(native, length, "deg");
            for (const Setting& setting : allSettings()) {
                for (const double value : {NOT_A_NUMBER, -NOT_A_NUMBER, INF, -INF}) {
                    int refusals = 0;
                    offer(setting, *config, value, refusals);
                    EXPECT_EQ(refusals, 1) << setting.name;
                }
                int refusals = 0;
                for (const double value : {0.0, -0.0, 5e-324, -5e-324, 2.2250738585072014e-308, -1e-310, 1e308, -1e308,
                                           1.7976931348623157e308, -1.7976931348623157e308, -1000.0, 1e22}) {
                    offer(setting, *config, value, refusals);
                }
                EXPECT_LE(refusals, setting.quantity == Quantity::NUMBER ? 0 : 11) << setting.name;
            }
        }
    }
}

TEST(GeometrySetters, ARefusalNamesTheRecordTheValueAndTheRemedy) {
    const auto messageOf = [](const std::function<void(XMLConfigFile&)>& change) {
        const auto config = sampleIn("m", "mm", "deg");
        const std::string before = config->text();
        std::wstring message = L"nothing was thrown";
        try {
            change(*config);
        } catch (const VeltraniException& fault) {
            message = fault.message;
        }
        EXPECT_EQ(config->text(), before);
        return message;
    };
    EXPECT_EQ(messageOf([](XMLConfigFile& config) { entryOf(config).setFrustumLeft(NOT_A_NUMBER); }),
              L"Projector \"02000000000A\": <Frustum> left: found nan, expected an angle such as -22.5; give a finite "
              L"number");
    EXPECT_EQ(messageOf([](XMLConfigFile& config) {
                  entryOf(config).setPosition({0.0, -INF, 0.0});
              }),
              L"Projector \"02000000000A\": <Position> y: found -inf, expected a length such as -2.5; give a finite "
              L"number");
    EXPECT_EQ(messageOf([](XMLConfigFile& config) { entryOf(config).setLayoutYMax(1e308); }),
              L"Projector \"02000000000A\": <Layout> yMax: found 1e+308, expected a length such as -2.5 that can be "
              L"represented in \"mm\"; give a value of sensible size, or state another unit in the file");
    EXPECT_EQ(messageOf([](XMLConfigFile& config) { screenOf(config).setRadius(0.0); }),
              L"Screen: <Radius> value: found 0, expected a length greater than 0 such as 2.5; correct the value");
    EXPECT_EQ(messageOf([](XMLConfigFile& config) { screenOf(config).setWidth(1.0); }),
              L"Screen: <Size> width: found shape=\"Sphere\", expected a shape that has this number; set a number that "
              L"it has");
    EXPECT_EQ(messageOf([](XMLConfigFile& config) {
                  targetOf(config).setMirrorPosition({1.0, NOT_A_NUMBER, 1.0});
              }),
              L"Target data, mirror: <Position> y: found nan, expected a length such as -2.5; give a finite number");
}

TEST(GeometrySetters, AValueThatRoundsToWhatIsThereChangesNoByte) {
    // Of the doubles between two numbers of millimetres that are read as neighbours, a display in cm holds some only.
    const auto config = XMLConfigFile::parse(
        "<Display version='1' lengthUnit='mm'><Units native='cm'/><Projectors><Projector id='a'>"
        "<Layout xMin='1.50' xMax='1100.0' yMin='0' yMax='1'/></Projector></Projectors></Display>",
        "t");
    ProjectorConfig& entry = entryOf(*config);
    int rounded = 0;
    double value = entry.getLayoutXMax();
    for (int i = 0; i < 100; ++i) {
        const std::string before = config->text();
        const double held = entry.getLayoutXMax();
        value = std::nextafter(value, 1e9);
        entry.setLayoutXMax(value);
        EXPECT_EQ(config->text() == before, entry.getLayoutXMax() == held);
        rounded += config->text() == before ? 1 : 0;
    }
    EXPECT_GT(rounded, 0);
    EXPECT_LT(rounded, 100);
    EXPECT_NE(config->text().find("xMin=\"1.50\""), std::string::npos);
}

}  // namespace
