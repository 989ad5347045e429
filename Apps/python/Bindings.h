#pragma once

#include "DisplayState.h"
#include "Entry.h"

#include <pybind11/pybind11.h>

/// The native class under the one that scripts see: it takes everything apart that these put together, and is no
/// interface of its own.
using DisplayClass = pybind11::class_<DisplayState, DisplayPointer>;

void bindDisplay(DisplayClass& display);
void bindChannels(DisplayClass& display);
void bindRecords(DisplayClass& display);
void bindScreen(DisplayClass& display);
void bindMaps(DisplayClass& display);
void bindTargets(DisplayClass& display);
void bindReports(DisplayClass& display);
void bindFits(DisplayClass& display);
void bindExports(DisplayClass& display);
void bindClouds(DisplayClass& display);
