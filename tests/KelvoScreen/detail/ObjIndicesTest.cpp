#include "KelvoScreen/detail/ObjText.h"

#include "KelvoScreen/ObjLoadException.h"

#include <gtest/gtest.h>

#include <string>

namespace {

using Veltrani::KelvoScreenDetail::ObjCursor;
using Veltrani::KelvoScreenDetail::ObjIndices;

ObjIndices withElements(int count) {
    ObjIndices indices("vertex");
    for (int i = 0; i < count; ++i) {
        indices.define();
    }
    return indices;
}

TEST(ObjIndices, CountsElements) {
    EXPECT_EQ(withElements(0).count(), 0U);
    EXPECT_EQ(withElements(3).count(), 3U);
}

TEST(ObjIndices, ResolvesFromTheStartAndFromTheEnd) {
    const ObjCursor cursor("f");
    ObjIndices indices = withElements(4);
    EXPECT_EQ(indices.resolve(1, cursor), 0U);
    EXPECT_EQ(indices.resolve(4, cursor), 3U);
    EXPECT_EQ(indices.resolve(-1, cursor), 3U);
    EXPECT_EQ(indices.resolve(-4, cursor), 0U);
    indices.requireAllDefined();
}

TEST(ObjIndices, RefusesAtOnceWhatNoLaterElementCanMend) {
    const ObjCursor cursor("f");
    ObjIndices indices = withElements(4);
    EXPECT_THROW((void)indices.resolve(0, cursor), ObjLoadException);
    EXPECT_THROW((void)indices.resolve(-5, cursor), ObjLoadException);
    EXPECT_THROW((void)indices.resolve((std::int64_t{1} << 32) + 1, cursor), ObjLoadException);
}

TEST(ObjIndices, LaterElementsMendAnIndexAhead) {
    const ObjCursor cursor("f");
    ObjIndices indices = withElements(1);
    EXPECT_EQ(indices.resolve(3, cursor), 2U);
    indices.define();
    EXPECT_THROW(indices.requireAllDefined(), ObjLoadException);
    indices.define();
    indices.requireAllDefined();
}

}  // namespace
