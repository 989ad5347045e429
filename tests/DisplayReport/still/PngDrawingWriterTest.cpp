#include "DisplayReport/still/DrawingWriter.h"

#include "Common/VeltraniException.h"
#include "DisplayReport/still/Drawing.h"
#include "DisplayReport/still/DrawingRaster.h"
#include "DisplayReport/still/ScenePainter.h"
#include "Scenes.h"
#include "support/PngImage.h"

#include <gtest/gtest.h>

#include <sstream>

namespace {

using namespace Veltrani::DisplayReport;

TEST(PngDrawingWriter, TheFileHoldsThePixelsOfTheDrawing) {
    const Drawing drawing = ScenePainter("home", 320, 200).paint(scenes::wall());
    std::ostringstream out;
    DrawingWriter::ofFormat("png")->write(drawing, out);
    const PngImage image = PngImage::read(out.str());
    EXPECT_EQ(image.width, 320U);
    EXPECT_EQ(image.height, 200U);
    EXPECT_EQ(image.bytes, rasterised(drawing).colours);
}

TEST(PngDrawingWriter, ADrawingWithoutAPixelIsRefused) {
    std::ostringstream out;
    EXPECT_THROW(DrawingWriter::ofFormat("png")->write({}, out), VeltraniException);
    EXPECT_EQ(out.str(), "");
}

}  // namespace
