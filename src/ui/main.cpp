// zembrastel: the desktop program.
#include "app/app_model.h"
#include "app/control_client.h"
#include "app/control_service.h"
#include "app/retry_on_wake.h"
#include "checks/built_in_checks.h"
#include "model/error.h"
#include "platform/core_dumps.h"
#include "platform/file_limits.h"
#include "platform/instance_lock.h"
#include "ui/bus_activation.h"
#include "ui/desktop_options.h"
#include "ui/keyring_access.h"
#include "ui/qt_main_context.h"
#include "ui/shell.h"
#include "ui/system_appearance.h"
#include "ui/termination.h"

#include <QApplication>
#include <QIcon>

#include <csignal>
#include <cstdio>
#include <filesystem>

namespace zembrastel {
namespace {

// A demonstration changes nothing of the user's.
std::optional<LoginEntry> loginEntry(const DesktopOptions& options) {
    if (options.demo) return std::nullopt;
    std::vector<std::string> command{QApplication::applicationFilePath().toStdString(), "--background"};
    if (options.stateFolder) command.insert(command.end(), {"--state", options.stateFolder->string()});
    return LoginEntry("org.zembrastel.Zembrastel", "Zembrastel", std::move(command));
}

int runDesktop(const DesktopOptions& options, Termination& termination, int argc, char** argv) {
    AppModel::Options modelOptions{.demo = options.demo, .passwordAccess = keyringAccess()};
    std::filesystem::path stateFolder;
    std::optional<InstanceLock> lock;
    if (!options.demo) {
        modelOptions.storeOverride = StateStore(options.stateFolder);
        stateFolder = modelOptions.storeOverride->folder();
        lock = InstanceLock::acquire(stateFolder);
        if (!lock) {
            if (askToShow(stateFolder)) return 0;
            throw SyncError(
                "The state folder " + stateFolder.string()
                + " is in use by another running program. Stop that program first, or name another folder with "
                  "--state.");
        }
    }
    QApplication application(argc, argv);
    QApplication::setApplicationName(QStringLiteral("Zembrastel"));
    QApplication::setDesktopFileName(QStringLiteral("org.zembrastel.Zembrastel"));
    QApplication::setWindowIcon(QIcon::fromTheme(QStringLiteral("org.zembrastel.Zembrastel")));
    QApplication::setQuitOnLastWindowClosed(false);
    const SystemAppearance appearance;
    followSystemAppearance(appearance);
    QtMainContext context;
    AppModel model(context, std::move(modelOptions));
    const RetryOnWake retryOnWake(context, model);
    Shell shell(model, context, loginEntry(options));
    std::optional<ControlService> control;
    std::optional<BusActivation> activation;
    if (lock) {
        control.emplace(model, context, stateFolder, [&shell] { shell.showWindow(); });
        if (!options.stateFolder) {
            QObject::connect(&activation.emplace(), &BusActivation::showRequested, &shell, &Shell::showWindow);
        }
    }
    termination.whenAsked([] { QApplication::quit(); });
    if (!options.background) shell.showWindow();
    model.startEnabled();
    const int result = QApplication::exec();
    model.shutdown();
    return result;
}

} // namespace
} // namespace zembrastel

int main(int argc, char** argv) {
    zembrastel::forbidCoreDumps(); // they would hold passwords
    zembrastel::prepareFileLimits();
    std::signal(SIGPIPE, SIG_IGN);
    std::signal(SIGCHLD, SIG_DFL); // a parent's SIG_IGN would hide how transfers end
    if (const auto checks = zembrastel::checksAskedFor(argc, argv)) {
        return checks->withServer ? zembrastel::runIntegrationTest(checks->port) : zembrastel::runSelfTest();
    }
    const auto parsed = zembrastel::parseDesktopOptions(argc, argv);
    if (!parsed.options) {
        std::fputs(parsed.text.c_str(), parsed.exitCode == 0 ? stdout : stderr);
        return parsed.exitCode;
    }
    try {
        zembrastel::Termination termination;
        return zembrastel::runDesktop(*parsed.options, termination, argc, argv);
    } catch (const std::exception& error) {
        std::fprintf(stderr, "zembrastel: %s\n", zembrastel::describe(error).c_str());
        return 1;
    }
}
