#include "ui/theme/style_property.h"

#include <QStyle>

namespace zembrastel::ui {

void setStyleProperty(QWidget& widget, const char* name, const QVariant& value) {
    if (widget.property(name) == value) return;
    widget.setProperty(name, value);
    widget.style()->unpolish(&widget);
    widget.style()->polish(&widget);
    widget.updateGeometry();
    widget.update();
}

} // namespace zembrastel::ui
