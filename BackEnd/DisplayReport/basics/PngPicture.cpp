#include "DisplayReport/basics/PngPicture.h"

#include "Common/VeltraniException.h"
#include "DisplayReport/basics/PngEncoding.h"

namespace Veltrani::DisplayReport {

void PngPicture::write(std::ostream& out) const {
    constexpr std::size_t PARTS = 3;
    if (colours.empty() || colours.size() != PARTS * width * height) {
        throw VeltraniException(L"The picture cannot be encoded: it has no pixels");
    }
    constexpr int BITS = 8;
    encodePng({width, height, PngForm::Parts::COLOUR, BITS, true}, colours.data(), out);
}

}  // namespace Veltrani::DisplayReport
