#pragma once

#include "Configuration/XMLConfigFile.h"

#include <memory>

/// How many channels the display of the benchmarks of blends and light has, each of 1920 x 1200 pixels.
inline constexpr int CHANNELS = 12;

/// Eight around and four above them, so that neighbours overlap, in a dome of 5 m. Every projector stands somewhere
/// else.
[[nodiscard]] std::unique_ptr<XMLConfigFile> displayOfTwelve();
