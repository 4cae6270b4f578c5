// The lines that commands print, compared with docs/JSON.md.
#include "server_fixture.h"

#include "platform/text.h"
#include "support/certificates.h"
#include "transport/certificate/server_certificate.h"

#include <map>
#include <rapidjson/document.h>
#include <set>
#include <sys/stat.h>

namespace zembrastel::testing {
namespace {

using namespace std::chrono_literals;
using namespace std::string_literals;

struct Field {
    std::string type;
    bool optional = false;
};

struct Documented {
    std::map<std::string, Field> fields; // "files[].path" for a member of each object in a list
    std::string example;
};

using Document = std::map<std::string, Documented>; // by event

// "`a`" out of " `a` ".
std::string between(const std::string& text, const std::string& quote) {
    const auto begin = text.find(quote);
    const auto end = begin == std::string::npos ? begin : text.find(quote, begin + 1);
    return end == std::string::npos ? "" : text.substr(begin + 1, end - begin - 1);
}

Document readDocument() {
    Document document;
    Documented* section = nullptr;
    const std::string text = readFile(ZEMBRASTEL_SOURCE_DIR "/docs/JSON.md");
    for (const auto view : nonEmptyLines(text)) {
        const std::string line(view);
        if (line.starts_with("## ")) {
            section = &document[between(line, "`")];
        } else if (line.starts_with("| `")) {
            const std::string type(trimmed(split(line, '|').at(2)));
            section->fields[between(line, "`")] = {
                .type = type.substr(0, type.find(',')), .optional = type.find("optional") != std::string::npos};
        } else if (line.starts_with('{')) {
            section->example = line;
        }
    }
    return document;
}

std::string typeOf(const rapidjson::Value& value) {
    if (value.IsString()) return "text";
    if (value.IsNumber()) return "number";
    if (value.IsBool()) return "flag";
    if (value.IsArray()) return "list";
    return value.IsObject() ? "object" : "null";
}

// Path of each member to its type. Objects of one list have one form.
void addFields(const rapidjson::Value& object, const std::string& prefix, std::map<std::string, std::string>& found) {
    for (const auto& member : object.GetObject()) {
        const std::string path = prefix + member.name.GetString();
        found[path] = typeOf(member.value);
        if (!member.value.IsArray()) continue;
        for (const auto& element : member.value.GetArray()) addFields(element, path + "[].", found);
    }
}

// The difference from the document; empty if there is none, and then `events` has the event of the line.
std::string complaint(const std::string& line, const Document& document, std::set<std::string>& events) {
    rapidjson::Document json;
    json.Parse(line.data(), line.size());
    if (json.HasParseError() || !json.IsObject()) return "no object: " + line;
    std::map<std::string, std::string> found;
    addFields(json, "", found);
    if (found["event"] != "text" || found["version"] != "number" || json["version"].GetInt() != 1) {
        return "no event or version: " + line;
    }
    const std::string event = json["event"].GetString();
    const auto documented = document.find(event);
    if (documented == document.end()) return "an undocumented event: " + line;
    for (const auto& [path, type] : found) {
        if (path == "event" || path == "version") continue;
        const auto field = documented->second.fields.find(path);
        if (field == documented->second.fields.end()) return "undocumented " + path + ": " + line;
        if (field->second.type != type) return path + " is no " + field->second.type + ": " + line;
    }
    for (const auto& [path, field] : documented->second.fields) {
        const auto list = path.find("[].");
        const bool emptyList = list != std::string::npos && json[path.substr(0, list).c_str()].Empty();
        if (!field.optional && !emptyList && !found.contains(path)) return path + " is missing: " + line;
    }
    events.insert(event);
    return "";
}

class JsonDocument : public CliWithServer {
protected:
    void take(const std::string& lines) {
        for (const auto line : nonEmptyLines(lines)) {
            const std::string problem = complaint(std::string(line), document, events);
            if (!problem.empty()) ADD_FAILURE() << problem;
        }
    }

    // Runs a whole command line.
    void runAndTake(const std::string& typed, int status = 0) {
        const auto result = place.expect(status, typed + " --json");
        take(result.output);
        take(result.errors);
    }

    void exerciseProfiles() {
        place.password.clear(); // there is no secret store
        const auto other = place.path("other").string();
        const auto exported = place.path("exported.json").string();
        std::filesystem::create_directory(other);
        runAndTake("profile add --name Other --host 127.0.0.1 --username web --sync a --local-folder " + other);
        runAndTake("profile list");
        runAndTake("profile show Other");
        place.expect(0, "profile export Other --output " + exported);
        runAndTake("profile duplicate Other Copy");
        runAndTake("profile remove Other --yes --keep-password");
        runAndTake("profile import --dry-run " + exported);
        runAndTake("profile import " + exported);
        runAndTake("profile import " + exported, 1); // skipped
        runAndTake("profile set Copy --host localhost");
        place.savePassword(server->password());
    }

    void exerciseReview() {
        changeOnServer("index.html", "by another", 60s);
        changeOnServer("images/a.svg", "by another", 60s);
        runAndTake("check 'My website'", 3);
        runAndTake("push 'My website'", 3);
        runAndTake("review 'My website' --download index.html");
        runAndTake("backups 'My website'");
        runAndTake("restore 'My website' index.html");
    }

    void exerciseRunningProgram() {
        Program watch = startWatch();
        take(readUntilWatching(watch));
        runAndTake("status");
        Program follower = place.start("status --follow --json");
        take(follower.readLine(limit));
        writeFile(site / "index.html", "edited again");
        take(readUntil(watch, "Uploaded index.html"));
        take(readUntil(follower, "Uploaded index.html"));
        take(readUntilWatching(watch)); // with the server's date; without it the file would count as another's
        runAndTake("pause 'My website'");
        runAndTake("resume 'My website'");
        std::filesystem::remove(serverSite / "index.html");
        runAndTake("check 'My website'", 1);
        runAndTake("push 'My website' --missing");
        runAndTake("push 'My website' --leave-missing");
        end(watch);
    }

    void exerciseSlowServer() {
        FtpServer slow(FtpServer::Kind::odd, {.extra = {"--rate", "700000"}});
        saveProfile(slow, "/");
        writeFile(site / "video", randomBytes(3'000'000));
        runAndTake("push 'My website'", 1); // the bad name is still there
    }

    void exerciseTrust() {
        FtpServer unverified(FtpServer::Kind::odd, {.tls = FtpServer::Tls::explicitTls});
        saveProfile(unverified, "/");
        runAndTake("profile trust 'My website'", 2); // without the key
        const auto pem = readFile(certificates().server);
        runAndTake("profile trust 'My website' --key " + ServerCertificate::parse(pem).key.text());
    }

    Document document = readDocument();
    std::set<std::string> events; // that were seen
};

TEST_F(JsonDocument, EveryExampleHasTheDocumentedForm) {
    ASSERT_GE(document.size(), 20U);
    for (const auto& [event, section] : document) {
        events.clear();
        EXPECT_EQ(complaint(section.example, document, events), "");
        EXPECT_EQ(events, std::set<std::string>{event});
    }
}

TEST_F(JsonDocument, EveryPrintedLineIsAsDocumented) {
    exerciseProfiles();
    server->put("site/index.html", readFile(site / "index.html"));
    runAndTake("check 'My website'", 3);
    runAndTake("adopt 'My website' --by size");
    for (const char* command : {"test", "push --dry-run", "push", "ls"}) runAndTake(command + " 'My website'"s);
    writeFile(site / "new.html", "1");
    writeFile(site / "bad\xff.html", "1");
    runAndTake("scan 'My website'"); // with a warning
    runAndTake("why 'My website' a.swp");
    exerciseReview();
    runAndTake("doctor 'My website'");
    exerciseRunningProgram();
    Profile undownloaded = place.profile();
    undownloaded.needsDownload = true;
    undownloaded.initialDownloadSelection = DownloadSelection::everything();
    place.saveProfile(undownloaded);
    runAndTake("push 'My website' --download-first", 1); // the bad name is there
    std::filesystem::create_directory(serverSite / "locked");
    ASSERT_EQ(::chmod((serverSite / "locked").c_str(), 0555), 0);
    writeTree(site, {{"locked/page", "1"}});
    runAndTake("push 'My website'", 1);
    runAndTake("forget-files 'My website'");
    exerciseSlowServer();
    exerciseTrust();
    events.insert("unprinted"); // printed by a thread that waits for a reader: see output_test.cpp

    std::set<std::string> all;
    for (const auto& [event, section] : document) all.insert(event);
    EXPECT_EQ(events, all);
}

} // namespace
} // namespace zembrastel::testing
