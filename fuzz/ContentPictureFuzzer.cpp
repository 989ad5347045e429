#include "Common/VeltraniException.h"
#include "ExportFiles/ContentPicture.h"

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string_view>

/// Any bytes are either read as a picture that has a colour everywhere or refused in one line that names the file.

namespace {

using Veltrani::ExportFiles::ContentPicture;

/// Pictures of more pixels than this cost more time than they find.
constexpr std::size_t MOST_PIXELS = 100'000;

void require(bool holds, const char* law) {
    if (!holds) {
        std::fprintf(stderr, "broken law: %s\n", law);
        std::abort();
    }
}

void look(const ContentPicture& picture) {
    require(picture.width() > 0 && picture.height() > 0, "a picture has a pixel");
    require(picture.width() * picture.height() <= MOST_PIXELS, "a picture has no more pixels than allowed");
    for (const bool wraps : {false, true}) {
        for (const double u : {-0.5, 0.0, 1e-9, 0.5, 1.0, 1.5}) {
            for (const double v : {-0.5, 0.0, 0.5, 1.0}) {
                static_cast<void>(picture.at({u, v}, wraps));
            }
        }
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    try {
        look(ContentPicture::parse({reinterpret_cast<const char*>(data), size}, "content", MOST_PIXELS));
    } catch (const VeltraniParseException& fault) {
        require(fault.message.compare(0, 9, L"content: ") == 0, "a refusal names its file");
        require(fault.message.find(L'\n') == std::wstring::npos && fault.message.size() < 300, "a refusal is one line");
    }
    return 0;
}
