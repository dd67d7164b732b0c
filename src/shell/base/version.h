// Every folder above src/platform may include this.
#pragma once

namespace brivok {

/// The name with the version, which CMakeLists.txt tells.
extern const char* const EngineName;
/// The kind of release.
inline constexpr char EngineInfo[] = "Beta";

}  // namespace brivok
