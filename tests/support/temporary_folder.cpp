#include "support/temporary_folder.h"

#include <cerrno>
#include <cstdlib>
#include <iostream>
#include <string>
#include <system_error>

namespace fs = std::filesystem;

namespace zembrastel::testing {

namespace {

void openFolders(const fs::path& folder) {
    fs::permissions(folder, fs::perms::owner_all, fs::perm_options::add);
    for (const fs::directory_entry& entry : fs::directory_iterator(folder)) {
        if (entry.symlink_status().type() == fs::file_type::directory) openFolders(entry.path());
    }
}

} // namespace

TemporaryFolder::TemporaryFolder() {
    std::string pattern = fs::canonical(fs::temp_directory_path()) / "zembrastel-test-XXXXXX";
    if (mkdtemp(pattern.data()) == nullptr) throw std::system_error(errno, std::generic_category(), pattern);
    folder = pattern;
}

TemporaryFolder::~TemporaryFolder() {
    try {
        openFolders(folder);
        fs::remove_all(folder);
    } catch (const fs::filesystem_error& error) { // no reason to fail the test, which is over
        std::cerr << error.what() << '\n';
    }
}

} // namespace zembrastel::testing
