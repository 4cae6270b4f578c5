// The executable in German, with the catalogue of the build tree.
#include "server_fixture.h"

#include <map>

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

TEST(GermanAlone, LanguageListOfTheUserIsIgnored) {
    CliPlace place;
    for (const auto& [variables, german] : std::map<std::string, bool>{
             {"LANG=de_DE.UTF-8 LANGUAGE=", true},
             {"LANG=fr_FR.UTF-8 LANGUAGE=fr:de", true},
             {"LANG=de_DE.UTF-8 LANGUAGE=en_GB:de", false},
             {"LC_ALL=C LANGUAGE=de", false}}) {
        place.variables = *cli::splitWords("LC_ALL= " + variables);
        EXPECT_EQ(contains(place.run("--help").output, "Befehle:"), german) << variables;
    }
}

TEST(GermanAlone, FailureIsReportedInTwoLanguages) {
    CliPlace place;
    place.variables = {"LC_ALL=C.UTF-8", "LANGUAGE=de"};
    const auto file = place.state() / "profiles.json";
    writeFile(file, R"({"zembrastelProfiles":1,"profiles":7})");
    place.expect(1, "profile import " + file.string(), {R"(: "profiles" ist keine Liste)"});
    writeFile(file, "{");
    place.expect(1, "scan x", {"profiles.json: Byte 1 des gespeicherten Stands ist kein gültiges JSON: "});
    const std::string text =
        "The date of a file that was just uploaded is 1 hour 30 minutes ahead: the server reports dates in its local "
        "time, not in UTC. There is no room for a copy of 1.5 MB to upload from: it has 12.4 MB, and /a has 0.1 MB "
        "free. "
        "Free some space there, or start Zembrastel with TMPDIR set to a folder with more. The other files are not "
        "affected.";
    place.expect(2, "profile add --port 'x: " + text + "'", {"1 Stunde 30 Minuten in", "von 1.5 MB", "12,4 MB"});
}

} // namespace
} // namespace zembrastel::testing
