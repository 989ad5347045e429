#include "DeviceFramework2/detail/PjlinkRequest.h"

#include "Common/Utf8.h"
#include "DeviceFramework2/DeviceException.h"

namespace Veltrani::DeviceFramework2 {

std::string PjlinkRequest::line() const {
    std::string request = std::string("%") + commandClass + body + ' ' + parameter + '\r';
    if (request.size() > LONGEST_REQUEST || request.find_first_of("\r\n") != request.size() - 1) {
        throw DeviceException(__FILE__, __LINE__, L"the parameter of " + fromUtf8OrBytes(body) + L" cannot be sent");
    }
    return request;
}

std::wstring PjlinkRequest::text() const {
    return fromUtf8OrBytes(body + ' ' + parameter);
}

}  // namespace Veltrani::DeviceFramework2
