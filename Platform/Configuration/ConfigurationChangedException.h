#pragma once

#include "Common/VeltraniException.h"

#include <string>

/// A configuration was not saved: the file is no longer what was read from it, or saved to it, before. A change made
/// elsewhere would have been lost. The file is untouched.
///
/// To continue, load the file again and repeat the change, or save to another path.
struct ConfigurationChangedException : VeltraniException {
    ConfigurationChangedException(std::wstring text, bool fileIsGone);

    bool isRemoved = false;  ///< true: there is no file at the path any more; false: its content is another one
};
