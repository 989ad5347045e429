#pragma once

#include <string>

/// The suite's exceptions. None of them derives from `std::exception`: code that wants to treat both kinds catches them
/// separately (`RunCatch` does). All are copyable, thrown by value and caught by reference.

/// What every exception of the suite carries.
struct VeltraniExceptionBase {
    /// @param throwingFile source path of the throw; empty when not recorded
    /// @param throwingLine source line of the throw; -1 when not recorded
    VeltraniExceptionBase(std::string throwingFile, int throwingLine, std::wstring text);
    VeltraniExceptionBase(const VeltraniExceptionBase&) = default;
    VeltraniExceptionBase& operator=(const VeltraniExceptionBase&) = default;
    virtual ~VeltraniExceptionBase();

    /// Returns the message, followed by " @ file:line" exactly when a line was recorded (any line but -1, zero
    /// included).
    [[nodiscard]] std::wstring fullDescription() const;

    std::wstring message;
    std::string file;
    int line = -1;
};

/// The general exception: a fault of configuration or use.
struct VeltraniException : VeltraniExceptionBase {
    explicit VeltraniException(std::wstring text);
    VeltraniException(std::string throwingFile, int throwingLine, std::wstring text);
};

/// A configured channel cannot be bound to a device.
struct ChannelInitializationException : VeltraniException {
    explicit ChannelInitializationException(std::wstring text);

    std::wstring reason;  ///< the message once more
};

/// A projector was found where another one is configured.
struct ChannelSwapException : VeltraniException {
    ChannelSwapException(std::wstring projector, std::wstring replacement);

    std::wstring projectorName;
    std::wstring replacementName;
};

/// A file was found but cannot be understood. The message holds one fault per line.
struct VeltraniParseException : VeltraniException {
    explicit VeltraniParseException(std::wstring text);
};

/// A file is missing or not of the kind that is needed.
struct VeltraniMissingFileException : VeltraniException {
    explicit VeltraniMissingFileException(std::wstring text);
};
