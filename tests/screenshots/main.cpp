// Renders every screen into PNG files, light and dark, without a display: screenshots [--locale NAME] FOLDER [NAME...]
//
// With the locale "brackets" every text of the program is put into brackets. No picture is made, and a text without
// brackets is an error: it cannot be translated.
//
// Fails if a picture has the wrong size or is blank, if a control has no name, or if a text is cut. At a scale factor
// (QT_SCALE_FACTOR) other than 1 the files are named NAME-light@2x.png.
#include "language/translation.h"
#include "model/error.h"
#include "support/fake_clock.h"
#include "support/file_tree.h"
#include "support/ftp_server.h"
#include "support/local_site.h"
#include "text_in_brackets.h"
#include "ui/backups/backups_sheet.h"
#include "ui/bridge/qt_main_context.h"
#include "ui/certificate/certificate_sheet.h"
#include "ui/content_picker/content_picker.h"
#include "ui/help/about_dialog.h"
#include "ui/help/help_window.h"
#include "ui/import/import_sheet.h"
#include "ui/main_window/main_window.h"
#include "ui/profile_editor/connection_fields.h"
#include "ui/profile_editor/content_fields.h"
#include "ui/profile_editor/new_place_dialog.h"
#include "ui/profile_editor/profile_editor.h"
#include "ui/remote_changes/review_sheet.h"
#include "ui/remote_folder/folder_tree_model.h"
#include "ui/remote_folder/remote_folder_sheet.h"
#include "ui/screen.h"
#include "ui/theme/qt_text.h"
#include "ui/theme/theme.h"
#include "ui/theme/turning_clock.h"
#include "ui/translations.h"
#include "ui/widgets/confirm_dialog.h"
#include "ui/widgets/elide_label.h"
#include "ui/widgets/search_field.h"

#include <QApplication>
#include <QDir>
#include <QLocale>
#include <QSignalSpy>

#include <algorithm>
#include <array>
#include <atomic>
#include <chrono>
#include <cstdio>
#include <filesystem>
#include <functional>
#include <memory>
#include <stdexcept>
#include <thread>

namespace zembrastel::screenshots {

using namespace ui;

namespace {

using namespace std::chrono_literals;
using testing::button;
using testing::FtpServer;
using testing::LocalSite;

[[noreturn]] void fail(const QString& problem) { throw std::runtime_error(problem.toStdString()); }

// Shows the time of today that was set last. No sleep on it ends by itself.
class PictureClock final : public testing::FakeClock {
public:
    PictureClock() {
        onSleep = [](std::chrono::nanoseconds) { return false; };
    }
    void set(std::chrono::seconds sinceMidnight) {
        advance(std::chrono::floor<std::chrono::days>(std::chrono::system_clock::now()) + sinceMidnight - now());
    }
};

RemoteChange change(const char* path, std::chrono::sys_seconds local, std::chrono::sys_seconds remote, bool both) {
    return {
        .path = path,
        .local = {.modified = static_cast<double>(local.time_since_epoch().count())},
        .remoteDate = toRemoteDate(remote),
        .bothChanged = both};
}

// A site, and the script of its job.
struct Sample {
    const char* name;
    const char* host;
    const char* remoteFolder;
    const char* localFolder;
    std::vector<std::pair<std::chrono::seconds, std::string>> lines{}; // of the log, with the time of the day
    std::optional<TransferProgress> progress{};                        // of a running upload
    std::vector<RemoteChange> changes{};
    std::string failure{};
    PathSet missing{}; // on the server
};

std::vector<Sample> samples() {
    using namespace std::chrono;
    const auto day = sys_days(2026y / November / 20);
    const char* const photograph =
        "Uploaded assets/img/team/2026/autumn-retreat/photographs/group-photo-wide-version-final.webp";
    const TransferProgress::File banner{
        .path = "assets/img/hero-banner-2026.webp", .bytes = 5'214'208, .size = 8'912'896, .rate = 612'000, .left = 7s};
    return {
        {.name = "My website",
         .host = "ftp.example.org",
         .remoteFolder = "/public_html",
         .localFolder = "/home/you/Projects/website",
         .lines =
             {{9h + 39min + 30s, "curl: (56) response reading failed (errno: 104)"},
              {9h + 40min + 49s, "Uploaded index.html"},
              {9h + 40min + 52s, photograph},
              {9h + 41min + 7s, "Uploaded css/site.css"}}},
        {.name = "Client portal",
         .host = "portal.example.com",
         .remoteFolder = "/htdocs/portal",
         .localFolder = "/home/you/Work/portal/dist",
         .lines =
             {{9h + 40min + 49s, "Uploaded portal/login.html"},
              {9h + 40min + 52s, photograph},
              {9h + 41min + 7s, "Uploaded css/site.css"},
              {9h + 41min + 12s, "Uploaded assets/img/logo.svg"}},
         .progress = TransferProgress{.file = banner, .filesDone = 4, .filesQueued = 7}},
        {.name = "Spring campaign",
         .host = "www.example.org",
         .remoteFolder = "/sites/campaigns/spring-2026",
         .localFolder = "/home/you/Projects/spring-launch/website/build",
         .changes =
             {change("landing/index.html", day - 150h, day + 22h, false),
              change(
                  "landing/assets/translations/2026/spring-launch/long-form/en-GB/strings.json", day + 16h,
                  day + 22h + 17min, true),
              change("robots.txt", day - 1200h, day + 32h, false)}},
        {.name = "Documentation",
         .host = "docs.example.net",
         .remoteFolder = "/var/www/docs",
         .localFolder = "/home/you/Projects/handbook/public",
         .failure = "curl: (67) Access denied: 530"},
        {.name = "Photo archive",
         .host = "ftp.example.org",
         .remoteFolder = "/photos",
         .localFolder = "/home/you/Pictures/Archive",
         .missing = {"assets/img/banner-old.webp", "blog/2025/summer-sale.html", "news.html", "robots.txt"}}};
}

// The samples in one model. Events without a server bring each into its state.
class SampleSites {
public:
    explicit SampleSites(MainContext& context) {
        SavedState state;
        std::map<Uuid, std::string> passwords;
        for (const auto& sample : all) {
            Profile& profile = state.profiles.emplace_back();
            profile.name = sample.name;
            profile.host = sample.host;
            profile.username = "webmaster";
            profile.remoteFolder = sample.remoteFolder;
            profile.localFolder = sample.localFolder;
            passwords[profile.id] = "ten dots..";
        }
        const StateStore store(folder.path());
        store.save(state);
        app = std::make_unique<AppModel>(
            context, AppModel::Options{
                         .storeOverride = store,
                         .sessionPasswords = passwords,
                         .passwordAccess = {.save = nullptr, .read = nullptr, .remove = nullptr},
                         .work = work(),
                         .clock = clock});
        for (std::size_t i = 0; i + 1 < all.size(); ++i) start(all[i]); // except the last one
    }

    // Checks this site as one that was uploaded before by another program.
    void adopt(const Uuid& site) {
        first.emplace();
        first->localFiles = 640;
        for (int number = 0; number < 612; ++number) {
            const std::string path = "assets/" + std::to_string(number);
            first->alike.files.set(path, {.size = 300'700});
            first->alike.dates.set(path, {});
        }
        clock.set(9h + 38min + 14s);
        app->retryCheck(site);
        if (!testing::waitFor([&] { return app->firstComparison(site) != nullptr; })) fail("no choice waits");
    }

    void compareContents(const Uuid& site) {
        app->compareContents(site);
        const auto differ = [&] { return app->firstComparison(site)->different.files.size() == 3; };
        if (!testing::waitFor([&] { return differ() && app->status(site).progress; })) fail("nothing is compared");
    }

    // Starts this site again, whose uploads then fail like this: for single files, or with all files waiting.
    void failUploads(const Uuid& site, std::vector<Failure> files, std::optional<Failure> poll) {
        refused = std::move(files);
        stalled = std::move(poll);
        first.reset();
        offline = false;
        app->toggle(site); // paused
        const int before = played;
        app->toggle(site);
        if (!testing::waitFor([&] { return played > before; })) fail("no uploads failed");
        QCoreApplication::processEvents();
    }

    // The next check of this site fails without a network.
    void loseNetwork(const Uuid& site) {
        offline = true;
        app->retryCheck(site);
        const auto isKnown = [&] {
            const auto failure = app->status(site).failure;
            return failure && failure->kind == Failure::Kind::noNetwork;
        };
        if (!testing::waitFor(isKnown)) fail("the network is not missed");
    }

    // Starts the paused site, whose check finds missing files on the server.
    void startLast() { start(all.back()); }

    [[nodiscard]] AppModel& model() { return *app; }
    [[nodiscard]] Uuid id(const std::string& name) const {
        return std::ranges::find(app->profiles(), name, &Profile::name)->id;
    }

private:
    void start(const Sample& sample) {
        const Uuid site = id(sample.name);
        clock.set(9h + 38min + 9s);
        const auto done = [&, before = played.load()] { return played > before || shows(sample, site); };
        app->toggle(site);
        if (!testing::waitFor(done)) fail("a site did not reach its state");
        QCoreApplication::processEvents();
    }

    [[nodiscard]] bool shows(const Sample& sample, const Uuid& id) const {
        return app->reviews().contains(id) || (!sample.failure.empty() && app->checkFailures().contains(id));
    }

    [[nodiscard]] const Sample& of(const Profile& profile) const {
        return *std::ranges::find_if(all, [&](const Sample& sample) { return sample.name == profile.name; });
    }

    JobWork work() {
        return {
            .check =
                [this](const FTPTransport& server, const auto&...) {
                    const Sample& sample = of(server.profile);
                    if (offline)
                        throw TransferError(
                            CurlCode::hostNotFound, "curl: (6) Could not resolve host: docs.example.net");
                    if (!sample.failure.empty()) throw TransferError(CurlCode::loginRefused, sample.failure);
                    return ServerCheck{.changes = sample.changes, .missing = sample.missing, .first = first};
                },
            .watch = [this](const SyncWorker& worker, const std::stop_token&) { play(worker); },
            .compareContents =
                [this](const FTPTransport& server, const auto& files, const auto& compared) {
                    compare(server, files, compared);
                },
            .hasNetwork = [this](const std::string&) { return !offline; }};
    }

    // Stays in the middle of the comparison until it is stopped.
    void compare(
        const FTPTransport& server, const std::vector<FTPTransport::FileToCompare>& files,
        const FTPTransport::Compared& compared) {
        for (std::size_t number = 0; number < 248; ++number) {
            clock.set(9h + 38min + 22s + std::chrono::seconds(number / 4));
            server.observer->fileBegins(files[number].path, files[number].fingerprint.size);
            server.observer->fileMoved(287'500);
            compared(files[number], number % 100 > 0 ? std::optional(ContentHash{}) : std::nullopt);
        }
        server.observer->fileBegins("assets/img/team/2026/autumn-retreat.webp", 300'700);
        clock.set(9h + 39min + 26s);
        server.observer->fileMoved(1'000);
        while (!server.control->isStopped()) std::this_thread::sleep_for(std::chrono::milliseconds(5));
        throw Cancelled();
    }

    void play(const SyncWorker& worker) {
        const Sample& sample = of(worker.profile);
        worker.events.deliver(watchingStatus()); // so that all lines of the start are in the log
        for (const auto& [time, text] : sample.lines) {
            clock.set(time);
            if (text.starts_with("Uploaded ")) {
                worker.events.deliver(event::Uploaded{.path = text.substr(9), .fingerprint = {}});
            } else {
                worker.events.deliver(event::Activity{.text = text, .error = true});
            }
        }
        if (!refused.empty()) {
            worker.events.deliver(event::FilesRefused{refused});
            worker.events.deliver(watchingStatus());
        } else if (stalled) {
            using std::chrono_literals::operator""s;
            worker.events.deliver(event::Status{
                .phase = Phase::waitingToRetry,
                .detail = retryDetail(stalled->message, 20s),
                .outlook = retryOutlook(20s),
                .failure = stalled,
                .retryAt = worker.clock.now() + 20s,
                .waiting = 3});
        } else if (sample.progress) {
            worker.events.deliver(uploadingStatus(sample.progress->file->path, 3));
            worker.events.progress(*sample.progress);
        }
        ++played;
    }

    const std::vector<Sample> all = samples();
    std::optional<FirstComparison> first; // of the next checks
    std::vector<Failure> refused;
    std::optional<Failure> stalled;
    std::atomic<bool> offline = false;
    testing::TemporaryFolder folder;
    PictureClock clock;
    std::atomic<int> played = 0;
    std::unique_ptr<AppModel> app;
};

// A narrow layout passes its smaller width on from parent to parent, one turn each.
void settle() {
    for (int turn = 0; turn < 12; ++turn) QCoreApplication::processEvents();
}

// Makes the pictures, and checks each screen: every control has a name for screen readers, and no text is cut.
class Album {
public:
    Album(QString folder, QStringList names) : place(std::move(folder)), wanted(std::move(names)) {
        if (!QDir().mkpath(place)) fail("cannot make the folder " + place);
    }

    // From now on only checks the screens, each at its smallest size.
    void onlyCheck() { onlyChecks = true; }
    [[nodiscard]] bool takesPictures() const { return !onlyChecks && !finds; }

    // From now on only finds texts of the screens that are not in brackets.
    void onlyFindUntranslated() { finds = true; }
    [[nodiscard]] const QSet<QString>& untranslated() const { return found; }

    // A width or height of 0 is the screen's own choice.
    void add(const QString& name, QWidget& screen, QSize size) {
        if (!wanted.isEmpty() && !wanted.contains(name)) return;
        if (finds) {
            found += textsWithoutBrackets(screen);
            return;
        }
        if (onlyChecks) screen.resize(screen.minimumSize());
        if (onlyChecks) settle();
        check(name, screen);
        if (onlyChecks) return;
        const QImage picture = screen.grab().toImage().convertToFormat(QImage::Format_RGB888);
        const QSize taken = picture.deviceIndependentSize().toSize();
        if ((size.width() > 0 && taken.width() != size.width())
            || (size.height() > 0 && taken.height() != size.height())) {
            fail(QStringLiteral("%1 is %2 by %3").arg(name).arg(taken.width()).arg(taken.height()));
        }
        QImage plain(picture.size(), picture.format());
        plain.setDevicePixelRatio(picture.devicePixelRatio());
        plain.fill(picture.pixelColor(0, 0));
        if (plain == picture) fail(name + " is blank");
        const bool isDark = theme().appearance() == Appearance::dark;
        const QString contrast = theme().highContrast() ? QStringLiteral("-contrast") : QString();
        const double scale = picture.devicePixelRatio();
        const QString suffix = scale == 1 ? QString() : QStringLiteral("@%1x").arg(scale);
        const QString file = place + u'/' + name + contrast + (isDark ? "-dark" : "-light") + suffix + ".png";
        constexpr int quickly = 80; // zlib takes longer than all else for the smallest files
        if (!picture.save(file, "PNG", quickly)) fail("cannot write " + file);
    }

private:
    static void check(const QString& name, const QWidget& screen) {
        const QStringList nameless = testing::namelessControls(screen);
        if (!nameless.isEmpty()) fail(name + " has controls without a name: " + nameless.join(u' '));
        for (const auto* const each : screen.findChildren<QWidget*>()) {
            const auto* const label = qobject_cast<const QLabel*>(each);
            const auto* const button = qobject_cast<const QPushButton*>(each);
            // These shorten or wrap their text by themselves.
            const bool fits = qobject_cast<const ElideLabel*>(each) != nullptr
                              || qobject_cast<const WrapLabel*>(each) != nullptr
                              || qobject_cast<const ProgressLabel*>(each) != nullptr;
            if ((label == nullptr && button == nullptr) || fits || !each->isVisible()) continue;
            const int right = each->mapTo(&screen, QPoint(each->width(), 0)).x();
            if (each->width() >= each->sizeHint().width() && right <= screen.width()) continue;
            fail(name + " cuts the text: " + (label != nullptr ? label->text() : button->text()));
        }
    }

    QString place;
    QStringList wanted;
    bool onlyChecks = false;
    bool finds = false;
    QSet<QString> found;
};

// A screen of the album: `open` makes and opens it. If a question is open over it, the picture is of the question.
struct Screen {
    const char* name;
    QSize size;
    std::function<std::unique_ptr<QWidget>()> open;
};

void play(Album& album, const std::vector<Screen>& screens) {
    for (const Appearance appearance : {Appearance::light, Appearance::dark}) {
        if (appearance == Appearance::dark && !album.takesPictures()) return; // colours change no layout and no text
        theme().apply(appearance);
        for (const auto& [name, size, open] : screens) {
            const std::unique_ptr<QWidget> screen = open();
            settle();
            QWidget* const question = screen->findChild<ConfirmDialog*>();
            if (auto* const focused = screen->focusWidget(); focused != nullptr && question == nullptr) {
                focused->clearFocus(); // as while the keyboard is used elsewhere
            }
            settle();
            album.add(name, question == nullptr ? *screen : *question, size);
        }
    }
}

// The screens, with the servers and folders that they show.
class Screens {
public:
    Screens() : server(FtpServer::Kind::vsftpd), site(server) {
        site.profile.exclusions = Exclusions();
        for (const char* const path :
             {"assets/fonts/inter.woff2", "assets/img/hero-banner-2026.webp",
              "assets/img/team-photo-autumn-retreat.webp", "assets/video/tour.webm", "backup/2025.zip",
              "node_modules/package.json", ".env", "index.html", "robots.txt"}) {
            server.put(std::string("site/") + path, "x");
        }
        std::filesystem::create_directory(server.root() / "site/uploads");
        testing::writeTree(site.root(), {{"drafts/next.html", ""}, {"notes.md", ""}});
        makeBackups();
        testing::writeFile(folder / "sitemanager.xml", importedFile);
    }

    [[nodiscard]] std::vector<Screen> all() {
        constexpr QSize mainSize(980, 640);
        return {
            {"main-watching", mainSize, [this] { return mainWindow("My website"); }},
            {"main-watching-small",
             {760, 520},
             [this] {
                 auto window = mainWindow("My website");
                 window->resize(760, 520);
                 return window;
             }},
            {"main-uploading", mainSize, [this] { return mainWindow("Client portal"); }},
            {"main-review", mainSize, [this] { return mainWindow("Spring campaign"); }},
            {"main-check-failed", mainSize, [this] { return mainWindow("Documentation"); }},
            {"main-paused", mainSize, [this] { return mainWindow("Photo archive"); }},
            {"welcome", mainSize, [this] { return shown(std::make_unique<MainWindow>(emptyBridge)); }},
            {"editor-new", {880, 616}, [this] { return editor(std::nullopt); }},
            {"editor-edit", {880, 704}, [this] { return editor(sites.id("Documentation")); }},
            {"editor-trusted-key", {880, 704}, [this] { return editorWithKey(); }},
            {"new-place", {460, 0}, [] { return newPlace(); }},
            {"certificate", {640, 0}, [this] { return certificate(std::nullopt); }},
            {"certificate-changed", {640, 0}, [this] { return certificate(trustedKey()); }},
            {"picker-sync", {720, 776}, [this] { return picker(); }},
            {"picker-found", {720, 480}, [this] { return search(); }},
            {"remote-folder", {640, 600}, [this] { return remoteFolder(); }},
            {"remote-folder-small",
             {560, 440},
             [this] {
                 auto opened = remoteFolder();
                 opened->resize(560, 440);
                 return opened;
             }},
            {"review", {680, 480}, [this] { return review(); }},
            {"backups", {720, 520}, [this] { return backups(); }},
            {"import", {720, 560}, [this] { return import(); }},
            {"about", {496, 0}, [] { return shown(std::make_unique<AboutDialog>()); }},
            {"help", {880, 720}, [] { return shown(std::make_unique<HelpWindow>(ZEMBRASTEL_SOURCE_DIR "/docs")); }},
            {"main-many-profiles", mainSize, [this] { return shown(std::make_unique<MainWindow>(manyBridge)); }},
            {"main-filtered", mainSize,
             [this] {
                 auto window = shown(std::make_unique<MainWindow>(manyBridge));
                 QTest::keyClicks(window->findChild<SearchField*>(), "shop");
                 return window;
             }},
            {"main-wide", {2560, 1440}, [this] {
                 auto window = mainWindow("My website");
                 window->resize(2560, 1440);
                 return window;
             }}};
    }

    // These need the paused site to run.
    [[nodiscard]] std::vector<Screen> withMissingFiles() {
        sites.startLast();
        const char* const name = "Photo archive";
        return {{"main-missing-files", {980, 640}, [=, this] { return mainWindow(name); }}};
    }

    // These change the state of the first site.
    [[nodiscard]] std::vector<Screen> withChoice() {
        const auto first = sites.id("My website");
        sites.adopt(first);
        const auto open = [this] { return mainWindow("My website"); };
        const auto compare = [=, this] {
            sites.adopt(first); // from the beginning
            sites.compareContents(first);
            return open();
        };
        const auto small = [=] {
            auto window = open();
            window->resize(760, 520);
            return window;
        };
        const auto choose = [=, this](const auto& shown) {
            sites.model().stopComparing(first);
            return shown();
        };
        return {
            {"main-first-check", {980, 640}, [=] { return choose(open); }},
            {"main-first-check-small", {760, 520}, [=] { return choose(small); }},
            {"main-comparing", {980, 640}, compare}};
    }

    // These change the states of further sites.
    [[nodiscard]] std::vector<Screen> withFailures() {
        const auto refuse = [this] {
            const auto failure = [](const char* path, FtpReply reply) {
                Failure refused =
                    failureOf(TransferError(CurlCode::uploadRefused, "curl: (25) Failed FTP upload", reply));
                refused.path = path;
                return refused;
            };
            sites.failUploads(
                sites.id("Client portal"),
                {failure("assets/fonts/corporate-sans (print?).otf", FtpReply::nameRefused),
                 failure("private/.htaccess", FtpReply::notAllowed)},
                std::nullopt);
            return mainWindow("Client portal");
        };
        const auto stall = [this] {
            Failure lost =
                failureOf(TransferError(CurlCode::receiveFailed, "curl: (56) Recv failure: Connection reset by peer"));
            lost.path = "assets/img/hero-banner-2026.webp";
            sites.failUploads(sites.id("Client portal"), {}, lost);
            return mainWindow("Client portal");
        };
        const auto disconnect = [this] {
            sites.loseNetwork(sites.id("Documentation"));
            return mainWindow("Documentation");
        };
        return {
            {"main-files-refused", {980, 640}, refuse},
            {"main-waiting-to-retry", {980, 640}, stall},
            {"main-no-network", {980, 640}, disconnect}};
    }

private:
    template <class Widget>
    [[nodiscard]] static std::unique_ptr<Widget> shown(std::unique_ptr<Widget> widget) {
        widget->show();
        settle();
        return widget;
    }

    [[nodiscard]] std::unique_ptr<MainWindow> mainWindow(const char* name) {
        auto window = shown(std::make_unique<MainWindow>(bridge)); // which selects the site of a waiting review
        sites.model().select(sites.id(name));
        return window;
    }

    [[nodiscard]] std::unique_ptr<QWidget> editor(const std::optional<Uuid>& id) {
        auto opened = shown(std::make_unique<ProfileEditor>(bridge, context, id, nullptr));
        if (id) button(*opened, ContentFields::tr("Excluded files and folders")).click();
        return opened;
    }

    [[nodiscard]] static std::unique_ptr<QWidget> newPlace() {
        Profile before;
        before.host = "ftp.example.org";
        Profile now = before;
        now.host = "ftp.example.net";
        now.remoteFolder = "/www";
        return shown(std::make_unique<NewPlaceDialog>(before, now, 640, [](NewPlace) {}));
    }

    [[nodiscard]] TrustedKey trustedKey() {
        using namespace std::chrono;
        const Profile& profile = *sites.model().profile(sites.id("Documentation"));
        const auto key = KeyHash::parse("5F3A91C27E04D86B1C99A2F0473DE15BB86247F09A3C5DE1082F7C64E9B3A1D7");
        return {
            .key = *key, .host = profile.host, .port = profile.port, .since = sys_days(2026y / November / 20) + 12h};
    }

    [[nodiscard]] std::unique_ptr<QWidget> editorWithKey() {
        auto opened = editor(sites.id("Documentation"));
        opened->findChild<ConnectionFields*>()->setTrustedKey(trustedKey());
        settle();
        return opened;
    }

    [[nodiscard]] std::unique_ptr<QWidget> certificate(const std::optional<TrustedKey>& trusted) {
        using namespace std::chrono;
        Profile profile = *sites.model().profile(sites.id("Documentation"));
        profile.trustedKey = trusted;
        const auto shownKey = KeyHash::parse("C41D08E7B2956FA03E7712CD94A8601FE5D39B4476081CAF2B90D7E35A16F84C");
        const InspectedCertificate seen{
            .certificate =
                {.issuedFor = "vps-2214.hosting.example",
                 .issuedBy = "vps-2214.hosting.example",
                 .validFrom = sys_days(2026y / March / 3),
                 .validUntil = sys_days(2027y / March / 3),
                 .key = trusted ? *shownKey : trustedKey().key,
                 .selfSigned = true},
            .faults = {CertificateFault::otherName, CertificateFault::selfSigned}};
        return shown(std::make_unique<CertificateSheet>(
            profile, seen, CertificateSheet::Times{}, [](const auto&) {}, nullptr));
    }

    // The folders are listed by a real server, which the picture does not show.
    [[nodiscard]] std::unique_ptr<QWidget> picker() {
        const DownloadSelection chosen{
            .rules = {
                {"assets/fonts", true},
                {"assets/img/hero-banner-2026.webp", true},
                {"drafts", true},
                {"uploads", true},
                {"index.html", true}}};
        auto opened = std::make_unique<RemoteDownloadPicker>(
            context, site.profile, site.password, chosen, true, [](const auto&...) {});
        opened->resize(720, 776);
        opened->open();
        auto& tree = opened->browser();
        const auto list = [&tree](const char* path) {
            tree.toggle(path);
            waitForListing(tree);
        };
        waitForListing(tree);
        for (const char* const each : {"assets", "assets/img", "uploads"}) list(each);
        // Another user has removed this folder meanwhile.
        std::filesystem::rename(server.root() / "site/backup", server.root() / "elsewhere");
        list("backup");
        std::filesystem::rename(server.root() / "elsewhere", server.root() / "site/backup");
        if (auto* const focused = opened->focusWidget()) focused->clearFocus();
        settle();
        tree.toggle("assets/video"); // still loading when the picture is taken
        return opened;
    }

    [[nodiscard]] std::unique_ptr<QWidget> search() {
        auto opened = std::make_unique<RemoteDownloadPicker>(
            context, site.profile, site.password, DownloadSelection{.rules = {{"drafts", true}, {"index.html", true}}},
            true, [](const auto&...) {});
        opened->resize(720, 480);
        opened->open();
        for (const char* const each : {"", "assets", "assets/img", "drafts"}) {
            waitForListing(opened->browser());
            if (*each != '\0') opened->browser().toggle(each);
        }
        waitForListing(opened->browser());
        QTest::keyClicks(opened->findChild<SearchField*>(), "a");
        return opened;
    }

    [[nodiscard]] std::unique_ptr<QWidget> remoteFolder() {
        auto& root = folderServer.root();
        for (const char* const each :
             {"private", "public_html/assets/x", "public_html/blog/2025/x", "public_html/shop", "tmp"}) {
            std::filesystem::create_directories(root / each);
        }
        Profile shownSite = testing::profileFor(folderServer, site.root(), "/public_html/blog");
        auto opened =
            std::make_unique<RemoteFolderSheet>(context, shownSite, folderServer.password(), [](const auto&) {});
        opened->open();
        auto& list = *opened->findChild<QListView*>();
        const auto rowAt = [&list](const QString& path) {
            const auto* const rows = list.model();
            for (int row = 0; row < rows->rowCount(); ++row) {
                if (rows->index(row, 0).data(Qt::AccessibleTextRole) == path) return rows->index(row, 0);
            }
            return QModelIndex();
        };
        const auto unfold = [&](const QString& path) {
            if (!testing::waitFor([&] { return rowAt(path).isValid(); })) fail(path + " is not listed");
            list.setCurrentIndex(rowAt(path));
            QTest::keyClick(&list, Qt::Key_Right);
        };
        unfold("/public_html/blog");
        if (!testing::waitFor([&] { return rowAt("/public_html/blog/2025").isValid(); })) fail("no listing");
        // Another user has removed this folder meanwhile.
        std::filesystem::rename(root / "private", folder / "private");
        for (const char* const each : {"/tmp", "/private"}) unfold(each);
        if (!testing::waitFor([&] { return rowAt(FolderTreeModel::tr("This folder has no subfolders.")).isValid(); }))
            fail("no listing");
        const QString refused =
            FolderTreeModel::tr("%1, Retry").arg(ui::engineText("The server does not let you read this folder."));
        if (!testing::waitFor([&] { return rowAt(refused).isValid(); })) {
            fail("no refusal");
        }
        std::filesystem::rename(folder / "private", root / "private");
        unfold("/public_html/shop"); // still loading when the picture is taken
        list.setCurrentIndex(rowAt("/public_html/blog"));
        return opened;
    }

    static StateStore manyProfiles(const std::filesystem::path& place) {
        SavedState state;
        for (const char* const name :
             {"Allotment society", "Antiquarian bookshop", "Bakery Lindner", "Bicycle workshop", "Choir of St Anne",
              "Client portal", "Coffee roastery", "Community centre", "Dance school", "Flower shop Iris",
              "Tool shop"}) {
            Profile& profile = state.profiles.emplace_back();
            profile.name = name;
            profile.host = "ftp.example.com";
            profile.username = "webmaster";
            profile.localFolder = std::string("/home/you/Sites/") + name;
        }
        StateStore store(place);
        store.save(state);
        return store;
    }

    static void waitForListing(const RemoteBrowserModel& tree) {
        if (!testing::waitFor([&tree] { return tree.loading().empty(); })) fail("a listing did not end");
        settle();
    }

    [[nodiscard]] std::unique_ptr<QWidget> review() {
        // Shown rather than opened: closing an open sheet would be a decision.
        return shown(std::make_unique<RemoteChangesView>(bridge, sites.model().presentedReview().value()));
    }

    void makeBackups() const {
        using namespace std::chrono;
        struct Kept {
            const char* id;
            const char* path;
            std::size_t size;
            minutes time;
        };
        const auto day = sys_days(year(2026) / 11 / 14);
        for (const auto& [id, path, size, time] : std::array{
                 Kept{"5C0C3F8E-1D2A-4B5E-9F11-7C2E4B6A9D10", "assets/css/site.css", 18'400, 17h + 48min},
                 Kept{"9E44A1B7-6F0C-4D0B-8E55-0A1B2C3D4E5F", "index.html", 6'214, 17h + 48min},
                 Kept{"12345678-6F0C-4D0B-8E55-0A1B2C3D4E5F", "index.html", 6'030, -62h},
                 Kept{"0B7D5A2C-6F0C-4D0B-8E55-0A1B2C3D4E5F", "uploads/catalogue-2026.pdf", 3'650'000, -200h}}) {
            const auto backup = folder / "site/.zembrastel-backups" / id;
            testing::writeFile(backup / path, std::string(size, 'x'));
            testing::touch(backup / path, day + time - 31h);
            testing::touch(backup, day + time);
        }
    }

    [[nodiscard]] std::unique_ptr<QWidget> backups() {
        Profile profile;
        profile.name = "My website";
        profile.localFolder = (folder / "site").string();
        auto opened = std::make_unique<BackupsSheet>(context, profile);
        QSignalSpy listed(opened.get(), &BackupsSheet::listed);
        opened->open();
        if (!listed.wait(testing::patience)) fail("the backups were not listed");
        return opened;
    }

    [[nodiscard]] std::unique_ptr<QWidget> import() {
        auto opened = std::make_unique<ImportSheet>(bridge, context, folder / "sitemanager.xml", nullptr);
        opened->open();
        const auto* const list = opened->findChild<QListView*>();
        if (!testing::waitFor([list] { return list->model()->rowCount() == 4; })) fail("no profiles were found");
        return opened;
    }

    static constexpr const char* importedFile = R"(<FileZilla3><Servers>
      <Server><Name>Bakery</Name><Host>ftp.bakery.example</Host><Protocol>4</Protocol><User>web</User>
        <LocalDir>/srv</LocalDir><RemoteDir>1 0 11 public_html</RemoteDir><Pass encoding="base64">eA==</Pass></Server>
      <Server><Name>Choir</Name><Host>choir.example</Host><Protocol>0</Protocol><User>choir</User>
        <LocalDir>/srv</LocalDir><RemoteDir>1 0 3 www</RemoteDir><Pass encoding="crypt">x</Pass></Server>
      <Server><Name>Harbour tours</Name><Host>ftp.harbour.example</Host><Protocol>4</Protocol><User>tours</User>
        <RemoteDir>1 0 6 htdocs</RemoteDir></Server>
      <Server><Name>Build machine</Name><Host>build.example</Host><Protocol>1</Protocol><User>ci</User></Server>
    </Servers></FileZilla3>)";

    const testing::TemporaryFolder folder;
    FtpServer server;
    FtpServer folderServer{FtpServer::Kind::odd, {.extra = {"--start", "/public_html"}}};
    LocalSite site;
    QtMainContext context;
    SampleSites sites{context};
    ModelBridge bridge{sites.model()};
    AppModel emptyModel{context, {.storeOverride = StateStore(folder / "empty")}};
    ModelBridge emptyBridge{emptyModel};
    AppModel manyModel{context, {.storeOverride = manyProfiles(folder / "many")}};
    ModelBridge manyBridge{manyModel};
};

void findUntranslated(Album album) {
    album.onlyFindUntranslated();
    Screens screens;
    play(album, screens.all());
    play(album, screens.withMissingFiles());
    play(album, screens.withChoice());
    play(album, screens.withFailures());
    for (const auto& each : album.untranslated()) std::puts(qUtf8Printable(each));
}

void fillAlbum(Album album) {
    Screens screens;
    const bool isLarge = qApp->devicePixelRatio() > 1;
    play(album, screens.all());
    if (!isLarge && QLocale().language() == QLocale::English) { // the palette depends on neither
        theme().setHighContrast(true);
        play(album, screens.all());
        theme().setHighContrast(false);
    }
    play(album, screens.withMissingFiles());
    play(album, screens.withChoice());
    play(album, screens.withFailures());
    if (isLarge) return; // layouts are the same at every scale
    album.onlyCheck();
    for (const double points : {10.0, 14.0}) {
        QFont font = QApplication::font();
        font.setPointSizeF(points);
        QApplication::setFont(font);
        play(album, screens.all());
    }
}

// Isolates the pictures from the machine and from the user's settings.
void isolate(const std::filesystem::path& folder) {
    const std::filesystem::path screen = folder / "screen.json"; // large enough for every window at any scale
    testing::writeFile(screen, R"({"screens": [{"name": "", "x": 0, "y": 0, "width": 3840, "height": 2160,
                                "logicalDpi": 96, "logicalBaseDpi": 96, "dpr": 1}]})");
    qputenv("QT_QPA_PLATFORM", "offscreen:configfile=" + QByteArray::fromStdString(screen.string()));
    qputenv("LC_ALL", "C.UTF-8");
    qputenv("TZ", "UTC");
    qputenv("DBUS_SESSION_BUS_ADDRESS", "unix:path=/nonexistent");
    for (const char* const own : {"HOME", "XDG_RUNTIME_DIR", "XDG_CONFIG_HOME", "XDG_DATA_HOME"}) {
        qputenv(own, QByteArray::fromStdString(folder.string()));
    }
}

} // namespace
} // namespace zembrastel::screenshots

int main(int argc, char** argv) {
    const zembrastel::testing::TemporaryFolder session;
    zembrastel::screenshots::isolate(session.path());
    QApplication application(argc, argv);
    QStringList arguments = QApplication::arguments().mid(1);
    const bool named = arguments.size() > 1 && arguments.front() == "--locale";
    const QString locale = named ? arguments.at(1) : QStringLiteral("en_GB");
    if (named) arguments.remove(0, 2);
    QLocale::setDefault(QLocale(locale));
    ::setenv("LANGUAGE", qPrintable(locale), 1);
    zembrastel::startTranslation();
    zembrastel::ui::installTranslations(application, QLocale());
    QApplication::setQuitOnLastWindowClosed(false);
    QApplication::setCursorFlashTime(0);
    zembrastel::ui::turningClock().setTime([] { return std::chrono::milliseconds(233); });
    if (arguments.isEmpty() || arguments.front().startsWith(u'-')) {
        std::fputs("usage: screenshots [--locale NAME] FOLDER [NAME...]\n", stderr);
        return 2;
    }
    try {
        zembrastel::screenshots::Album album(arguments.front(), arguments.mid(1));
        if (locale == "brackets") {
            zembrastel::screenshots::Brackets brackets;
            QApplication::installTranslator(&brackets);
            zembrastel::screenshots::findUntranslated(std::move(album));
        } else {
            zembrastel::screenshots::fillAlbum(std::move(album));
        }
        return 0;
    } catch (const std::exception& error) {
        std::fprintf(stderr, "screenshots: %s\n", error.what());
        return 1;
    }
}
