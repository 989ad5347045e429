#include "KelvoControl/detail/LensModel.h"

#include <gtest/gtest.h>

namespace {

using Veltrani::KelvoControlDetail::LensName;

void expectParts(const LensName& name, const std::wstring& kind, const std::wstring& file) {
    EXPECT_EQ(name.kind, kind);
    EXPECT_EQ(name.file, file);
}

TEST(LensName, AFileMayStandBehindTheFirstColon) {
    expectParts(LensName::of(L"Fisheye:a/b.yml", L""), L"Fisheye", L"a/b.yml");
    expectParts(LensName::of(L"Fisheye:C:\\b.yml", L""), L"Fisheye", L"C:\\b.yml");
    expectParts(LensName::of(L"Fisheye:", L""), L"Fisheye", L"");
    expectParts(LensName::of(L"Fisheye", L""), L"Fisheye", L"");
    expectParts(LensName::of(L"", L""), L"", L"");
}

TEST(LensName, WithAFileApartTheKindIsTakenWhole) {
    expectParts(LensName::of(L"Fisheye", L"a.yml"), L"Fisheye", L"a.yml");
    expectParts(LensName::of(L"Fisheye:b.yml", L"a.yml"), L"Fisheye:b.yml", L"a.yml");
}

}  // namespace
