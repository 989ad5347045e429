#include "ExportFiles/TestPicture.h"

#include "DisplayReport/basics/NumberText.h"
#include "DisplayReport/still/Drawing.h"
#include "DisplayReport/still/DrawingWriter.h"
#include "DisplayReport/still/PaintedDrawing.h"
#include "DisplayReport/still/StillLibrary.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace Veltrani::ExportFiles {

namespace {

using DisplayReport::Colour;
using DisplayReport::Drawing;
using Anchor = Drawing::Anchor;

constexpr Colour BLACK{0, 0, 0};
constexpr Colour WHITE{255, 255, 255};
constexpr Colour TENTH{110, 110, 110};
constexpr Colour TARGET{255, 255, 0};

/// Lines of the grid per width or height.
constexpr int TENTHS = 10;

/// Draws one test picture. Boxes are of whole pixels, counted from the top left corner.
class TestPainter {
public:
    explicit TestPainter(const TestPicture& picture)
        : m_picture(picture), m_width(picture.pixels[0]), m_height(picture.pixels[1]) {
        m_drawing.width = m_width;
        m_drawing.height = m_height;
        m_drawing.title = picture.name;
    }

    Drawing paint() {
        addBox(0, 0, m_width, m_height, BLACK);
        addGrid();
        addFrame();
        addNames();
        addTargets();
        return std::move(m_drawing);
    }

private:
    /// What a line is wide, and other lengths are multiples of.
    [[nodiscard]] int unit() const {
        constexpr int PIXELS_PER_UNIT = 600;
        return std::max(1, std::min(m_width, m_height) / PIXELS_PER_UNIT);
    }
    /// Height of a capital letter of the smallest words.
    [[nodiscard]] double letter() const {
        constexpr double LETTERS_PER_PICTURE = 64;
        constexpr double LEAST = 5;
        return std::max(LEAST, std::min(m_width, m_height) / LETTERS_PER_PICTURE);
    }

    void addBox(int left, int top, int width, int height, const Colour& colour) {
        m_drawing.boxes.push_back({static_cast<double>(left), static_cast<double>(top), static_cast<double>(width),
                                   static_cast<double>(height), colour});
    }

    void addText(double right, double down, const std::string& text, double size, const Colour& colour, Anchor anchor) {
        m_drawing.texts.push_back({right, down, text, size, colour, anchor, false});
    }

    /// The pixel that a place lies in, the last one for the far edge.
    static int pixelAt(double part, int count) {
        return std::clamp(static_cast<int>(std::floor(part * count)), 0, count - 1);
    }

    void addGrid() {
        const double gap = letter() / 2;
        for (int i = 1; i < TENTHS; ++i) {
            const double part = static_cast<double>(i) / TENTHS;
            const Colour colour = 2 * i == TENTHS ? WHITE : TENTH;
            const int column = pixelAt(part, m_width);
            const int row = m_height - 1 - pixelAt(part, m_height);
            addBox(column, 0, unit(), m_height, colour);
            addBox(0, row, m_width, unit(), colour);
            const std::string number = DisplayReport::fixedText(part, 1);
            addText(column + unit() + gap, m_height - 2 * gap, "u " + number, letter(), WHITE, Anchor::LEFT);
            addText(2 * gap, row - gap, "v " + number, letter(), WHITE, Anchor::LEFT);
        }
    }

    void addFrame() {
        addBox(0, 0, m_width, 1, WHITE);
        addBox(0, m_height - 1, m_width, 1, WHITE);
        addBox(0, 0, 1, m_height, WHITE);
        addBox(m_width - 1, 0, 1, m_height, WHITE);
        const double gap = letter();
        addText(gap, m_height - gap, "0, 0", letter(), WHITE, Anchor::LEFT);
        addText(m_width - gap, gap + letter(), "1, 1", letter(), WHITE, Anchor::RIGHT);
    }

    /// The number in the middle, with the arrow above it and the words below it.
    void addNames() {
        const double middle = m_width / 2.0;
        const double size = 8 * letter();
        const double base = m_height / 2.0 + size / 2;
        const double room = 0.8 * m_width;
        const auto& library = DisplayReport::StillLibrary::get();
        const std::string name = library.fitting(DisplayReport::drawableText(m_picture.name), 3 * letter(), room);
        const std::string facts = library.fitting(DisplayReport::drawableText(m_picture.projectorId) + ", " +
                                                      std::to_string(m_width) + " x " + std::to_string(m_height),
                                                  1.5 * letter(), room);
        const double widest = std::max({library.width(name, 3 * letter()), library.width(facts, 1.5 * letter()), size});
        const double margin = 2 * letter();
        addBox(static_cast<int>(middle - widest / 2 - margin), static_cast<int>(base - size - 12 * letter()),
               static_cast<int>(widest + 2 * margin), static_cast<int>(size + 21 * letter()), BLACK);
        addArrow(static_cast<int>(middle), static_cast<int>(base - size - 11 * letter()),
                 static_cast<int>(9 * letter()));
        addText(middle, base, std::to_string(m_picture.number), size, m_picture.colour, Anchor::MIDDLE);
        addText(middle, base + 5 * letter(), name, 3 * letter(), m_picture.colour, Anchor::MIDDLE);
        addText(middle, base + 8 * letter(), facts, 1.5 * letter(), WHITE, Anchor::MIDDLE);
    }

    /// Upwards, row by row of pixels.
    void addArrow(int column, int top, int height) {
        const int head = std::max(2, 2 * height / 3);
        for (int row = 0; row < head; ++row) {
            const int half = row / 2;
            addBox(column - half, top + row, 2 * half + 1, 1, m_picture.colour);
        }
        const int half = std::max(1, height / 10);
        addBox(column - half, top + head, 2 * half + 1, std::max(1, height - head), m_picture.colour);
    }

    /// A cross on each, whose arms leave out the pixels around its middle, which is one pixel and stands alone: over
    /// words and lines, but for the frame, and under no arm of another one.
    void addTargets() {
        for (const Point<double, 2>& target : m_picture.targets) {
            const auto [column, row] = pixelOf(target);
            const int gap = 2 * unit();
            const int arm = 5 * unit();
            addMark(column - gap - arm, row, arm, 1, TARGET);
            addMark(column + gap + 1, row, arm, 1, TARGET);
            addMark(column, row - gap - arm, 1, arm, TARGET);
            addMark(column, row + gap + 1, 1, arm, TARGET);
        }
        for (const Point<double, 2>& target : m_picture.targets) {
            addRoomAround(target);
        }
        for (const Point<double, 2>& target : m_picture.targets) {
            const auto [column, row] = pixelOf(target);
            addMark(column, row, 1, 1, WHITE);
        }
    }

    void addRoomAround(const Point<double, 2>& target) {
        const auto [column, row] = pixelOf(target);
        const int gap = 2 * unit();
        const int left = std::max(column - gap, 1);
        const int top = std::max(row - gap, 1);
        const int right = std::min(column + gap, m_width - 2);
        const int bottom = std::min(row + gap, m_height - 2);
        if (left <= right && top <= bottom) {
            addMark(left, top, right + 1 - left, bottom + 1 - top, BLACK);
        }
    }

    /// Counted from the top left corner.
    [[nodiscard]] std::pair<int, int> pixelOf(const Point<double, 2>& place) const {
        return {pixelAt(place[0], m_width), m_height - 1 - pixelAt(place[1], m_height)};
    }

    void addMark(int left, int top, int width, int height, const Colour& colour) {
        m_drawing.boxesOverTexts.push_back({static_cast<double>(left), static_cast<double>(top),
                                            static_cast<double>(width), static_cast<double>(height), colour});
    }

    const TestPicture& m_picture;
    int m_width;
    int m_height;
    Drawing m_drawing;
};

}  // namespace

Drawing TestPicture::draw() const {
    return TestPainter(*this).paint();
}

void TestPicture::write(std::ostream& out) const {
    DisplayReport::DrawingWriter::ofFormat("png")->write(draw(), out);
}

}  // namespace Veltrani::ExportFiles
