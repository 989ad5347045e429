#include "ScreenManager/ITargetLocatorProvider.h"

ITargetLocatorProvider::~ITargetLocatorProvider() = default;
