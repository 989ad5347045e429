// A program of somebody else: blackens all projectors of a display, and exchanges its first two channels.
#include "Configuration/XMLConfigFile.h"
#include "ScreenManager/ChannelManager.h"

#include <iostream>

// channels DISPLAY.xml NEW.xml
int main(int count, char* arguments[]) {
    if (count != 3) {
        return 2;
    }
    const auto config = XMLConfigFile::load(arguments[1]);
    ChannelManager channels(config.get());
    channels.initialize(true);                             // virtual projectors for those that do not reply
    channels.setupProjectorState(IChannelManager::Black);  // all projectors black, corrections off
    if (!channels.moveChannel(0, 1)) {                     // in the configuration, too
        std::cout << "the first channel cannot be moved\n";
        return 1;
    }
    config->save(arguments[2]);
}
