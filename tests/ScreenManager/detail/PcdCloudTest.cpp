#include "ScreenManager/detail/PcdCloud.h"

#include "PcdCloudFixture.h"
#include "PcdSamples.h"
#include "support/AllocationFault.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <array>
#include <bit>
#include <clocale>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <functional>
#include <limits>
#include <new>
#include <random>
#include <sstream>
#include <string>
#include <vector>

namespace {

using testing::HasSubstr;
using Veltrani::ScreenManagerDetail::PcdCloud;

constexpr std::array<const char*, 3> KINDS{"ascii", "binary", "binary_compressed"};

class PcdCloudTest : public PcdCloudFixture {};

std::uint32_t bitsOf(float value) {
    return std::bit_cast<std::uint32_t>(value);
}

/// A number of double precision and the bits of the single-precision number nearest to it, the even one of two;
/// both from Python's struct module.
struct Rounding {
    std::uint64_t bits;
    std::uint32_t rounded;
};

const std::vector<Rounding> ROUNDINGS{{0x3fb999999999999a, 0x3dcccccd},   // 0.1
                                      {0x3ff0000010000000, 0x3f800000},   // half-way, down to even
                                      {0x3ff0000030000000, 0x3f800002},   // half-way, up to even
                                      {0x3ff0000010000004, 0x3f800001},   // a hair above half-way
                                      {0x4170000010000000, 0x4b800000},   // 16777217
                                      {0xc170000030000000, 0xcb800002},   // -16777219
                                      {0x366244ce242c5561, 0x00000000},   // 1e-46
                                      {0x3690000000000000, 0x00000000},   // half of the least number
                                      {0x369036aa2680f22c, 0x00000001},   // 7.1e-46
                                      {0x3810000000000000, 0x00800000},   // the least normal number
                                      {0x47efffffe0000000, 0x7f7fffff},   // the greatest number
                                      {0x8000000000000000, 0x80000000},   // -0
                                      {0x40fe240c9fbe76c9, 0x47f12065},   // 123456.789
                                      {0xc005bf0a8b145769, 0xc02df854},   // -e
                                      {0x4340000000000000, 0x5a000000}};  // 2^53

std::vector<double> doubles() {
    std::vector<double> values;
    for (const Rounding& row : ROUNDINGS) {
        values.push_back(std::bit_cast<double>(row.bits));
    }
    return values;
}

template <class T>
std::vector<T> backwards(std::vector<T> values) {
    return {values.rbegin(), values.rend()};
}

TEST_F(PcdCloudTest, DoublesOfEveryKindOfFileAreRoundedOnce) {
    const std::size_t count = ROUNDINGS.size();
    for (const char* kind : KINDS) {
        const auto cloud =
            load(pcd::file({pcd::column("x", 'F', doubles()), pcd::column("y", 'F', backwards(doubles())),
                            pcd::column("z", 'F', doubles())},
                           kind));
        ASSERT_EQ(cloud->size(), count) << kind;
        EXPECT_EQ(cloud->width, count);
        EXPECT_EQ(cloud->height, 1U);
        EXPECT_TRUE(cloud->is_dense) << kind;
        for (std::size_t i = 0; i < count; ++i) {
            EXPECT_EQ(bitsOf((*cloud)[i].x), ROUNDINGS[i].rounded) << kind << i;
            EXPECT_EQ(bitsOf((*cloud)[i].y), ROUNDINGS[count - 1 - i].rounded) << kind << i;
            EXPECT_EQ(bitsOf((*cloud)[i].z), ROUNDINGS[i].rounded) << kind << i;
        }
    }
}

TEST_F(PcdCloudTest, ThePrecisionIsThatOfEachCoordinate) {
    const std::vector<float> singles{1.5F, -0.25F, 3e38F};
    for (const char* kind : KINDS) {
        const auto cloud =
            load(pcd::file({pcd::column("z", 'F', std::vector<double>{1.1, 2.2, 3.3}), pcd::column("y", 'F', singles),
                            pcd::column("x", 'F', std::vector<double>{-7, 8, 9e-9})},
                           kind));
        for (std::size_t i = 0; i < singles.size(); ++i) {
            EXPECT_EQ((*cloud)[i].y, singles[i]) << kind;
        }
        EXPECT_EQ((*cloud)[1].x, 8.0F) << kind;
        EXPECT_EQ((*cloud)[2].z, 3.3F) << kind;
    }
}

TEST_F(PcdCloudTest, FieldsOfAnySizeMayStandBesideTheCoordinates) {
    const std::vector<float> x{1, 2, 3};
    const std::vector<float> y{-4, 5.5F, 6};
    const std::vector<float> z{7, -8, 1e-3F};
    for (const char* kind : KINDS) {
        const std::string content =
            pcd::file({pcd::column("stamp", 'F', std::vector<double>{1e9, 2e9, 3e9}), pcd::column("x", 'F', x),
                       pcd::column("ring", 'U', std::vector<std::uint16_t>{1, 2, 3}),
                       pcd::column("a", 'I', std::vector<std::int32_t>{-1, 2, -3}), pcd::column("y", 'F', y),
                       pcd::column("id", 'U', std::vector<std::uint64_t>{1, 1ULL << 40, 3}),
                       pcd::column("rgb", 'U', std::vector<std::uint32_t>{1, 2, 0xffffff}), pcd::column("z", 'F', z),
                       pcd::column("b", 'I', std::vector<std::int64_t>{-1, 2, 3}),
                       pcd::column("c", 'I', std::vector<std::int16_t>{-1, 2, 3}),
                       pcd::column("intensity", 'F', std::vector<float>{0.1F, 0.2F, 0.3F})},
                      kind);
        const auto cloud = load(content);
        ASSERT_EQ(cloud->size(), x.size()) << kind;
        for (std::size_t i = 0; i < x.size(); ++i) {
            EXPECT_EQ((pcd::Position{(*cloud)[i].x, (*cloud)[i].y, (*cloud)[i].z}), (pcd::Position{x[i], y[i], z[i]}))
                << kind;
        }
    }
}

TEST_F(PcdCloudTest, SmallFieldsAndPaddingMayStandBesideDoubles) {
    const std::vector<double> x{1.1, 2.2};
    const pcd::Column flag{"flag", 'U', 1, {"1", "2"}, "\x01\x02"};
    const pcd::Column label{"label", 'I', 1, {"-1", "5"}, "\xff\x05"};
    const pcd::Column padding{"_", 'U', 1, {"0", "0"}, "ab"};
    const auto y = pcd::column("y", 'F', std::vector<double>{-3.3, 4.4});
    const auto z = pcd::column("z", 'F', std::vector<double>{5.5, -6.6});
    for (const char* kind : KINDS) {
        const auto cloud = load(pcd::file({flag, pcd::column("x", 'F', x), label, y, flag, z}, kind));
        EXPECT_EQ((*cloud)[1].x, 2.2F) << kind;
        EXPECT_EQ((*cloud)[0].y, -3.3F) << kind;
        EXPECT_EQ((*cloud)[1].z, -6.6F) << kind;
    }
    const auto padded = load(pcd::file({padding, pcd::column("x", 'F', x), padding, padding, y, z}, "binary"));
    EXPECT_EQ((*padded)[0].x, 1.1F);
    EXPECT_EQ((*padded)[1].z, -6.6F);
}

TEST_F(PcdCloudTest, WordsForWhatIsNotFiniteAreReadAsThat) {
    for (const std::string size : {"4", "8"}) {
        for (const std::string word :
             {"nan", "NaN", "-nan", "+nan", "-NAN", "nan(ind)", "-nan(ind)", "inf", "-inf", "+inf", "Infinity"}) {
            const bool isNan = word.find_first_of("iI") != word.find_first_of("iIaA");
            // Numbers behind such a word are read as they are.
            const auto cloud = load("FIELDS x y z\nSIZE " + size + " 4 " + size +
                                    "\nTYPE F F F\nPOINTS 3\nDATA ascii\n1.5 -2.5 1e-3\n" + word + " 2.25 " + word +
                                    "\n0.1 0.2 0.3\n");
            ASSERT_EQ(cloud->size(), 3U);
            EXPECT_FALSE(cloud->is_dense) << word;
            EXPECT_EQ(std::isnan((*cloud)[1].x), isNan) << word;
            EXPECT_EQ(std::isinf((*cloud)[1].z), !isNan) << word;
            if (!isNan) {
                EXPECT_EQ(std::signbit((*cloud)[1].x), word[0] == '-') << word;
            }
            EXPECT_EQ((*cloud)[1].y, 2.25F) << word;
            EXPECT_EQ((pcd::Position{(*cloud)[0].x, (*cloud)[0].y, (*cloud)[0].z}),
                      (pcd::Position{1.5F, -2.5F, 1e-3F}));
            EXPECT_EQ((pcd::Position{(*cloud)[2].x, (*cloud)[2].y, (*cloud)[2].z}), (pcd::Position{0.1F, 0.2F, 0.3F}));
        }
    }
}

template <class T>
std::vector<T> notFinite() {
    const T infinity = std::numeric_limits<T>::infinity();
    const T nan = std::numeric_limits<T>::quiet_NaN();
    return {infinity, -infinity, nan, -nan};
}

TEST_F(PcdCloudTest, ACloudWithoutAFinitePointIsOne) {
    for (const char* kind : KINDS) {
        for (const bool isDouble : {false, true}) {
            const pcd::Column z =
                isDouble ? pcd::column("z", 'F', notFinite<double>()) : pcd::column("z", 'F', notFinite<float>());
            const std::vector<float> zero(z.words.size());
            const auto cloud = load(pcd::file({pcd::column("x", 'F', zero), pcd::column("y", 'F', zero), z}, kind));
            ASSERT_EQ(cloud->size(), 4U) << kind;
            EXPECT_FALSE(cloud->is_dense) << kind;
            EXPECT_EQ((*cloud)[0].z, std::numeric_limits<float>::infinity()) << kind;
            EXPECT_EQ((*cloud)[1].z, -std::numeric_limits<float>::infinity()) << kind;
            EXPECT_TRUE(std::isnan((*cloud)[2].z) && std::isnan((*cloud)[3].z)) << kind;
        }
    }
}

TEST_F(PcdCloudTest, ADoubleBeyondSinglePrecisionIsRefused) {
    const auto file = [](double value, const char* kind) {
        return pcd::file(
            {pcd::column("x", 'F', std::vector<double>{1, 2}), pcd::column("y", 'F', std::vector<double>{3, value}),
             pcd::column("z", 'F', std::vector<double>{5, 6})},
            kind);
    };
    for (const char* kind : {"binary", "binary_compressed"}) {
        // The last is half-way between the greatest number and infinity.
        for (const double value : {1e39, -1e300, 3.4028236e38, 0x1.ffffffp127}) {
            EXPECT_EQ(refusal(file(value, kind)),
                      "found a number beyond single precision as y of point 2, expected at most 3.4e38; correct the "
                      "point, or export the cloud in a larger unit");
        }
        for (const double value : {3.4028234663852886e38, 3.4028234663852889e38, 3.4028235e38, 0x1.fffffefffffffp127}) {
            EXPECT_EQ((*load(file(value, kind)))[1].y, std::numeric_limits<float>::max());
            EXPECT_EQ((*load(file(-value, kind)))[1].y, std::numeric_limits<float>::lowest());
        }
    }
    EXPECT_THAT(refusal(file(1e39, "ascii")), HasSubstr("line 9: found \"1e+39\""));
    EXPECT_EQ(refusal(file(-3.4028234663852886e38, "ascii")), "");
}

TEST_F(PcdCloudTest, TheGreatestNumberIsReadHoweverItIsPrinted) {
    for (const std::string size : {"4", "8"}) {
        for (const std::string word :
             {"3.40282347e+38", "3.4028235e38", "3.4028234663852886e+38", "3.4028235677973364e38"}) {
            const auto cloud = load("FIELDS x y z\nSIZE " + size + " 4 " + size +
                                    "\nTYPE F F F\nPOINTS 1\nDATA ascii\n" + word + " -" + word + " " + word + "\n");
            EXPECT_EQ((*cloud)[0].x, std::numeric_limits<float>::max()) << word;
            EXPECT_EQ((*cloud)[0].y, std::numeric_limits<float>::lowest()) << word;
            EXPECT_EQ((*cloud)[0].z, std::numeric_limits<float>::max()) << word;
            EXPECT_TRUE(cloud->is_dense) << word;
        }
    }
}

TEST_F(PcdCloudTest, OrganisedCloudsStayOrganised) {
    const std::vector<double> six{1, 2, 3, 4, 5, 6};
    const std::string file =
        pcd::file({pcd::column("x", 'F', six), pcd::column("y", 'F', six), pcd::column("z", 'F', six)}, "binary");
    const auto cloud = load(pcd::replaced(file, "WIDTH 6\nHEIGHT 1", "WIDTH 3\nHEIGHT 2"));
    EXPECT_EQ(cloud->width, 3U);
    EXPECT_EQ(cloud->height, 2U);
    EXPECT_EQ((*cloud)(2, 1).x, 6.0F);
}

TEST_F(PcdCloudTest, TheViewpointIsReadAndMovesNothing) {
    const std::string viewpoint = "VIEWPOINT 1 2 3 0 1 0 0\nPOINTS 1\nDATA ascii\n4 5 6\n";
    for (const std::string size : {"4", "8"}) {
        const auto cloud = load("FIELDS x y z\nSIZE " + size + " 4 4\nTYPE F F F\n" + viewpoint);
        EXPECT_EQ((*cloud)[0].x, 4.0F);
        EXPECT_EQ(cloud->sensor_origin_[2], 3.0F);
        EXPECT_EQ(cloud->sensor_orientation_.x(), 1.0F);
    }
}

/// Numbers of up to 25 digits, whose last bits depend on how they are read.
std::string longNumbers(std::size_t count) {
    std::mt19937 random(7);
    std::uniform_int_distribution<int> digit(0, 9);
    std::ostringstream text;
    for (std::size_t i = 0; i < count; ++i) {
        for (int axis = 0; axis < 3; ++axis) {
            text << (digit(random) < 5 ? "-" : "") << digit(random) << '.';
            for (int k = 0; k < 24; ++k) {
                text << digit(random);
            }
            text << (axis < 2 ? ' ' : '\n');
        }
    }
    return text.str();
}

TEST_F(PcdCloudTest, OrdinaryFilesAreReadByTheLibrarysOwnReader) {
    constexpr std::size_t COUNT = 2000;
    std::string text = longNumbers(COUNT);
    // Above half-way between two numbers, but not any more once it has become a double.
    const std::string tricky = "1.00000005960464477539062500000000000001";
    text.replace(0, text.find('\n'), tricky + " " + tricky + " " + tricky);
    const std::string file = pcd::header(COUNT, "ascii") + text;
    const auto expected = readByLibrary(file);
    ASSERT_TRUE(expected.has_value());
    const auto cloud = load(file);
    ASSERT_EQ(cloud->size(), COUNT);
    for (std::size_t i = 0; i < COUNT; ++i) {
        for (int axis = 0; axis < 3; ++axis) {
            ASSERT_EQ(bitsOf((*cloud)[i].data[axis]), bitsOf((*expected)[i].data[axis])) << i;
        }
    }
    EXPECT_NE(bitsOf((*cloud)[0].y), bitsOf(std::strtof(tricky.c_str(), nullptr)))
        << "a reader of another kind would have rounded once";
}

/// A locale of this process that writes 1,5; made here, as few machines have one.
class DecimalCommas {
public:
    explicit DecimalCommas(const TemporaryFolder& folder) {
        const std::string command = "localedef -i de_DE -f UTF-8 " + folder.file("de_DE.UTF-8") + " 2>/dev/null >&2";
        m_isMade = std::system(command.c_str()) == 0 && ::setenv("LOCPATH", folder.file("").c_str(), 1) == 0 &&
                   std::setlocale(LC_NUMERIC, "de_DE.UTF-8") != nullptr;
    }
    ~DecimalCommas() {
        std::setlocale(LC_NUMERIC, "C");
        ::unsetenv("LOCPATH");
    }
    DecimalCommas(const DecimalCommas&) = delete;
    DecimalCommas& operator=(const DecimalCommas&) = delete;

    [[nodiscard]] bool isMade() const { return m_isMade && std::atof("1,5") == 1.5; }

private:
    bool m_isMade = false;
};

TEST_F(PcdCloudTest, NumbersHavePointsWhateverTheLocaleOfTheProcess) {
    const DecimalCommas locale(folder);
    if (!locale.isMade()) {
        GTEST_SKIP() << "this machine has no description of a locale with decimal commas";
    }
    for (const std::string size : {"4", "8"}) {
        const auto cloud = load("FIELDS x y z\nSIZE " + size + " 4 4\nTYPE F F F\nPOINTS 2\nDATA ascii\n" +
                                "1.5 2.5 3.5\n-0.25 nan 1.125\n");
        EXPECT_EQ((pcd::Position{(*cloud)[0].x, (*cloud)[0].y, (*cloud)[0].z}), (pcd::Position{1.5F, 2.5F, 3.5F}));
        EXPECT_EQ((*cloud)[1].x, -0.25F);
        EXPECT_EQ((*cloud)[1].z, 1.125F);
    }
    EXPECT_EQ(std::atof("1,5"), 1.5) << "the locale of the process is as it was";
}

TEST_F(PcdCloudTest, WhereverMemoryRunsOutForDoublesItIsSaid) {
    constexpr std::size_t COUNT = 10'000;
    const std::vector<double> values(COUNT, 1.5);
    const std::string content = pcd::file(
        {pcd::column("x", 'F', values), pcd::column("y", 'F', values), pcd::column("z", 'F', values)}, "binary");
    const std::string path = folder.write("a.pcd", content);
    const Veltrani::RegularFile file(path);
    std::size_t faults = 0;
    std::shared_ptr<PcdCloud::Cloud> cloud;
    while (!cloud) {
        try {
            const AllocationFault fault(faults++, COUNT * sizeof(float));
            cloud = PcdCloud::read(file);
        } catch (const std::bad_alloc&) {
            continue;
        }
    }
    EXPECT_GE(faults, 4U) << "the header, what reading takes at most, the fields and the points";
    EXPECT_EQ((*cloud)[COUNT - 1].z, 1.5F);
}

}  // namespace
