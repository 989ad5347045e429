#include "Common/Finite.h"
#include "Common/VeltraniException.h"
#include "Configuration/XMLConfigFile.h"
#include "FitSession/ResidualReader.h"

#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <set>
#include <string>

/// Any bytes are either read as residuals that can be drawn or refused in one line that names the place.

namespace {

using Veltrani::FitSession::ResidualReader;

void require(bool holds, const char* law) {
    if (!holds) {
        std::fprintf(stderr, "broken law: %s\n", law);
        std::abort();
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const auto config = XMLConfigFile::parse(
        "<Display version='1' lengthUnit='m' angleUnit='deg'><Units native='m'/><TargetData type='PlanarBasic'/>"
        "<Projectors><Projector id='A'><Resolution width='1920' height='1200'/></Projector>"
        "<Projector id='B'><Name>Right</Name></Projector></Projectors></Display>",
        "display.xml");
    try {
        const auto residuals = ResidualReader(*config).read({reinterpret_cast<const char*>(data), size}, "report");
        std::set<std::string> channels;
        for (const auto& channel : residuals.channels) {
            require(channel.projectorId == "A" || channel.projectorId == "B", "every channel is one of the display");
            require(channels.insert(channel.projectorId).second, "no channel is there twice");
            for (const auto& residual : channel.residuals) {
                require(isFinite(residual.point) && isFinite(residual.picture), "every place is finite");
                require(!std::isinf(residual.pixels[0]) && !std::isinf(residual.offset[0]), "no vector is endless");
            }
        }
    } catch (const VeltraniParseException& fault) {
        require(fault.message.compare(0, 7, L"report:") == 0, "a refusal names its file");
        require(fault.message.find(L": found ") != std::wstring::npos, "a refusal says what was found");
        require(fault.message.find(L"; expected ") != std::wstring::npos, "a refusal says what is expected");
        require(fault.message.find(L'\n') == std::wstring::npos && fault.message.size() < 900, "a refusal is one line");
    }
    return 0;
}
