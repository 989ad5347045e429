#pragma once

#include <cstddef>
#include <string>

namespace Veltrani {

/// A part of the product that is opened when it is first needed, because it brings many other shared libraries with it.
///
/// It is a shared library beside that of this class, whatever the working folder is. File and entry carry the version,
/// so that modules of two installations cannot be mistaken for each other.
///
///     const void* entry = LoadedModule{"point clouds", "libA-0.1.so", "a_0_1", "the Point Cloud Library", 96 <<
///     20}.open();
struct LoadedModule {
    std::string purpose;    ///< what it is for, as messages have it
    std::string file;       ///< without a folder
    std::string entry;      ///< name of a C function
    std::string libraries;  ///< that it needs, as messages have it
    /// Address space that it takes with all that it brings, bytes: the loader would name some library that it could not
    /// map, and an initialiser that runs out of memory would end the process.
    std::size_t memory = 0;

    /// Returns the address of the entry. The module stays open until the process ends. Throws `VeltraniException` with
    /// the path, the reason and a remedy when it cannot be opened, `std::bad_alloc` when there is no room for it;
    /// another call tries again.
    [[nodiscard]] void* open() const;
};

/// Throws `std::bad_alloc` unless the process may take that much more address space, bytes.
void requireAddressSpace(std::size_t bytes);

}  // namespace Veltrani
