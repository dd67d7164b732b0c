#include "shell/base/fields.h"

#include <algorithm>

namespace brivok {

std::vector<std::string_view> fieldsOf(std::string_view line) {
    constexpr std::string_view Blanks = " \t\r\n";
    std::vector<std::string_view> fields;
    for (;;) {
        line.remove_prefix(std::min(line.find_first_not_of(Blanks), line.size()));
        if (line.empty()) return fields;
        fields.push_back(line.substr(0, line.find_first_of(Blanks)));
        line.remove_prefix(fields.back().size());
    }
}

}  // namespace brivok
