// A property that the style sheet selects by.
#pragma once

#include <QVariant>
#include <QWidget>

namespace zembrastel::ui {

// Sets it and has the style sheet looked at again, which a change does not do by itself.
void setStyleProperty(QWidget& widget, const char* name, const QVariant& value);

} // namespace zembrastel::ui
