// One desktop program per state folder: a second start shows the window of the first.
//
// Main thread. The lock on the state folder is the truth; a local socket beside it carries the request. A program that
// holds the lock without a socket is a command line: nothing can be shown then.
#pragma once

#include "platform/instance_lock.h"

#include <QLocalServer>
#include <QObject>

#include <filesystem>
#include <optional>

namespace zembrastel {

class SingleInstance : public QObject {
    Q_OBJECT

public:
    // Takes requests for as long as it lives. Without a socket, because its path is too long for one, say, it holds
    // the lock all the same.
    SingleInstance(const std::filesystem::path& stateFolder, InstanceLock held, QObject* parent = nullptr);

    // Asks the program that holds the lock to show its window. False when none answers within a second.
    [[nodiscard]] static bool askToShow(const std::filesystem::path& stateFolder);

Q_SIGNALS:
    void showRequested();

private:
    InstanceLock lock;
    QLocalServer server;
};

} // namespace zembrastel
