#pragma once

#include "DisplayExport/ChannelWarp.h"
#include "DisplayExport/ContentInput.h"
#include "OptionList.h"

#include <initializer_list>
#include <optional>
#include <string>
#include <vector>

/// What the command lines of `export` and of `map --grid` state of an input and of the nodes of a warp.
struct InputOptions {
    using InputKind = Veltrani::DisplayExport::InputKind;

    std::optional<InputKind> kind;        ///< none: the usual one of the command
    std::string axis;                     ///< "x,y,z"; empty: the usual one
    std::string centre;                   ///< "azimuth,elevation", degrees; empty: straight ahead
    std::optional<double> roll;           ///< radians
    std::optional<double> aperture;       ///< radians
    std::optional<double> margin;         ///< part of the width or height of a frustum
    std::optional<Point<int, 2>> pixels;  ///< of the input, of one face of a cube
    std::optional<Point<int, 2>> nodes;   ///< columns and rows
    bool hasAutoNodes = false;            ///< whether as few as keep the error were requested
    std::optional<double> error;          ///< pixels of the input
    bool isCut = false;                   ///< at the seam of a panorama

    /// Whether anything but the kind and a number of nodes is stated.
    [[nodiscard]] bool hasMore() const;

    /// Refuses the command line for what the input does not heed, and for texts that are no numbers.
    /// @param usual the input when none is stated; none: what another input would heed needs one to be stated
    /// @param hasEye whether an eye is stated
    void requireHeeded(std::optional<InputKind> usual, bool hasEye) const;
    /// Refuses the command line for an option that the input does not heed.
    /// @param heeding the inputs that do
    void requireHeeding(std::optional<InputKind> usual, const std::string& option,
                        std::initializer_list<InputKind> heeding) const;
    /// Refuses the command line for an error where the nodes do not depend on it.
    /// @param areUsuallyAuto whether as few nodes as keep the error are taken when no others are stated
    void requireErrorHeeded(bool areUsuallyAuto) const;

    /// @param usual the input when none is stated
    [[nodiscard]] Veltrani::DisplayExport::InputChoice choice(InputKind usual) const;
    [[nodiscard]] Veltrani::DisplayExport::Seam seam() const;
    [[nodiscard]] double allowedError() const;

private:
    [[nodiscard]] std::optional<Point<double, 3>> direction() const;
};

/// Adds the options of an input, with the checks that need no other option.
/// @param inputHelp text of `--input`
[[nodiscard]] std::vector<Option> addInputOptions(OptionList& line, InputOptions& options, const char* inputHelp);
/// The same for the nodes of a warp.
/// @param nodesHelp text of `--nodes`
[[nodiscard]] std::vector<Option> addWarpOptions(OptionList& line, InputOptions& options, const char* nodesHelp);

/// The place of an eye, world frame, native units. Refuses the command line for what is none.
[[nodiscard]] Point<double, 3> eyeOf(const std::string& text);
