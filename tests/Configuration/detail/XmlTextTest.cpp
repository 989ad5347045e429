#include "Configuration/detail/ValueText.h"

#include "Common/VeltraniException.h"

#include <gtest/gtest.h>

namespace {

using Veltrani::ConfigurationDetail::xmlText;

TEST(XmlText, KeepsWhatXmlCanHold) {
    EXPECT_EQ(xmlText(L"", L"it"), "");
    EXPECT_EQ(xmlText(L" a\tb\nc\rd <&>\"' \u00e9\u20ac\U0001f4fd\ufffd", L"it"),
              " a\tb\nc\rd <&>\"' \u00e9\u20ac\U0001f4fd\ufffd");
}

TEST(XmlText, RefusesWhatXmlCannotHold) {
    for (const int code :
         {0x0, 0x1, 0x8, 0xB, 0xC, 0xE, 0x1F, 0xD800, 0xDBFF, 0xDC00, 0xDFFF, 0xFFFE, 0xFFFF, 0x110000, -61}) {
        const std::wstring text = std::wstring(L"a") + static_cast<wchar_t>(code) + L"b";
        try {
            static_cast<void>(xmlText(text, L"The name"));
            ADD_FAILURE() << "accepted " << code;
        } catch (const VeltraniException& fault) {
            EXPECT_EQ(fault.message, L"The name holds a character that a configuration file cannot store");
        }
    }
}

}  // namespace
