// The program's name and version as it identifies itself (`wavex --version`, dyn_IdentifyBinary).
// The one place the version is written in the sources; keep it equal to the project version in
// CMakeLists.txt.
#pragma once

namespace wavex {

inline constexpr const char* kVersionText = "wavex 0.1.0";

}  // namespace wavex
