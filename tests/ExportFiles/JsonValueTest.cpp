#include "ExportFiles/JsonValue.h"

#include "Common/Utf8.h"
#include "Common/VeltraniException.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <functional>
#include <limits>
#include <string>
#include <vector>

namespace {

using Veltrani::ExportFiles::JsonValue;
using Json = nlohmann::json;

constexpr double ANY = std::numeric_limits<double>::max();

/// What is thrown where a value of a file is read, without its remedy; empty where nothing is.
std::string faultOfJson(const Json& json, const std::function<void(const JsonValue&)>& read) {
    const std::string remedy = ": export the display again";
    try {
        read(JsonValue(json, "a.json: "));
    } catch (const VeltraniParseException& fault) {
        const std::string text = Veltrani::toUtf8(fault.message);
        EXPECT_TRUE(text.ends_with(remedy)) << text;
        return text.substr(0, text.size() - remedy.size());
    }
    return "";
}

template <class Read>
std::string faultOf(const std::string& json, Read read) {
    return faultOfJson(Json::parse(json), [&read](const JsonValue& value) { static_cast<void>(read(value)); });
}

TEST(JsonValue, NamesTheWayToAMember) {
    const auto json = Json::parse(R"({"views": [{"name": "a"}, {"name": "b", "blend": null}]})");
    const JsonValue file(json, "a.json: ");
    const auto views = file.at("views").items();
    ASSERT_EQ(views.size(), 2U);
    EXPECT_EQ(views[0].at("name").text(), "a");
    EXPECT_EQ(views[1].at("name").text(), "b");
    EXPECT_TRUE(views[1].at("blend").isNull());
    EXPECT_FALSE(views[1].at("name").isNull());
    EXPECT_TRUE(views[1].at("name").isText());
    EXPECT_FALSE(views[1].isText());
    EXPECT_TRUE(views[1].has("blend"));
    EXPECT_FALSE(views[0].has("blend"));
    EXPECT_FALSE(file.at("views").has("blend")) << "a list has no members";
    const auto faultOfPlace = [&json](auto read) { return faultOfJson(json, read); };
    EXPECT_EQ(faultOfPlace([](const JsonValue& value) { static_cast<void>(value.at("files")); }),
              "a.json: : found an object, expected an object with the member files");
    EXPECT_EQ(faultOfPlace([](const JsonValue& value) { static_cast<void>(value.at("views").at("name")); }),
              "a.json: views: found a list of 2, expected an object with the member name");
    EXPECT_EQ(faultOfPlace(
                  [](const JsonValue& value) { static_cast<void>(value.at("views").items()[1].at("name").truth()); }),
              "a.json: views[1].name: found \"b\", expected true or false");
}

TEST(JsonValue, IsWhatItIsReadAsAndNothingElse) {
    const auto items = [](const JsonValue& value) { return value.items().size(); };
    const auto text = [](const JsonValue& value) { return value.text(); };
    const auto truth = [](const JsonValue& value) { return value.truth(); };
    EXPECT_EQ(faultOf("{}", items), "a.json: : found an object, expected a list");
    EXPECT_EQ(faultOf("1", text), "a.json: : found 1, expected a text");
    EXPECT_EQ(faultOf("\"true\"", truth), "a.json: : found \"true\", expected true or false");
    EXPECT_TRUE(JsonValue(Json(true), "").truth());
    EXPECT_FALSE(JsonValue(Json(false), "").truth());
}

TEST(JsonValue, CutsWhatIsLongAndSpellsOutWhatIsNoAscii) {
    const auto truth = [](const JsonValue& value) { return value.truth(); };
    // With its quotation marks the first one is 60 characters long.
    const std::string whole = '"' + std::string(58, 'x') + '"';
    EXPECT_EQ(faultOf(whole, truth), "a.json: : found " + whole + ", expected true or false");
    EXPECT_EQ(faultOf('"' + std::string(59, 'x') + '"', truth),
              "a.json: : found \"" + std::string(59, 'x') + "..., expected true or false");
    EXPECT_EQ(faultOf("\"\xC3\xA9\"", truth), "a.json: : found \"\\u00e9\", expected true or false");
}

TEST(JsonValue, ANumberMayBeEitherOfItsBounds) {
    const auto bounded = [](const JsonValue& value) { return value.number(-0.5, 2); };
    for (const double good : {-0.5, 0.0, 1.75, 2.0}) {
        EXPECT_EQ(JsonValue(Json(good), "").number(-0.5, 2), good);
    }
    for (const std::string& bad : std::vector<std::string>{"-0.51", "2.01", "null", "[1]", "true"}) {
        const std::string found = bad == "[1]" ? "a list of 1" : bad;
        EXPECT_EQ(faultOf(bad, bounded), "a.json: : found " + found + ", expected a number from -0.5 to 2.0");
    }
    const auto any = [](const JsonValue& value) { return value.number(-ANY, ANY); };
    EXPECT_EQ(faultOf("1e308", any), "");
    EXPECT_EQ(faultOf("-1e308", any), "");
    EXPECT_EQ(faultOf("\"1\"", any), "a.json: : found \"1\", expected a finite number");
    const Json infinite = std::numeric_limits<double>::infinity();
    EXPECT_EQ(faultOfJson(infinite, [&any](const JsonValue& value) { static_cast<void>(any(value)); }),
              "a.json: : found null, expected a finite number");
}

TEST(JsonValue, AWholeNumberMayBeEitherOfItsBounds) {
    const auto whole = [](const JsonValue& value) { return value.whole(-2, 7); };
    for (const int good : {-2, 0, 7}) {
        EXPECT_EQ(JsonValue(Json(good), "").whole(-2, 7), good);
    }
    for (const std::string& bad :
         std::vector<std::string>{"-3", "8", "1.5", "\"1\"", "18446744073709551615", "-9223372036854775808"}) {
        EXPECT_EQ(faultOf(bad, whole), "a.json: : found " + bad + ", expected a whole number from -2 to 7");
    }
}

TEST(JsonValue, APointHasThreeNumbersAndASizeTwoAboveZero) {
    EXPECT_EQ(JsonValue(Json::parse("[1, -2.5, 3e5]"), "").point(), (Point<double, 3>{1.0, -2.5, 3e5}));
    EXPECT_EQ(JsonValue(Json::parse("[1, 1000000]"), "").pixels(), (Point<int, 2>{1, 1'000'000}));
    const auto point = [](const JsonValue& value) { return value.point(); };
    const auto pixels = [](const JsonValue& value) { return value.pixels(); };
    EXPECT_EQ(faultOf("[1, 2]", point), "a.json: : found a list of 2, expected a list of three numbers");
    EXPECT_EQ(faultOf("[1, 2, 3, 4]", point), "a.json: : found a list of 4, expected a list of three numbers");
    EXPECT_EQ(faultOf("[1, 2, null]", point), "a.json: [2]: found null, expected a finite number");
    EXPECT_EQ(faultOf("[1]", pixels), "a.json: : found a list of 1, expected a list of two whole numbers");
    EXPECT_EQ(faultOf("[1, 2, 3]", pixels), "a.json: : found a list of 3, expected a list of two whole numbers");
    EXPECT_EQ(faultOf("[0, 5]", pixels), "a.json: [0]: found 0, expected a whole number from 1 to 1000000");
    EXPECT_EQ(faultOf("[5, 1000001]", pixels), "a.json: [1]: found 1000001, expected a whole number from 1 to 1000000");
}

}  // namespace
