// zembrastel: the desktop program.
#include "app/app_model.h"
#include "app/context/retry_on_wake.h"
#include "app/control/control_client.h"
#include "app/control/control_service.h"
#include "checks/built_in_checks.h"
#include "language/translation.h"
#include "model/error.h"
#include "platform/instance_lock.h"
#include "platform/process_resources.h"
#include "ui/application.h"
#include "ui/bridge/qt_main_context.h"
#include "ui/desktop/bus_activation.h"
#include "ui/desktop/system_appearance.h"
#include "ui/desktop_options.h"
#include "ui/keyring_access.h"
#include "ui/shell.h"
#include "ui/translations.h"

#include <QIcon>

#include <csignal>
#include <cstdio>
#include <exception>
#include <filesystem>
#include <memory>
#include <optional>

namespace zembrastel::ui {
namespace {

// The demonstration never changes the user's files.
std::optional<LoginEntry> loginEntry(const DesktopOptions& options) {
    if (options.demo) return std::nullopt;
    std::vector<std::string> command{QApplication::applicationFilePath().toStdString(), "--background"};
    if (options.stateFolder) command.insert(command.end(), {"--state", options.stateFolder->string()});
    return LoginEntry("org.zembrastel.Zembrastel", "Zembrastel", std::move(command));
}

// The state folder and its lock, or the reason why this program cannot use it. The window shows that reason.
struct HeldState {
    std::optional<StateStore> store;
    std::optional<InstanceLock> lock;
    std::exception_ptr failure;

    [[nodiscard]] bool isInUse() const { return store && !lock && !failure; }
};

HeldState holdState(const DesktopOptions& options) {
    HeldState held;
    try {
        held.store.emplace(options.stateFolder);
        held.lock = InstanceLock::acquire(held.store->folder());
    } catch (const std::exception&) {
        held.failure = std::current_exception();
    }
    return held;
}

int runDesktop(const DesktopOptions& options, Termination& termination, int argc, char** argv) {
    HeldState held;
    if (!options.demo) held = holdState(options);
    if (held.isInUse()) {
        const std::filesystem::path& folder = held.store->folder();
        if (askToShow(folder)) return 0;
        held.failure = std::make_exception_ptr(SyncError(
            "The state folder " + folder.string()
            + " is in use by another running program. Stop that program, then quit Zembrastel and start it again"));
    }
    startTranslation();
    const auto application = startApplication(argc, argv);
    installTranslations(*application, translates() ? QLocale::system() : QLocale(QLocale::English));
    QApplication::setApplicationName(QStringLiteral("Zembrastel"));
    QApplication::setDesktopFileName(QStringLiteral("org.zembrastel.Zembrastel"));
    QApplication::setWindowIcon(QIcon::fromTheme(QStringLiteral("org.zembrastel.Zembrastel")));
    QApplication::setQuitOnLastWindowClosed(false);
    const SystemAppearance appearance;
    followSystemAppearance(appearance);
    QtMainContext context;
    AppModel model(
        context, {.demonstration = options.demo ? std::optional(demonstration()) : std::nullopt,
                  .storeOverride = held.store,
                  .storeFailure = held.failure,
                  .passwordAccess = keyringAccess()});
    const RetryOnWake retryOnWake(context, model);
    Shell shell(model, context, loginEntry(options));
    std::optional<ControlService> control;
    std::optional<BusActivation> activation;
    if (held.lock) {
        control.emplace(model, context, held.store->folder(), [&shell] { shell.showWindow(); });
        if (!options.stateFolder) {
            QObject::connect(&activation.emplace(), &BusActivation::showRequested, &shell, &Shell::showWindow);
        }
    }
    termination.onRequest([] { QApplication::quit(); });
    if (!options.background || model.alert()) shell.showWindow();
    model.startEnabled();
    const int result = QApplication::exec();
    model.shutdown();
    return result;
}

} // namespace
} // namespace zembrastel::ui

int main(int argc, char** argv) {
    zembrastel::forbidCoreDumps(); // they would hold passwords
    zembrastel::prepareFileLimits();
    std::signal(SIGPIPE, SIG_IGN);
    std::signal(SIGCHLD, SIG_DFL); // with an inherited SIG_IGN, exit codes of transfers would be lost
    if (const auto checks = zembrastel::ui::requestedChecks(argc, argv)) {
        return checks->withServer ? zembrastel::runIntegrationTest(checks->port) : zembrastel::runSelfTest();
    }
    const auto parsed = zembrastel::ui::parseDesktopOptions(argc, argv);
    if (!parsed.options) {
        std::fputs(parsed.text.c_str(), parsed.exitCode == 0 ? stdout : stderr);
        return parsed.exitCode;
    }
    try {
        zembrastel::ui::Termination termination;
        return zembrastel::ui::runDesktop(*parsed.options, termination, argc, argv);
    } catch (const std::exception& error) {
        std::fprintf(stderr, "zembrastel: %s\n", zembrastel::describe(error).c_str());
        return 1;
    }
}
