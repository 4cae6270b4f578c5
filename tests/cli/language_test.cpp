// The executable in German, with the catalogue of the build tree.
#include "server_fixture.h"

namespace zembrastel::testing {
namespace {

class German : public CliWithServer {
protected:
    // A locale that every machine has.
    const Texts english{"LC_ALL=C.UTF-8"};
    const Texts german{"LC_ALL=C.UTF-8", "LANGUAGE=de"};
};

TEST_F(German, UserReadsTwoLanguagesAtOnce) {
    place.variables = german;
    expect(0, "push", {"Hochgeladen: index.html\n", "„My website“ wurde hochgeladen: 2 Dateien."});
    expect(0, "scan", {"My website: 2 Dateien, 11 Bytes, in "});
    expect(2, "push --all --missing", {"--missing und --all schließen sich aus. --help zeigt mehr."});
    expect(6, "status", {"Zembrastel läuft nicht für "});
    Program watching = place.start("watch 'My website'");
    EXPECT_TRUE(contains(readUntil(watching, "Überwacht"), "My website  Server wird geprüft: Die Datumsangaben"));
    expect(0, "status", {"My website  Überwacht\n", "Lokale Änderungen werden automatisch hochgeladen."});
    end(watching);
    server->stop();
    const auto failed =
        expect(1, "test", {"Der Server-Ordner von „My website“", "Servername und Port im Profil prüfen"});
    EXPECT_FALSE(contains(failed.errors, "Check "));
}

TEST_F(German, LongForeignWordsHangTheProgram) {
    std::string words;
    while (words.size() < 4000) words += ". ";
    place.variables = german;
    const auto start = std::chrono::steady_clock::now();
    EXPECT_TRUE(contains(place.run("profile add --port '" + words + "x'").errors, words));
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(5));
}

TEST_F(German, ScriptReadsTranslatedJson) {
    for (const std::string command : {"push --dry-run", "scan", "why x.psd", "profile show", "status", "--bad"}) {
        place.variables = english;
        const auto before = place.run("--json " + command + " 'My website'");
        place.variables = german;
        const auto after = place.run("--json " + command + " 'My website'");
        EXPECT_NE(before.output + before.errors, "") << command;
        EXPECT_EQ(after.output + after.errors, before.output + before.errors) << command;
        EXPECT_EQ(after.status, before.status) << command;
    }
}

} // namespace
} // namespace zembrastel::testing
