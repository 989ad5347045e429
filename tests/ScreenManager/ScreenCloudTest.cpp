#include "ScreenManager/Screen.h"

#include "Common/ExceptionCause.h"
#include "Common/Point.h"
#include "Common/Utf8.h"
#include "PcdSamples.h"
#include "support/AllocationFault.h"
#include "support/LogTrap.h"
#include "support/TemporaryFolder.h"
#include "support/TestPaths.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <pcl/console/print.h>
#include <pcl/io/pcd_io.h>
#include <sys/stat.h>

#include <array>
#include <atomic>
#include <clocale>
#include <cmath>
#include <filesystem>
#include <map>
#include <thread>

namespace {

using std::chrono::steady_clock;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::SizeIs;

const std::vector<pcd::Position> POINTS{{1.0F, 2.0F, 3.0F}, {-4.5F, 0.25F, 1e-3F}, {7.0F, 8.0F, 9.0F}};

const std::string CUT_OFF = "export the cloud again: the file is cut off, or its header is wrong";

std::string cloudText(const std::wstring& path) {
    return "Unable to load Point Cloud Data file! Ensure the PCD file " + Veltrani::toUtf8(path) +
           " exists and is valid.";
}

class ScreenCloudTest : public testing::Test {
protected:
    std::wstring write(const std::string& name, const std::string& content) const {
        return Veltrani::fromUtf8(folder.write(name, content));
    }

    /// Why a load is refused; the message itself must be the usual one.
    std::string causeOfRefusal(const std::wstring& path) {
        try {
            screen.loadModelPCD(path, false);
        } catch (const VeltraniMissingFileException& fault) {
            EXPECT_EQ(Veltrani::toUtf8(fault.message), cloudText(path));
            EXPECT_EQ(fault.line, -1);
            return Veltrani::toUtf8(Veltrani::causeOf(fault));
        }
        return "loaded";
    }

    void TearDown() override { EXPECT_THAT(log.records(), IsEmpty()) << "the screen never writes to its logger"; }

    TemporaryFolder folder;
    Screen screen{StrongId<std::string, ScreenIdTag>("Left")};
    LogTrap log;
};

TEST_F(ScreenCloudTest, AnEmptyPathRemovesTheCloudAndStampsTheTime) {
    ASSERT_TRUE(screen.loadModelPCD(write("a.pcd", pcd::ascii(POINTS)), false));
    const auto before = screen.getModelPCDTimestamp();
    EXPECT_FALSE(screen.loadModelPCD(L"", false));
    EXPECT_EQ(screen.getModelPCD(), nullptr);
    EXPECT_GT(screen.getModelPCDTimestamp(), before);
}

TEST_F(ScreenCloudTest, TheThreeKindsOfFileGiveTheSameCloud) {
    screen.setImportTransformParams(L"Z", L"Y");
    for (const std::string& content : {pcd::ascii(POINTS), pcd::binary(POINTS), pcd::compressed(POINTS)}) {
        EXPECT_TRUE(screen.loadModelPCD(write("a.pcd", content), false));
        const auto cloud = screen.getModelPCD();
        ASSERT_THAT(cloud->points, SizeIs(POINTS.size()));
        EXPECT_TRUE(cloud->is_dense);
        for (std::size_t i = 0; i < POINTS.size(); ++i) {
            EXPECT_EQ((pcd::Position{(*cloud)[i].x, (*cloud)[i].y, (*cloud)[i].z}), POINTS[i]);
        }
    }
}

TEST_F(ScreenCloudTest, EveryLoadReadsTheFileAgainAndStampsTheTime) {
    const std::wstring path = write("a.pcd", pcd::ascii(POINTS));
    const auto start = steady_clock::now();
    ASSERT_TRUE(screen.loadModelPCD(path, false));
    const auto first = screen.getModelPCD();
    const auto firstTime = screen.getModelPCDTimestamp();
    EXPECT_GE(firstTime, start);
    EXPECT_TRUE(screen.loadModelPCD(path, false));
    EXPECT_NE(screen.getModelPCD(), first);
    EXPECT_GT(screen.getModelPCDTimestamp(), firstTime);
    EXPECT_TRUE(screen.loadModelPCD(path, true));
}

/// The unit vector of an axis name.
Point<double, 3> axis(const std::wstring& name) {
    const double sign = name[0] == L'-' ? -1.0 : 1.0;
    Point<double, 3> unit;
    unit[static_cast<std::size_t>(name.back() - L'X')] = sign;
    return unit;
}

TEST_F(ScreenCloudTest, PointsAreTurnedByTheNamedAxesAndScaled) {
    const std::wstring path = write("a.pcd", pcd::binary(POINTS));
    const std::vector<std::wstring> names{L"X", L"-X", L"Y", L"-Y", L"Z", L"-Z"};
    int combinations = 0;
    for (const std::wstring& up : names) {
        for (const std::wstring& forward : names) {
            if (up.back() == forward.back()) {
                continue;
            }
            ++combinations;
            screen.setScale(2.5F);
            screen.setImportTransformParams(up, forward);
            ASSERT_TRUE(screen.loadModelPCD(path, false));
            const Point<double, 3> right = cross(axis(forward), axis(up));
            for (std::size_t i = 0; i < POINTS.size(); ++i) {
                const Point<double, 3> file{POINTS[i][0], POINTS[i][1], POINTS[i][2]};
                const pcl::PointXYZ& world = (*screen.getModelPCD())[i];
                EXPECT_EQ(world.x, static_cast<float>(2.5 * dot(file, right)));
                EXPECT_EQ(world.y, static_cast<float>(2.5 * dot(file, axis(forward))));
                EXPECT_EQ(world.z, static_cast<float>(2.5 * dot(file, axis(up))));
            }
        }
    }
    EXPECT_EQ(combinations, 24);
}

TEST_F(ScreenCloudTest, ParametersThatAreNoAxesAreTheirOwnFaultAndChangeNothing) {
    const std::wstring path = write("a.pcd", pcd::ascii(POINTS));
    ASSERT_TRUE(screen.loadModelPCD(path, false));
    const auto cloud = screen.getModelPCD();
    const auto time = screen.getModelPCDTimestamp();
    screen.setImportTransformParams(L"Y", L"Q");
    try {
        screen.loadModelPCD(path, false);
        FAIL() << "loaded";
    } catch (const VeltraniMissingFileException& fault) {
        FAIL() << "the file is not at fault: " << Veltrani::toUtf8(fault.message);
    } catch (const VeltraniException& fault) {
        EXPECT_THAT(Veltrani::toUtf8(fault.message), HasSubstr("Q"));
    }
    EXPECT_EQ(screen.getModelPCD(), cloud);
    EXPECT_EQ(screen.getModelPCDTimestamp(), time);
}

TEST_F(ScreenCloudTest, FilesThatCannotBeReadAreRefusedWithTheReasonAndChangeNothing) {
    ASSERT_TRUE(screen.loadModelPCD(write("good.pcd", pcd::ascii(POINTS)), false));
    const auto cloud = screen.getModelPCD();
    const auto time = screen.getModelPCDTimestamp();

    const std::string pipe = folder.file("pipe.pcd");
    ASSERT_EQ(::mkfifo(pipe.c_str(), 0600), 0);
    EXPECT_THAT(causeOfRefusal(Veltrani::fromUtf8(folder.file("missing.pcd"))), HasSubstr("No such file"));
    EXPECT_THAT(causeOfRefusal(Veltrani::fromUtf8(folder.makeFolder("folder.pcd"))), HasSubstr("is a directory"));
    EXPECT_THAT(causeOfRefusal(Veltrani::fromUtf8(pipe)), HasSubstr("is a pipe"));
    EXPECT_THAT(causeOfRefusal(L"/dev/zero"), HasSubstr("is a device"));
    EXPECT_EQ(causeOfRefusal(write("a.pcd", "")),
              "found an empty file, expected a point cloud; export the cloud again");
    EXPECT_EQ(causeOfRefusal(write("a.pcd", "VERSION 0.7\nDATA ascii\n")),
              "found no FIELDS line, expected FIELDS with x, y and z; add the line, or export the cloud again");
    EXPECT_THAT(causeOfRefusal(write("a.pcd", pcd::header(1, "ascii") + "1,5 2 3\n")), HasSubstr("line 12"));
    EXPECT_EQ(causeOfRefusal(write("a.pcd", pcd::header(10'000'000, "ascii"))),
              "found 0 points, expected 10000000; " + CUT_OFF);
    EXPECT_THAT(causeOfRefusal(write("a.pcd", pcd::header(10'000'000, "binary"))), HasSubstr("found a file of "));

    EXPECT_EQ(screen.getModelPCD(), cloud);
    EXPECT_EQ(screen.getModelPCDTimestamp(), time);
}

TEST_F(ScreenCloudTest, WhatOnlyTheReaderFindsIsRefusedToo) {
    // Sizes that agree, but a compressed run that refers to bytes before the beginning.
    const std::string file = pcd::header(1, "binary_compressed") + pcd::bytes(std::uint32_t{3}) +
                             pcd::bytes(std::uint32_t{12}) + "\xff\xff\xff";
    EXPECT_EQ(causeOfRefusal(write("a.pcd", file)),
              "found data that the point cloud reader refuses, expected data that it can unpack; " + CUT_OFF);
}

TEST_F(ScreenCloudTest, EveryPrefixOfEveryKindIsLoadedWholeOrRefused) {
    std::size_t refused = 0;
    for (const std::string& file : {pcd::ascii(POINTS), pcd::binary(POINTS), pcd::compressed(POINTS)}) {
        for (std::size_t length = 0; length < file.size(); ++length) {
            if (causeOfRefusal(write("a.pcd", file.substr(0, length))) == "loaded") {
                EXPECT_EQ(length, file.size() - 1) << "only the last line feed of an ascii file can be missing";
                EXPECT_THAT(screen.getModelPCD()->points, SizeIs(POINTS.size()));
            } else {
                ++refused;
            }
        }
    }
    EXPECT_GT(refused, 500U);
}

TEST_F(ScreenCloudTest, EveryByteOfEveryKindCanBeWrong) {
    std::map<bool, int> outcomes;
    for (const std::string& file : {pcd::ascii(POINTS), pcd::binary(POINTS), pcd::compressed(POINTS)}) {
        for (std::size_t place = 0; place < file.size(); ++place) {
            for (const char byte : {'\n', '9', '\xff'}) {
                std::string changed = file;
                changed[place] = byte;
                ++outcomes[causeOfRefusal(write("a.pcd", changed)) == "loaded"];
            }
        }
    }
    EXPECT_GT(outcomes[true], 100) << "some bytes are values or comments";
    EXPECT_GT(outcomes[false], 500);
}

TEST_F(ScreenCloudTest, PointsThatWereNotMeasuredStayNan) {
    screen.setScale(2.0F);
    screen.setImportTransformParams(L"Z", L"Y");
    const float nan = std::nanf("");
    for (const std::string& content :
         {pcd::header(4, "ascii") + "nan NaN nan\n1 2 3\n4 5 6\n7 8 9\n",
          pcd::binary({{nan, nan, nan}, {1.0F, 2.0F, 3.0F}, {4.0F, 5.0F, 6.0F}, {7.0F, 8.0F, 9.0F}})}) {
        ASSERT_TRUE(screen.loadModelPCD(write("a.pcd", content), false));
        const Screen::PointCloud& cloud = *screen.getModelPCD();
        EXPECT_FALSE(cloud.is_dense);
        EXPECT_TRUE(std::isnan(cloud[0].x));
        EXPECT_EQ(cloud[1].z, 6.0F);
        EXPECT_TRUE(std::isnan(screen.calcPCDWidth()));
    }
}

TEST_F(ScreenCloudTest, ACloudWithoutPointsIsACloud) {
    EXPECT_TRUE(screen.loadModelPCD(write("a.pcd", pcd::header(0, "ascii")), false));
    EXPECT_THAT(screen.getModelPCD()->points, IsEmpty());
}

TEST_F(ScreenCloudTest, NamesStandInTheMessageAsTheyAre) {
    for (const std::wstring& path : {std::wstring(L"100%s%n%d.pcd"), std::wstring(L"B\u00fchne \u6620.pcd"),
                                     L"/" + std::wstring(5000, L'n') + L".pcd"}) {
        EXPECT_NE(causeOfRefusal(path), "loaded");
    }
}

TEST_F(ScreenCloudTest, ANameThatIsNoTextIsRefused) {
    constexpr wchar_t SURROGATE = 0xd800;
    const std::wstring path(1, SURROGATE);
    try {
        screen.loadModelPCD(path, false);
        FAIL() << "loaded";
    } catch (const VeltraniMissingFileException& fault) {
        EXPECT_EQ(fault.message,
                  L"Unable to load Point Cloud Data file! Ensure the PCD file " + path + L" exists and is valid.");
    }
}

TEST_F(ScreenCloudTest, NamesAreUtf8WhateverTheLocaleAndNeedNoExtension) {
    ASSERT_NE(std::setlocale(LC_ALL, "C"), nullptr);
    EXPECT_TRUE(screen.loadModelPCD(write("B\xc3\xbchne 100%s \xe6\x98\xa0", pcd::ascii(POINTS)), false));
}

TEST_F(ScreenCloudTest, NothingIsPrintedAndTheVerbosityIsPutBack) {
    const auto level = pcl::console::getVerbosityLevel();
    testing::internal::CaptureStdout();
    testing::internal::CaptureStderr();
    pcl::console::setVerbosityLevel(pcl::console::L_VERBOSE);
    screen.loadModelPCD(write("a.pcd", "FIELDS x y z\nPOINTS 1\nDATA ascii\n1 2 3\n"), false);
    screen.loadModelPCD(write("a.pcd", pcd::header(0, "ascii")), false);
    causeOfRefusal(write("a.pcd", pcd::header(1, "binary_compressed") + pcd::bytes(std::uint32_t{3}) +
                                      pcd::bytes(std::uint32_t{12}) + "\xff\xff\xff"));
    EXPECT_THROW(screen.calcPCDWidth(), pcl::InitFailedException);
    EXPECT_EQ(pcl::console::getVerbosityLevel(), pcl::console::L_VERBOSE);
    pcl::console::setVerbosityLevel(level);
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
}

TEST_F(ScreenCloudTest, WhereverMemoryRunsOutWhileReadingTheFileIsRefused) {
    // An exception of the reader counts as a failed read. Only what is as large as the cloud runs out: a stream that
    // cannot even hold a line would keep the reader waiting for ever.
    constexpr std::size_t POINT_COUNT = 10'000;
    constexpr std::size_t LARGE = POINT_COUNT * sizeof(float);
    const std::wstring path = write("a.pcd", pcd::binary(std::vector<pcd::Position>(POINT_COUNT)));
    std::size_t faults = 0;
    while (screen.getModelPCD() == nullptr) {
        try {
            const AllocationFault fault(faults++, LARGE);
            screen.loadModelPCD(path, false);
        } catch (const VeltraniMissingFileException& fault) {
            EXPECT_EQ(Veltrani::toUtf8(fault.message), cloudText(path));
            EXPECT_EQ(Veltrani::causeOf(fault), L"not enough memory");
        }
    }
    EXPECT_GE(faults, 3U) << "the beginning of the file, its data and the points";
    EXPECT_THAT(screen.getModelPCD()->points, SizeIs(POINT_COUNT));
}

TEST_F(ScreenCloudTest, AFileThatIsReplacedAndRemovedAllTheTimeIsLoadedWholeOrRefused) {
    const std::string path = folder.file("a.pcd");
    const std::string valid = folder.write("valid", pcd::binary(POINTS));
    const std::string empty = folder.write("empty", "");
    std::atomic<bool> done{false};
    std::thread other([&] {
        const auto put = [&](const std::string& source) {
            std::filesystem::copy_file(source, path + ".new", std::filesystem::copy_options::overwrite_existing);
            std::filesystem::rename(path + ".new", path);
        };
        for (int i = 0; !done; ++i) {
            put(valid);
            // Now and then the valid file stays long enough for a whole load.
            std::this_thread::sleep_for(std::chrono::microseconds(i % 4 * 300));
            put(empty);
            std::filesystem::remove(path);
            std::filesystem::create_directory(path);
            std::filesystem::remove(path);
        }
    });
    constexpr int ENOUGH = 20;
    const auto deadline = steady_clock::now() + std::chrono::seconds(120);
    int loaded = 0;
    int refused = 0;
    while ((loaded < ENOUGH || refused < ENOUGH) && steady_clock::now() < deadline) {
        if (causeOfRefusal(Veltrani::fromUtf8(path)) == "loaded") {
            EXPECT_THAT(screen.getModelPCD()->points, SizeIs(POINTS.size()));
            ++loaded;
        } else {
            ++refused;
        }
    }
    done = true;
    other.join();
    EXPECT_GE(loaded, ENOUGH);
    EXPECT_GE(refused, ENOUGH);
}

/// The largest eigenvalue of the covariance of the points, in double, by power iteration.
double largestEigenvalue(const Screen::PointCloud& cloud) {
    Point<double, 3> mean;
    for (const pcl::PointXYZ& p : cloud) {
        mean += Point<double, 3>{p.x, p.y, p.z} * (1.0 / static_cast<double>(cloud.size()));
    }
    std::array<Point<double, 3>, 3> covariance;
    for (const pcl::PointXYZ& p : cloud) {
        const Point<double, 3> offset = Point<double, 3>{p.x, p.y, p.z} - mean;
        for (std::size_t row = 0; row < 3; ++row) {
            covariance[row] += offset * (offset[row] / static_cast<double>(cloud.size() - 1));
        }
    }
    Point<double, 3> direction{1.0, 0.9, 0.8};
    double length = 0.0;
    for (int i = 0; i < 500; ++i) {
        const Point<double, 3> next{dot(covariance[0], direction), dot(covariance[1], direction),
                                    dot(covariance[2], direction)};
        length = norm(next);
        direction = next * (1.0 / length);
    }
    return length;
}

class PcdWidthTest : public testing::Test {
protected:
    void setPoints(const std::vector<pcd::Position>& points) {
        const auto cloud = pcl::make_shared<Screen::PointCloud>();
        for (const pcd::Position& point : points) {
            cloud->push_back({point[0], point[1], point[2]});
        }
        screen.setModelPCD(cloud);
    }

    /// What the exception of the point cloud library says.
    std::string fault() {
        try {
            screen.calcPCDWidth();
        } catch (const pcl::InitFailedException& raised) {
            return raised.what();
        }
        return "nothing was thrown";
    }

    Screen screen;
};

TEST_F(PcdWidthTest, PointsOnALineHaveTheSpreadOfTheirDistances) {
    // 0, 1, 2, 3 have the variance 5/3.
    setPoints({{0, 0, 0}, {1, 0, 0}, {2, 0, 0}, {3, 0, 0}});
    EXPECT_FLOAT_EQ(screen.calcPCDWidth(), std::sqrt(5.0F / 3.0F));
    setPoints({{5, 5, 0}, {5, 5, 1}, {5, 5, 2}, {5, 5, 3}});
    EXPECT_FLOAT_EQ(screen.calcPCDWidth(), std::sqrt(5.0F / 3.0F)) << "wherever the line lies";
}

TEST_F(PcdWidthTest, TheMainAxisCounts) {
    setPoints({{-10, 0, 0}, {10, 0, 0}, {0, -1, 0}, {0, 1, 0}});
    EXPECT_FLOAT_EQ(screen.calcPCDWidth(), std::sqrt(200.0F / 3.0F));
}

TEST_F(PcdWidthTest, TheScaleOfTheMomentComesOnTopOfTheOneOfTheLoad) {
    const TemporaryFolder folder;
    const std::wstring path =
        Veltrani::fromUtf8(folder.write("a.pcd", pcd::ascii({{0, 0, 0}, {1, 0, 0}, {2, 0, 0}, {3, 0, 0}})));
    screen.setScale(2.0F);
    ASSERT_TRUE(screen.loadModelPCD(path, false));
    EXPECT_FLOAT_EQ(screen.calcPCDWidth(), 2.0F * 2.0F * std::sqrt(5.0F / 3.0F));
    screen.setScale(5.0F);
    EXPECT_FLOAT_EQ(screen.calcPCDWidth(), 5.0F * 2.0F * std::sqrt(5.0F / 3.0F));
}

TEST_F(PcdWidthTest, WithoutACloudOrWithTooFewPointsTheLibraryThrows) {
    EXPECT_THAT(fault(), HasSubstr("[pcl::PCA::initCompute] failed"));
    setPoints({{0, 0, 0}, {1, 0, 0}});
    EXPECT_THAT(fault(), HasSubstr("[pcl::PCA::initCompute] number of points < 3"));
    setPoints({});
    EXPECT_NE(fault(), "nothing was thrown");
}

TEST_F(PcdWidthTest, ANanMakesItNan) {
    setPoints({{0, 0, 0}, {1, 0, 0}, {2, 0, std::nanf("")}});
    EXPECT_TRUE(std::isnan(screen.calcPCDWidth()));
}

TEST_F(PcdWidthTest, RealScansHaveTheWidthOfTheirCovariance) {
    const std::string data = extraData();
    if (data.empty()) {
        GTEST_SKIP() << "no further data configured";
    }
    const std::map<std::string, std::size_t> scans{
        {"bun0.pcd", 397}, {"milk_color.pcd", 13704}, {"room_scan1.pcd", 112586}};
    // Sums of single-precision numbers over the whole cloud.
    constexpr double RELATIVE_ERROR = 1e-3;
    for (const auto& [name, points] : scans) {
        ASSERT_TRUE(screen.loadModelPCD(Veltrani::fromUtf8(data + "/" + name), false)) << name;
        ASSERT_THAT(screen.getModelPCD()->points, SizeIs(points));
        const double expected = std::sqrt(largestEigenvalue(*screen.getModelPCD()));
        EXPECT_NEAR(screen.calcPCDWidth(), expected, expected * RELATIVE_ERROR) << name;
    }
}

TEST_F(PcdWidthTest, FilesOfTheLibrarysOwnWriterAreRead) {
    const TemporaryFolder folder;
    Screen::PointCloud cloud;
    for (int i = 0; i < 1000; ++i) {
        const auto value = static_cast<float>(i);
        cloud.push_back({std::sin(value), std::cos(value), 0.01F * value});
    }
    pcl::PCDWriter writer;
    const std::string path = folder.file("a.pcd");
    screen.setImportTransformParams(L"Z", L"Y");
    const auto expectLoaded = [&](int written) {
        ASSERT_EQ(written, 0);
        ASSERT_TRUE(screen.loadModelPCD(Veltrani::fromUtf8(path), false));
        ASSERT_THAT(screen.getModelPCD()->points, SizeIs(1000));
        EXPECT_EQ((*screen.getModelPCD())[999].z, 9.99F);
    };
    expectLoaded(writer.writeASCII(path, cloud, 9));
    expectLoaded(writer.writeBinary(path, cloud));
    expectLoaded(writer.writeBinaryCompressed(path, cloud));
}

}  // namespace
