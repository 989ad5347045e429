#pragma once

#include <string>
#include "support/TestPaths.h"

/// Paths of the building machine stand in the source behind this header alone, so that the compiler cache serves every
/// other object of the tests to every clone.

/// The folder of the project's sources, without a slash at its end.
std::string sourceFolder();

/// Folder with further real meshes and scans, from the build variable SM_EXTRA_DATA; empty when there is none.
std::string extraData();

/// The program under test.
std::string programFile();

/// The program that makes the mesh of the curved wall.
std::string exampleGenerator();

/// The library that lets allocations of a program fail into which it is preloaded.
std::string failingAllocations();

/// The library that lets the closing of files fail in a program into which it is preloaded.
std::string failingClose();

/// The program that plays projectors.
std::string simulatorFile();
