#pragma once

#include <string>

namespace Veltrani {
struct LensNumbers;
}

namespace Veltrani::FitSession {

/// A calibration file of a lens that did not exist before, and does not remain unless it is kept: no file of somebody
/// else is replaced, whatever happens meanwhile.
///
///     LensFile file("dome/display-left", lens);
///     ... the configuration that names it is saved ...
///     file.keep();
class LensFile {
public:
    /// Writes "STEM.yml", or "STEM-2.yml" and so on where that is taken, in the form of OpenCV with all digits, and
    /// brings it to the disk. Throws `VeltraniException`, naming the file, when that fails; nothing is left then.
    /// @param utf8Stem path without an ending
    LensFile(const std::string& utf8Stem, const LensNumbers& lens);
    ~LensFile();
    LensFile(LensFile&& other) noexcept;
    LensFile(const LensFile&) = delete;
    LensFile& operator=(const LensFile&) = delete;
    LensFile& operator=(LensFile&&) = delete;

    [[nodiscard]] const std::string& path() const { return m_path; }
    /// Without its folder.
    [[nodiscard]] std::string name() const;
    /// It is not removed any more.
    void keep() { m_isKept = true; }

    /// What is written.
    [[nodiscard]] static std::string textOf(const LensNumbers& lens);

private:
    std::string m_path;  ///< empty once moved from
    bool m_isKept = false;
};

}  // namespace Veltrani::FitSession
