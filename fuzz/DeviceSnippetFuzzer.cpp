#include "Common/Utf8.h"
#include "DeviceFramework2/DeviceException.h"
#include "DeviceFramework2/DeviceSnippet.h"
#include "DeviceFramework2/DeviceTypeManager.h"
#include "DeviceFramework2/ProjectorAddress.h"
#include "DeviceFramework2/VirtualProjectorSnippet.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <optional>
#include <string>
#include <string_view>

/// Any text is either refused with a message that names it, or gives a snippet that is written and read again as the
/// same, and so is an address; the identity is a MAC address or the one given; a wrapped text is the part of the input
/// that it was.
namespace {

using namespace Veltrani::DeviceFramework2;

const std::wstring IDENTITY = L"the identity";

void require(bool condition) {
    if (!condition) {
        std::abort();
    }
}

template <class Read>
auto readOrRefused(Read&& read) -> std::optional<decltype(read())> {
    try {
        return read();
    } catch (const DeviceException& fault) {
        require(fault.message.starts_with(L"Device snippet "));
        require(!Veltrani::toUtf8(fault.message).empty());
        return std::nullopt;
    }
}

void checkUid(const std::wstring& uid) {
    const auto isDigit = [](wchar_t c) { return (c >= L'0' && c <= L'9') || (c >= L'A' && c <= L'F'); };
    require(uid == IDENTITY || (uid.size() == 12 && std::all_of(uid.begin(), uid.end(), isDigit)));
}

void checkDevice(const std::wstring& text, const DeviceSnippet& snippet) {
    const DeviceSnippet again = DeviceSnippet::parse(snippet.text());
    require(again.mac == snippet.mac && again.host == snippet.host && again.port == snippet.port);
    require(snippet.port >= 1 && snippet.port <= 65535);
    require(createMACAddressDeviceUIDFromDeviceSnippet(IDENTITY, text) == snippet.mac.uid());
    // A declaration may only stand at the very beginning of a document, so such a text cannot be wrapped.
    if (text.find(L"<?xml") == std::wstring::npos) {
        const auto wrapped = VirtualProjectorSnippet::parse(L"<Wrapper><Projector Width='1920' Height='1200'>" + text +
                                                            L"</Projector></Wrapper>");
        require(wrapped.wrapped == text && wrapped.width == 1920 && wrapped.height == 1200);
    }
}

void checkVirtual(const std::wstring& text, const VirtualProjectorSnippet& snippet) {
    require(snippet.width >= 0 && snippet.height >= 0 && snippet.input >= 0);
    require(text.find(snippet.wrapped) != std::wstring::npos);
    const auto again = VirtualProjectorSnippet::parse(L"<Wrapper><Projector Width='1' Height='1'>" + snippet.wrapped +
                                                      L"</Projector></Wrapper>");
    require(again.wrapped == snippet.wrapped);
}

void checkAddress(std::string_view text) {
    if (const auto address = ProjectorAddress::parse(text)) {
        require(address->port >= 1 && address->port <= 65535);
        require(ProjectorAddress::parse(address->text()) == address);
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::wstring text = Veltrani::fromUtf8OrBytes({reinterpret_cast<const char*>(data), size});
    checkAddress({reinterpret_cast<const char*>(data), size});
    checkUid(createMACAddressDeviceUIDFromDeviceSnippet(IDENTITY, text));
    if (const auto device = readOrRefused([&] { return DeviceSnippet::parse(text); })) {
        checkDevice(text, *device);
    }
    if (const auto standIn = readOrRefused([&] { return VirtualProjectorSnippet::parse(text); })) {
        checkVirtual(text, *standIn);
    }
    return 0;
}
