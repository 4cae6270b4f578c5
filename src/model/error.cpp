#include "model/error.h"

#include <filesystem>
#include <new>
#include <system_error>

namespace zembrastel {

std::string describe(const std::exception& error) {
    // std::filesystem::filesystem_error puts "filesystem error:" and brackets around the same facts.
    if (const auto* file = dynamic_cast<const std::filesystem::filesystem_error*>(&error)) {
        return file->path1().empty() ? file->code().message() : file->path1().string() + ": " + file->code().message();
    }
    if (dynamic_cast<const std::bad_alloc*>(&error) != nullptr) return "Out of memory";
    return error.what();
}

} // namespace zembrastel
