#include "norvi/command.h"

namespace norvi {

String ExamplesText(std::initializer_list<const char*> lines) {
    String text = "Examples:";
    for (const char* line : lines)
        text += String("\n  ") + line;
    return text;
}

} // namespace norvi
