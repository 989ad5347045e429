#include "Common/VeltraniException.h"

#include <utility>

VeltraniExceptionBase::VeltraniExceptionBase(std::string throwingFile, int throwingLine, std::wstring text)
    : message(std::move(text)), file(std::move(throwingFile)), line(throwingLine) {}

VeltraniExceptionBase::~VeltraniExceptionBase() = default;

std::wstring VeltraniExceptionBase::fullDescription() const {
    if (line == -1) {
        return message;
    }
    std::wstring description = message + L" @ ";
    for (const char character : file) {
        description.push_back(static_cast<wchar_t>(static_cast<unsigned char>(character)));
    }
    return description + L":" + std::to_wstring(line);
}

VeltraniException::VeltraniException(std::wstring text) : VeltraniExceptionBase(std::string(), -1, std::move(text)) {}

VeltraniException::VeltraniException(std::string throwingFile, int throwingLine, std::wstring text)
    : VeltraniExceptionBase(std::move(throwingFile), throwingLine, std::move(text)) {}

ChannelInitializationException::ChannelInitializationException(std::wstring text)
    : VeltraniException(text), reason(std::move(text)) {}

ChannelSwapException::ChannelSwapException(std::wstring projector, std::wstring replacement)
    : VeltraniException(projector + L" is being swapped by " + replacement),
      projectorName(std::move(projector)),
      replacementName(std::move(replacement)) {}

VeltraniParseException::VeltraniParseException(std::wstring text) : VeltraniException(std::move(text)) {}

VeltraniMissingFileException::VeltraniMissingFileException(std::wstring text) : VeltraniException(std::move(text)) {}
