#include "cli/terminal/colour.h"

#include <cstdlib>
#include <unistd.h>

namespace zembrastel::cli {
namespace {

std::string_view variable(const char* name) {
    const char* value = std::getenv(name);
    return value == nullptr ? "" : value;
}

bool showsColours(int descriptor) {
    return variable("NO_COLOR").empty() && variable("TERM") != "dumb" && !variable("TERM").empty()
           && ::isatty(descriptor) != 0;
}

std::string_view sequence(Tone tone) {
    switch (tone) {
    case Tone::good:
        return "\x1b[32m";
    case Tone::attention:
        return "\x1b[33m";
    case Tone::bad:
        return "\x1b[31m";
    }
    return "";
}

} // namespace

std::string inColour(std::string_view text, Tone tone, int descriptor) {
    if (!showsColours(descriptor)) return std::string(text);
    return std::string(sequence(tone)).append(text).append("\x1b[0m");
}

} // namespace zembrastel::cli
