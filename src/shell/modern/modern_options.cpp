#include "shell/modern/modern_options.h"

#include "shell/uci_options.h"

namespace brivok {

void listModernOptions(Application& app) { listOptions(app); }

std::string optionFeatures() { return ""; }

std::string setModernOption(std::string_view /*name*/, const std::string& /*value*/) { return ""; }

void setMemory(std::uint32_t /*megabytes*/) {}

std::uint32_t nodesOfElo(int /*elo*/) { return 0; }

}  // namespace brivok
