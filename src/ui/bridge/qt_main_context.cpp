#include "ui/bridge/qt_main_context.h"

#include <QCoreApplication>
#include <QEvent>
#include <QTimer>

#include <utility>

namespace zembrastel::ui {

QtMainContext::QtMainContext() {
    QObject::connect(
        QCoreApplication::instance(), &QObject::destroyed, &receiver, [this] { close(); }, Qt::DirectConnection);
}

QtMainContext::~QtMainContext() { close(); }

void QtMainContext::close() {
    const std::lock_guard lock(posting);
    open = false;
}

void QtMainContext::runNext() {
    std::function<void()> work;
    {
        const std::lock_guard lock(queue);
        work = std::move(waiting.front());
        waiting.pop_front();
    }
    work();
}

void QtMainContext::post(std::function<void()> work) {
    const std::lock_guard postingLock(posting);
    if (!open) return;
    {
        const std::lock_guard lock(queue);
        waiting.push_back(std::move(work));
    }
    QCoreApplication::postEvent(&receiver, new QEvent(QEvent::User));
}

void QtMainContext::postAfter(std::chrono::milliseconds delay, std::function<void()> work) {
    // A timer belongs to the thread that starts it.
    post([this, delay, work = std::move(work)] { QTimer::singleShot(delay, &receiver, work); });
}

} // namespace zembrastel::ui
