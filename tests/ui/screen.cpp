#include "screen.h"

#include <QAccessible>

#include <stdexcept>

namespace zembrastel::testing {

QAbstractButton* findButton(const QWidget& within, const QString& name) {
    for (auto* const each : within.findChildren<QAbstractButton*>()) {
        const QString text = QString(each->text()).replace(QStringLiteral("&&"), QStringLiteral("&"));
        if ((text == name || each->accessibleName() == name) && each->isVisible()) return each;
    }
    return nullptr;
}

QAbstractButton& button(const QWidget& within, const QString& name) {
    auto* const found = findButton(within, name);
    if (found == nullptr) throw std::logic_error("there is no button " + name.toStdString());
    return *found;
}

QLabel* findLabel(const QWidget& within, const QString& text) {
    for (auto* const each : within.findChildren<QLabel*>()) {
        if (each->text() == text && each->isVisible()) return each;
    }
    return nullptr;
}

QLineEdit& line(const QWidget& within, const QString& caption) {
    for (const auto* const label : within.findChildren<QLabel*>()) {
        auto* const buddy = qobject_cast<QLineEdit*>(label->buddy());
        if (buddy != nullptr && label->text() == caption) return *buddy;
    }
    throw std::logic_error("there is no line " + caption.toStdString());
}

QStringList namelessControls(const QWidget& within) {
    QStringList nameless;
    for (auto* const each : within.findChildren<QWidget*>()) {
        if (each->focusPolicy() == Qt::NoFocus || !each->isVisible()) continue;
        auto* const accessible = QAccessible::queryAccessibleInterface(each);
        const bool named = accessible != nullptr && !accessible->text(QAccessible::Name).isEmpty();
        if (!named) nameless << QString::fromLatin1(each->metaObject()->className());
    }
    return nameless;
}

} // namespace zembrastel::testing
