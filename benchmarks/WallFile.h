#pragma once

#include <string>

/// A bumpy wall of a million triangles with texture coordinates and normals as an OBJ file of about 100 MB, in the
/// folder for temporary files, for as long as the object lives. Lengths in metres, z up, y forward.
class WallFile {
public:
    WallFile();
    ~WallFile();
    WallFile(const WallFile&) = delete;
    WallFile& operator=(const WallFile&) = delete;

    [[nodiscard]] const std::string& path() const { return m_path; }
    [[nodiscard]] std::string read() const;

private:
    std::string m_path;
};
