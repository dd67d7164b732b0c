#include "shell/base/version.h"

namespace brivok {

const char* const EngineName = "Brivok " BRIVOK_VERSION;

}  // namespace brivok
