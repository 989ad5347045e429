#include "Common/Utf8.h"
#include "DeviceFramework2/DeviceException.h"
#include "DeviceFramework2/detail/AsciiText.h"
#include "DeviceFramework2/detail/PjlinkMessages.h"
#include "DeviceFramework2/detail/PjlinkProtocol.h"
#include "DeviceFramework2/detail/PjlinkValues.h"

#include <stdlib.h>

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <string_view>
#include <vector>

/// Any bytes of a projector are cut into the same lines however they were split, and each line is either understood or
/// refused; what was understood is within its range. A whole session with them ends in replies or in a fault, and the
/// login stays out of its message.
namespace {

using namespace Veltrani::DeviceFramework2;
using namespace Veltrani::DeviceFramework2Detail;

void require(bool condition) {
    if (!condition) {
        std::abort();
    }
}

struct Cut {
    std::vector<std::string> lines;
    bool tooLong = false;
};

Cut cut(std::string_view bytes, std::size_t step) {
    LineBuffer buffer;
    Cut result;
    try {
        for (std::size_t i = 0; i < bytes.size(); i += step) {
            buffer.append(bytes.substr(i, step));
            while (auto line = buffer.takeLine()) {
                require(!line->empty() && line->size() <= LineBuffer::LONGEST_LINE);
                require(line->find_first_of("\r\n") == std::string::npos);
                result.lines.push_back(*line);
            }
        }
    } catch (const DeviceException&) {
        result.tooLong = true;
    }
    return result;
}

void checkValues(const std::string& value) {
    if (const auto commandClass = PjlinkValues::commandClass(value)) {
        require(*commandClass == 1 || *commandClass == 2);
    }
    if (const auto resolution = PjlinkValues::resolution(value)) {
        require((*resolution)[0] > 0 && (*resolution)[1] > 0);
    }
    require(!PjlinkValues::power(value) || value.size() == 1);
    require(!PjlinkValues::pictureMute(value) || value.size() == 2);
    if (const auto inputs = PjlinkValues::inputs(value)) {
        require(!inputs->empty());
        for (const std::string& input : *inputs) {
            require(PjlinkValues::input(input) == input);
        }
    }
    for (const wchar_t character : readable(value)) {
        require(character >= 0x20 && character != 0x7F);
    }
    require(value.empty() || !Veltrani::toUtf8(readable(value)).empty());
}

void checkLine(const std::string& line) {
    if (const auto reply = PjlinkReply::parse(line)) {
        require(reply->body.size() == (reply->outcome == PjlinkReply::Outcome::LOGIN_REFUSED ? 0U : 4U));
        require(reply->outcome == PjlinkReply::Outcome::VALUE || reply->value.empty());
        checkValues(reply->value);
    }
    if (const auto greeting = PjlinkGreeting::parse(line)) {
        require((greeting->kind == PjlinkGreeting::Kind::LOGIN) == (greeting->seed.size() == 8));
    }
    if (const auto mac = parsePjlinkSearchReply(line)) {
        require(MacAddress::parse(mac->text()) == mac);
    }
    checkValues(line);
}

/// A session in which the bytes arrive in pieces, with a request as soon as one may be sent.
void converse(std::string_view bytes, std::size_t step) {
    const std::string password = "a password of the fuzzer";
    static const int set = ::setenv("SM_FUZZ_PJLINK_PASSWORD", password.c_str(), 1);
    require(set == 0);
    const PjlinkRequest request{'1', "POWR", "?"};
    PjlinkProtocol protocol(L"020000000001", {"SM_FUZZ_PJLINK_PASSWORD", "SM_FUZZ_PJLINK_PASSWORD_FILE"});
    std::string login;
    try {
        for (std::size_t i = 0; i < bytes.size(); i += step) {
            protocol.receive(bytes.substr(i, step));
            const auto reply = protocol.takeReply();
            require(!reply || (protocol.isIdle() && reply->body == request.body));
            if (protocol.isIdle()) {
                const std::string sent = protocol.send(request);
                require(sent.ends_with("%1POWR ?\r"));
                login = sent.size() == 9 ? login : sent.substr(0, 32);
            }
        }
    } catch (const DeviceException& fault) {
        const std::string message = Veltrani::toUtf8(fault.message);
        // A projector that sends the password knows it: what it sent may be quoted.
        const bool knowsPassword = bytes.find(password) != std::string_view::npos;
        require(!message.empty() && (knowsPassword || message.find(password) == std::string::npos));
        require(login.empty() || message.find(login) == std::string::npos);
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string_view bytes(reinterpret_cast<const char*>(data), size);
    const Cut whole = cut(bytes, bytes.size() + 1);
    // Pieces of 1 to 64 bytes, chosen by the input itself.
    const Cut pieces = cut(bytes, 1 + (size == 0 ? 0 : data[0] % 64));
    require(whole.lines == pieces.lines && whole.tooLong == pieces.tooLong);
    for (const std::string& line : whole.lines) {
        checkLine(line);
    }
    converse(bytes, 1 + (size == 0 ? 0 : data[0] % 64));
    converse(bytes, 1);
    return 0;
}
