#include "ScreenManager/TargetLocatorParams.h"

#include <typeinfo>

bool TargetLocatorParams::operator==(const TargetLocatorParams& other) const {
    return typeid(*this) == typeid(other) && equals(other);
}

bool TargetLocatorParams::operator!=(const TargetLocatorParams& other) {
    return !(*this == other);
}
