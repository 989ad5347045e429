#include "Configuration/ConfigurationChangedException.h"

#include <utility>

ConfigurationChangedException::ConfigurationChangedException(std::wstring text, bool fileIsGone)
    : VeltraniException(std::move(text)), isRemoved(fileIsGone) {}
