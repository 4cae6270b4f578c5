#include "checks/check.h"

#include <stdexcept>

namespace zembrastel {
namespace {

std::string quoted(std::string_view text) { return '"' + std::string(text) + '"'; }

std::string listed(const std::vector<std::string>& texts) {
    std::string list;
    for (const auto& text : texts) list += (list.empty() ? "" : ", ") + quoted(text);
    return texts.empty() ? "nothing" : list;
}

} // namespace

void require(bool holds, const std::string& otherwise) {
    if (!holds) throw std::runtime_error(otherwise);
}

void requireEqual(std::string_view what, std::string_view seen, std::string_view expected) {
    require(seen == expected, std::string(what) + " is " + quoted(seen) + ", not " + quoted(expected));
}

void requireEqual(
    std::string_view what, const std::vector<std::string>& seen, const std::vector<std::string>& expected) {
    require(seen == expected, std::string(what) + ": expected " + listed(expected) + ", saw " + listed(seen));
}

void requireForAll(
    std::initializer_list<std::string_view> paths, std::string_view word, bool answer,
    const std::function<bool(std::string_view)>& question) {
    for (const auto path : paths) {
        require(
            question(path) == answer, quoted(path) + (answer ? " should be " : " should not be ") + std::string(word));
    }
}

} // namespace zembrastel
