#include "checks/check.h"
#include "model/profile.h"

namespace zembrastel {
namespace {

void requireExcluded(const Exclusions& rules, bool excluded, std::initializer_list<std::string_view> paths) {
    Profile profile;
    profile.exclusions = rules;
    requireForAll(paths, "excluded", excluded, [&profile](std::string_view path) { return profile.excludes(path); });
}

void defaultExclusions() {
    requireExcluded(
        {}, true, {".git/config", "src/.env", "a/.env.local", "x/node_modules/y.js", "notes.txt.swp", "memo~"});
    requireExcluded({}, false, {".envrc", "src/main.c"});
}

void stagingFiles() {
    requireExcluded(
        Exclusions(""), true,
        {".zembrastel-backups", ".zembrastel-backups/2026/index.html", ".zembrastel-1.part", "sub/.zembrastel-1.part"});
}

void hiddenWebAssets() { requireExcluded({}, false, {".htaccess", ".well-known", "assets/.well-known/security.txt"}); }

void customExclusions() {
    const Exclusions rules(" \t drafts \u00A0\n \t \nlogs/*.txt\n*.PSD");
    requireExcluded(rules, true, {"drafts", "a/drafts/b", "logs/a.txt", "images/logo.PSD"});
    requireExcluded(rules, false, {"draft", " ", "other/logs/a.txt", "logs/sub/a.txt", "images/logo.psd"});
}

} // namespace

Checks exclusionChecks() {
    return {
        {"default exclusions", defaultExclusions},
        {"staging files excluded", stagingFiles},
        {"hidden web assets included", hiddenWebAssets},
        {"custom exclusions", customExclusions}};
}

} // namespace zembrastel
