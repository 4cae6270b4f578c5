// Preloaded into the desktop program, writes to the file that FIRST_PAINT_FILE names when its first window was painted:
// the monotonic clock's nanoseconds after the turn of the event loop in which that was done.
#include <QCoreApplication>
#include <QEvent>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <unistd.h>

namespace {

class PaintWatch : public QObject {
public:
    explicit PaintWatch(const char* to) : file(to) { qApp->installEventFilter(this); }

    bool eventFilter(QObject*, QEvent* event) override {
        if (!painting && event->type() == QEvent::Paint) {
            painting = true;
            // Handled once all of the window is painted and on its way to the display.
            QMetaObject::invokeMethod(
                this, [this] { tell(); }, Qt::QueuedConnection);
        }
        return false;
    }

private:
    void tell() {
        const auto now = std::chrono::steady_clock::now().time_since_epoch();
        const int report = open(file, O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0600);
        dprintf(report, "%lld\n", static_cast<long long>(std::chrono::nanoseconds(now).count()));
        close(report);
        qApp->removeEventFilter(this);
        deleteLater();
    }

    const char* const file;
    bool painting = false;
};

void watchForPaint() {
    unsetenv("LD_PRELOAD"); // not for the programs that this one starts
    if (const char* const file = std::getenv("FIRST_PAINT_FILE")) new PaintWatch(file);
}

} // namespace

Q_COREAPP_STARTUP_FUNCTION(watchForPaint)
