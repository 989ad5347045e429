#pragma once

#include <embree3/rtcore.h>

namespace KelvoScreenDetail {

/// The one Embree device of the process, made on first use.
///
/// It runs on the caller's thread alone (`threads=1`; otherwise Embree starts threads of its own), and it is
/// intentionally never released: releasing a device starts one more thread, and scenes may outlive every static object.
/// Throws `VeltraniException` when Embree cannot be started.
[[nodiscard]] RTCDevice embreeDevice();

/// Throws what the device reports since the last call: `std::bad_alloc` when memory ran out, else `VeltraniException`.
void throwEmbreeFault();

}  // namespace KelvoScreenDetail
