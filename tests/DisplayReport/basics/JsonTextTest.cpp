#include "DisplayReport/basics/JsonText.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <string>

namespace {

using Veltrani::DisplayReport::safeForTerminals;

TEST(JsonText, WhatSteersATerminalIsEscaped) {
    EXPECT_EQ(safeForTerminals("\"a\u0080\u009b\u009f\u200e\u200f\u202a\u202e\u2066\u2069\u061c\u2028\x7fz\""),
              R"("a\u0080\u009b\u009f\u200e\u200f\u202a\u202e\u2066\u2069\u061c\u2028\u007fz")");
    EXPECT_EQ(safeForTerminals("\"\U000e0041\""), R"("\udb40\udc41")") << "two units of UTF-16";
}

TEST(JsonText, EverythingElseStaysAsItIs) {
    for (const char* json : {"", "{\"a\":[1,2.5e-3,null]}", "\"B\u00fchne \u5de6 \U0001f600 \\n\\u0007\"",
                             "\"\u00a0\u200a\u2010\u202f\u2070\""}) {
        EXPECT_EQ(safeForTerminals(json), json);
    }
}

TEST(JsonText, EveryCharacterIsReadAsTheOneItWas) {
    std::string text;
    for (char32_t c = 1; c < 0x110000; c += c < 0x3000 ? 1 : 97) {
        if (c < 0xD800 || c > 0xDFFF) {
            const auto byte = [&](unsigned int first, unsigned int shift, unsigned int mask) {
                text += static_cast<char>(first | ((static_cast<unsigned int>(c) >> shift) & mask));
            };
            if (c < 0x80) {
                byte(0, 0, 0x7F);
            } else if (c < 0x800) {
                byte(0xC0, 6, 0x1F);
                byte(0x80, 0, 0x3F);
            } else if (c < 0x10000) {
                byte(0xE0, 12, 0x0F);
                byte(0x80, 6, 0x3F);
                byte(0x80, 0, 0x3F);
            } else {
                byte(0xF0, 18, 0x07);
                byte(0x80, 12, 0x3F);
                byte(0x80, 6, 0x3F);
                byte(0x80, 0, 0x3F);
            }
        }
    }
    EXPECT_EQ(nlohmann::json::parse(safeForTerminals(nlohmann::json(text).dump())).get<std::string>(), text);
}

TEST(JsonText, AnObjectIsReadBackAsItsMembers) {
    using namespace Veltrani::DisplayReport;
    const std::vector<std::string> names{"a\"b\n", "\u202e"};
    const std::string text = JsonObject()
                                 .add("name", names[0])
                                 .add("count", std::size_t{3})
                                 .add("part", 0.1)
                                 .add("none", std::nan(""))
                                 .add("is", true)
                                 .addKnown("known", true, "x")
                                 .addKnown("unknown", false, "x")
                                 .addJson("list", jsonList(names, [](const std::string& name) { return jsonOf(name); }))
                                 .addJson("empty", jsonList(std::vector<int>(), [](int) { return std::string(); }))
                                 .text();
    EXPECT_EQ(nlohmann::json::parse(text), (nlohmann::json{{"name", "a\"b\n"},
                                                           {"count", 3},
                                                           {"part", 0.1},
                                                           {"none", nullptr},
                                                           {"is", true},
                                                           {"known", "x"},
                                                           {"unknown", nullptr},
                                                           {"list", names},
                                                           {"empty", nlohmann::json::array()}}));
    EXPECT_EQ(text.find("\u202e"), std::string::npos) << "it would steer a terminal";
}

}  // namespace
