#include "text_in_brackets.h"

#include <QAbstractButton>
#include <QAbstractItemView>
#include <QAction>
#include <QLabel>
#include <QLineEdit>

namespace zembrastel::screenshots {
namespace {

constexpr QChar opening(u'⟦');
constexpr QChar closing(u'⟧');

QStringList textsOf(const QWidget& widget) {
    QStringList texts{widget.accessibleName(), widget.accessibleDescription(), widget.toolTip()};
    if (const auto* const label = qobject_cast<const QLabel*>(&widget)) texts += label->text();
    if (const auto* const button = qobject_cast<const QAbstractButton*>(&widget)) texts += button->text();
    if (const auto* const line = qobject_cast<const QLineEdit*>(&widget)) texts += line->placeholderText();
    if (widget.isWindow()) texts += widget.windowTitle();
    for (const auto* const action : widget.actions()) texts += action->text();
    const auto* const list = qobject_cast<const QAbstractItemView*>(&widget);
    for (int row = 0; list != nullptr && list->model() != nullptr && row < list->model()->rowCount(); ++row) {
        texts += list->model()->index(row, 0).data(Qt::AccessibleTextRole).toString();
    }
    return texts;
}

} // namespace

QString Brackets::translate(const char*, const char* source, const char*, int) const {
    return opening + QString::fromUtf8(source) + closing;
}

QSet<QString> textsWithoutBrackets(const QWidget& screen) {
    QStringList texts = textsOf(screen);
    for (const auto* const each : screen.findChildren<QWidget*>()) {
        if (each->isVisible()) texts += textsOf(*each);
    }
    QSet<QString> found;
    for (const auto& text : texts) {
        if (!text.isEmpty() && !text.contains(opening)) found.insert(text);
    }
    return found;
}

} // namespace zembrastel::screenshots
