// All folders above src/platform may include this.
#pragma once

namespace brivok {

/// Name and version; the version comes from CMakeLists.txt.
extern const char* const EngineName;
/// Release type.
inline constexpr char EngineInfo[] = "Beta";

}  // namespace brivok
