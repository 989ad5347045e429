// The files of a warp as programs of somebody else read them.
#include "DisplayReport/maps/PictureWarp.h"
#include "DisplayReport/maps/WarpWriter.h"
#include "support/TemporaryFolder.h"

#include <gtest/gtest.h>
#include <opencv2/imgcodecs.hpp>

#include <cmath>
#include <sstream>

namespace {

using namespace Veltrani::DisplayReport;

constexpr int COLUMNS = 7;
constexpr int ROWS = 4;

WarpSample sampleAt(int column, int row) {
    if (column == 5 && row == 2) {
        return {};
    }
    return {{0.1 + 0.11 * column + 0.01 * row, 0.9 - 0.2 * row + 0.002 * column * column}, true};
}

PictureWarp bentWarp() {
    std::vector<WarpSample> samples;
    for (int row = 0; row < ROWS; ++row) {
        for (int column = 0; column < COLUMNS; ++column) {
            samples.push_back(sampleAt(column, row));
        }
    }
    return {{COLUMNS, ROWS}, COLUMNS, ROWS, std::move(samples)};
}

class WarpReaders : public testing::Test {
protected:
    [[nodiscard]] std::string fileOf(const std::string& format, const std::string& name) const {
        std::ostringstream out;
        WarpWriter::ofFormat(format)->write(bentWarp(), out);
        return m_folder.write(name, out.str());
    }

    const TemporaryFolder m_folder;
};

// OpenCV has its rows from the top, and blue first.
TEST_F(WarpReaders, OpenCvReadsTheNumbersOfAPfm) {
    const cv::Mat picture = cv::imread(fileOf("pfm", "warp.pfm"), cv::IMREAD_UNCHANGED);
    ASSERT_EQ(picture.type(), CV_32FC3);
    ASSERT_EQ(picture.cols, COLUMNS);
    ASSERT_EQ(picture.rows, ROWS);
    for (int row = 0; row < ROWS; ++row) {
        for (int column = 0; column < COLUMNS; ++column) {
            const auto& found = picture.at<cv::Vec3f>(ROWS - 1 - row, column);
            const WarpSample expected = sampleAt(column, row);
            EXPECT_EQ(found[0], expected.isMapped ? 1.0F : 0.0F);
            EXPECT_EQ(found[1], expected.isMapped ? static_cast<float>(expected.input[1]) : -1.0F);
            EXPECT_EQ(found[2], expected.isMapped ? static_cast<float>(expected.input[0]) : -1.0F);
        }
    }
}

TEST_F(WarpReaders, OpenCvReadsTheNumbersOfAPngOf16Bits) {
    const cv::Mat picture = cv::imread(fileOf("png16", "warp.png"), cv::IMREAD_UNCHANGED);
    ASSERT_EQ(picture.type(), CV_16UC3);
    ASSERT_EQ(picture.cols, COLUMNS);
    ASSERT_EQ(picture.rows, ROWS);
    for (int row = 0; row < ROWS; ++row) {
        for (int column = 0; column < COLUMNS; ++column) {
            const auto& found = picture.at<cv::Vec3w>(ROWS - 1 - row, column);
            const WarpSample expected = sampleAt(column, row);
            EXPECT_EQ(found[0], expected.isMapped ? 65535 : 0);
            EXPECT_NEAR(found[1] / 65535.0, expected.input[1], 0.5 / 65535 + 1e-12);
            EXPECT_NEAR(found[2] / 65535.0, expected.input[0], 0.5 / 65535 + 1e-12);
        }
    }
}

}  // namespace
