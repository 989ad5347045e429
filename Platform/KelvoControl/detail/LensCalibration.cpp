#include "KelvoControl/detail/LensCalibration.h"

#include "Common/DecimalText.h"
#include "Common/FileFault.h"
#include "Common/QuotedText.h"
#include "Common/Utf8.h"
#include "Common/VeltraniException.h"
#include "KelvoControl/LensNumbers.h"
#include "KelvoControl/detail/CalibrationContent.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>

namespace Veltrani::KelvoControlDetail {

namespace {

/// Calibration files hold some numbers and, at times, the points that they were computed from.
constexpr std::size_t LARGEST_BYTES = std::size_t{1024} * 1024;

/// No picture has more pixels on a side; larger numbers are in the wrong place.
constexpr int LARGEST_PICTURE = 1'000'000;

/// Larger numbers would exceed the range of a double when a lens is computed from them.
constexpr double LARGEST_COEFFICIENT = 1e12;

constexpr const char* REMEDY = "write the calibration file again";

/// Checks the content of a file and turns it into numbers.
class Checker {
public:
    Checker(const std::string& document, int lastLine) : m_document(document), m_lastLine(lastLine) {}

    template <class Entry>
    [[nodiscard]] const Entry& required(const std::optional<Entry>& entry, const std::string& name, int line) const {
        if (!entry) {
            fail(line, name, "no such entry", "one", "name a complete OpenCV calibration file");
        }
        return *entry;
    }

    template <class Entry>
    [[nodiscard]] const Entry& required(const std::optional<Entry>& entry, const std::string& name) const {
        return required(entry, name, m_lastLine);
    }

    [[nodiscard]] int count(const CalibrationValue& value, const std::string& name, int largest) const {
        const std::optional<int> number = Veltrani::parseCount(value.text, largest);
        if (!number) {
            fail(value.line, name, Veltrani::inQuotes(value.text),
                 "a whole number from 1 to " + std::to_string(largest), REMEDY);
        }
        return *number;
    }

    /// Returns the elements of a matrix of `rows` x `cols`, row by row.
    [[nodiscard]] std::vector<double> elements(const CalibrationMatrix& matrix, const std::string& name, int rows,
                                               int cols) const {
        const auto expected = static_cast<std::size_t>(rows) * static_cast<std::size_t>(cols);
        if (matrix.data.size() != expected) {
            fail(matrix.line, name, std::to_string(matrix.data.size()) + " elements",
                 std::to_string(expected) + " for " + std::to_string(rows) + " x " + std::to_string(cols), REMEDY);
        }
        const CalibrationValue& type = required(matrix.dt, name + ", dt", matrix.line);
        if (type.text != "d" && type.text != "f") {
            fail(type.line, name + ", dt", Veltrani::inQuotes(type.text), "d or f", REMEDY);
        }
        std::vector<double> numbers;
        for (const CalibrationValue& value : matrix.data) {
            numbers.push_back(number(value, name));
        }
        return numbers;
    }

    [[nodiscard]] int sizeOf(const CalibrationMatrix& matrix, const std::optional<CalibrationValue>& size,
                             const std::string& name) const {
        return count(required(size, name, matrix.line), name, static_cast<int>(MOST_ELEMENTS));
    }

    [[noreturn]] void fail(int line, const std::string& element, const std::string& found, const std::string& expected,
                           const std::string& remedy) const {
        Veltrani::throwFault(m_document, {line, element, found, expected, remedy});
    }

private:
    [[nodiscard]] double number(const CalibrationValue& value, const std::string& name) const {
        const std::optional<double> parsed = Veltrani::parseFinite(value.text);
        if (!parsed || !(std::abs(*parsed) <= LARGEST_COEFFICIENT)) {
            fail(value.line, name, Veltrani::inQuotes(value.text),
                 "a number of at most 1e12 in size, with a decimal point", REMEDY);
        }
        return *parsed;
    }

    const std::string& m_document;
    int m_lastLine;
};

void readCamera(const CalibrationContent& content, const Checker& checker, LensCalibration& lens) {
    const std::string name = CAMERA_MATRIX;
    const CalibrationMatrix& matrix = checker.required(content.cameraMatrix, name);
    const int rows = checker.sizeOf(matrix, matrix.rows, name + ", rows");
    const int cols = checker.sizeOf(matrix, matrix.cols, name + ", cols");
    if (rows != 3 || cols != 3) {
        checker.fail(matrix.line, name, std::to_string(rows) + " x " + std::to_string(cols), "3 x 3", REMEDY);
    }
    const std::vector<double> m = checker.elements(matrix, name, rows, cols);
    if (m[1] != 0 || m[3] != 0 || m[6] != 0 || m[7] != 0 || m[8] != 1) {
        checker.fail(matrix.line, name, "another form", "fx 0 cx, 0 fy cy, 0 0 1, row by row",
                     "calibrate without skew, and check that the matrix is not transposed");
    }
    if (!(m[0] > 0 && m[4] > 0)) {
        checker.fail(matrix.line, name, "a focal length that is not above zero", "fx and fy above zero", REMEDY);
    }
    lens.fx = m[0];
    lens.cx = m[2];
    lens.fy = m[4];
    lens.cy = m[5];
}

void readDistortion(const CalibrationContent& content, const Checker& checker, const LensFamily& family,
                    LensCalibration& lens) {
    const std::string name = DISTORTION_COEFFICIENTS;
    const CalibrationMatrix& matrix = checker.required(content.distortion, name);
    const int rows = checker.sizeOf(matrix, matrix.rows, name + ", rows");
    const int cols = checker.sizeOf(matrix, matrix.cols, name + ", cols");
    if ((rows != 1 && cols != 1) || !family.takes(static_cast<std::size_t>(std::max(rows, cols)))) {
        checker.fail(matrix.line, name, std::to_string(rows) + " x " + std::to_string(cols),
                     "one row or column of " + family.describeCounts(),
                     "check that the model's name fits the kind of calibration");
    }
    lens.distortion = checker.elements(matrix, name, rows, cols);
    if (const std::size_t count = lens.distortion.size(); count == family.tiltedCount) {
        if (lens.distortion[count - 2] != 0 || lens.distortion[count - 1] != 0) {
            checker.fail(matrix.line, name, "a tilted sensor (the last two coefficients)", "zeros there",
                         "calibrate without the tilted model");
        }
        lens.distortion.resize(count - 2);
    }
}

}  // namespace

bool LensFamily::takes(std::size_t count) const {
    return count != 0 && std::find(counts.begin(), counts.end(), count) != counts.end();
}

std::string LensFamily::describeCounts() const {
    const auto end = std::find(counts.begin(), counts.end(), 0U);
    std::string text;
    for (auto count = counts.begin(); count != end; ++count) {
        text += count == counts.begin() ? "" : count + 1 == end ? " or " : ", ";
        text += std::to_string(*count);
    }
    return text;
}

Point<double, 2> LensCalibration::lensFromPicture(const Point<double, 2>& normalised) const {
    const double px = normalised[0] * imageWidth - 0.5;
    const double py = (1.0 - normalised[1]) * imageHeight - 0.5;
    return {(px - cx) / fx, (py - cy) / fy};
}

Point<double, 2> LensCalibration::pictureFromLens(const Point<double, 2>& distorted) const {
    const double px = fx * distorted[0] + cx;
    const double py = fy * distorted[1] + cy;
    return {(px + 0.5) / imageWidth, 1.0 - (py + 0.5) / imageHeight};
}

LensCalibration LensCalibration::read(const std::wstring& file, const LensFamily& family) {
    const std::string path = Veltrani::toUtf8(file);
    return parse(Veltrani::contentOf(path, LARGEST_BYTES), path, family);
}

LensCalibration LensCalibration::of(const LensNumbers& numbers, const LensFamily& family) {
    const auto isUsable = [](double number) { return std::abs(number) <= LARGEST_COEFFICIENT; };
    const bool areUsable = std::all_of(numbers.distortion.begin(), numbers.distortion.end(), isUsable) &&
                           isUsable(numbers.fx) && isUsable(numbers.fy) && isUsable(numbers.cx) && isUsable(numbers.cy);
    if (!areUsable || !(numbers.fx > 0 && numbers.fy > 0) || numbers.imageWidth < 1 || numbers.imageHeight < 1 ||
        numbers.distortion.size() == family.tiltedCount || !family.takes(numbers.distortion.size())) {
        throw VeltraniException(__FILE__, __LINE__,
                                L"Lens: numbers of no calibration, expected a picture of 1 x 1 or more, focal lengths "
                                L"above zero, " +
                                    Veltrani::fromUtf8(family.describeCounts()) +
                                    L" coefficients, and nothing above 1e12 in size");
    }
    return {numbers.imageWidth, numbers.imageHeight, numbers.fx,        numbers.fy,
            numbers.cx,         numbers.cy,          numbers.distortion};
}

LensCalibration LensCalibration::parse(std::string_view text, const std::string& document, const LensFamily& family) {
    const std::size_t first = text.find_first_not_of(" \t\r\n");
    if (first == std::string_view::npos) {
        Veltrani::throwFault(document,
                             {1, "file", "an empty text", "an OpenCV calibration", "name an OpenCV calibration file"});
    }
    const CalibrationContent content =
        text[first] == '<' ? calibrationFromXml(text, document) : calibrationFromYaml(text, document);
    const Checker checker(document, content.lastLine);
    LensCalibration lens;
    lens.imageWidth = checker.count(checker.required(content.imageWidth, IMAGE_WIDTH), IMAGE_WIDTH, LARGEST_PICTURE);
    lens.imageHeight =
        checker.count(checker.required(content.imageHeight, IMAGE_HEIGHT), IMAGE_HEIGHT, LARGEST_PICTURE);
    readCamera(content, checker, lens);
    readDistortion(content, checker, family, lens);
    return lens;
}

}  // namespace Veltrani::KelvoControlDetail
