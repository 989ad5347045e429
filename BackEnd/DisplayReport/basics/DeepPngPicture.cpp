#include "DisplayReport/basics/DeepPngPicture.h"

#include "Common/VeltraniException.h"
#include "DisplayReport/basics/PngEncoding.h"

namespace Veltrani::DisplayReport {

void DeepPngPicture::write(std::ostream& out) const {
    constexpr int BITS = 16;
    constexpr std::size_t PARTS = 3;
    if (colours.empty() || colours.size() != PARTS * width * height) {
        throw VeltraniException(L"The picture cannot be encoded: it has no pixels");
    }
    encodePng({width, height, PngForm::Parts::COLOUR, BITS}, colours.data(), out);
}

}  // namespace Veltrani::DisplayReport
