#include "ScreenManager/IProjectorProvider.h"

IProjectorProvider::~IProjectorProvider() = default;
