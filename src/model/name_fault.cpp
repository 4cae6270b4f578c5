#include "model/name_fault.h"

#include "platform/text.h"

#include <algorithm>
#include <climits>

namespace zembrastel {
namespace {

const char* reason(NameFault fault) {
    switch (fault) {
    case NameFault::notUtf8:
        return "its name is not valid UTF-8";
    case NameFault::control:
        return "its name has a control character or a line break";
    case NameFault::tooLong:
        return "its name is longer than 255 bytes";
    case NameFault::tooDeep:
        return "it is nested more than 128 levels deep";
    }
    return "";
}

} // namespace

std::optional<NameFault> nameFault(std::string_view name) {
    if (!isValidUtf8(name)) return NameFault::notUtf8;
    if (containsControl(name)) return NameFault::control;
    if (name.size() > NAME_MAX) return NameFault::tooLong;
    return std::nullopt;
}

bool isTooDeep(std::string_view folder) { return std::ranges::count(folder, '/') + 1 >= maxFolderLevels; }

std::string leftOutReason(NameFault fault) {
    std::string sentence = std::string(reason(fault)) + ".";
    sentence.front() = 'I';
    return sentence;
}

std::string leftOutLine(NameFault fault, std::string_view path) {
    return std::string("Left out, because ") + reason(fault) + ": " + printable(path);
}

} // namespace zembrastel
