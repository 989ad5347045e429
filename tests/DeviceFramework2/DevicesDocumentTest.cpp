// The snippets that the page of the devices shows are read by the classes that it names.
#include "DeviceFramework2/DeviceSnippet.h"
#include "DeviceFramework2/VirtualProjectorSnippet.h"
#include "support/TestPaths.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <fstream>
#include <iterator>
#include <string>
#include <vector>

namespace {

using testing::HasSubstr;
using Veltrani::DeviceFramework2::DeviceSnippet;
using Veltrani::DeviceFramework2::VirtualProjectorSnippet;

/// What stands between the fences of XML of the page, without the end of the last line.
std::vector<std::wstring> snippets() {
    std::ifstream in(sourceFolder() + "/docs/devices.md", std::ios::binary);
    const std::string page{std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
    static const std::string BEGIN = "```xml\n";
    std::vector<std::wstring> found;
    for (std::size_t at = page.find(BEGIN); at != std::string::npos; at = page.find(BEGIN, at)) {
        at += BEGIN.size();
        const std::string text = page.substr(at, page.find("\n```", at) - at);
        found.emplace_back(text.begin(), text.end());  // ASCII
    }
    return found;
}

TEST(DevicesDocument, ItsSnippetsAreRead) {
    const std::vector<std::wstring> shown = snippets();
    ASSERT_EQ(shown.size(), 2U);
    EXPECT_NO_THROW(static_cast<void>(DeviceSnippet::parse(shown[0])));
    const auto wrapper = VirtualProjectorSnippet::parse(shown[1]);
    EXPECT_EQ(wrapper.width, 1920);
    EXPECT_EQ(wrapper.height, 1200);
    EXPECT_THAT(wrapper.wrapped, HasSubstr(shown[0]));
}

}  // namespace
