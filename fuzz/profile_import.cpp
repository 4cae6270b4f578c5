// Files of other programs that profiles are imported from.
#include "model/import/profile_import.h"
#include "model/saved_state.h"
#include "platform/text.h"

#include "promise.h"
#include "targets.h"

#include <set>

namespace zembrastel::fuzz {

void profileImport(std::string_view input) {
    const auto found = unlessRefused([&] { return findProfiles(input, "/w/.vscode/sftp.json"); });
    if (!found) return;
    std::set<std::string> names;
    for (const auto& [profile, password, notes] : found->candidates) {
        promise(names.insert(profile.name).second, "names differ");
        promise(!profile.enabled, "nothing starts by itself");
        promise(decodeProfile(encode(profile)) == profile, "what is imported can be saved");
        if (!password) continue;
        promise(isValidUtf8(*password) && !containsLineBreak(*password), "a password is one line of text");
        promise(password->find('\0') == std::string::npos, "a password has no NUL");
    }
    for (const auto& skipped : found->skipped) promise(!skipped.reason.empty(), "what is skipped has a reason");
}

} // namespace zembrastel::fuzz
