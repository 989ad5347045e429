#include "ScreenManager/IChannelManager.h"

IChannelManager::~IChannelManager() = default;
