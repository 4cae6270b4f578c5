#include "ui/theme/theme.h"
#include "ui/widgets/confirm_dialog.h"
#include "ui/widgets/elide_label.h"
#include "ui/widgets/push_button.h"
#include "ui/widgets/switch.h"
#include "ui/widgets/wrap_label.h"

#include <gtest/gtest.h>

#include <QAccessible>
#include <QApplication>
#include <QClipboard>
#include <QContextMenuEvent>
#include <QHBoxLayout>
#include <QMenu>
#include <QPointer>
#include <QTest>

using namespace zembrastel;
using namespace zembrastel::ui;

TEST(ElideLabel, LongPathKeepsBothEndsAndCopiesWhole) {
    const QString path = "/home/you/<Projects>/a/very/long/way/down/to/the/website & more";
    ElideLabel label(path);
    label.resize(label.sizeHint());
    EXPECT_EQ(label.visibleText(), path);
    label.resize(200, 20);
    EXPECT_TRUE(label.visibleText().startsWith("/home"));
    EXPECT_TRUE(label.visibleText().endsWith("more"));
    EXPECT_LE(label.fontMetrics().horizontalAdvance(label.visibleText()), 200);
    EXPECT_TRUE(label.toolTip().contains(path.toHtmlEscaped()));

    QContextMenuEvent event(QContextMenuEvent::Mouse, {1, 1}, {1, 1});
    QApplication::sendEvent(&label, &event);
    auto* const menu = label.findChild<QMenu*>();
    ASSERT_NE(menu, nullptr);
    ASSERT_EQ(menu->actions().size(), 1);
    menu->actions().first()->trigger();
    EXPECT_EQ(QApplication::clipboard()->text(), path);
    menu->close();
}

TEST(WrapLabel, LongWordIsBrokenInsteadOfCut) {
    QWidget page;
    auto* const outer = new QHBoxLayout(&page);
    auto* const inner = new QWidget;
    auto* const column = new QVBoxLayout(inner);
    auto* const label = new WrapLabel("Short words and " + QString(400, u'x'));
    column->addWidget(label);
    outer->addWidget(inner);
    page.show();
    for (const int width : {600, 200, 90}) {
        page.resize(width, 100);
        QCoreApplication::processEvents();
        EXPECT_LE(label->width(), width);
        EXPECT_GE(label->height(), label->heightForWidth(label->width())) << width;
        EXPECT_GE(label->height(), label->fontMetrics().horizontalAdvance(QString(400, u'x')) / width);
    }
    label->setWrappedText("Short");
    QCoreApplication::processEvents();
    EXPECT_LE(label->minimumHeight(), label->fontMetrics().height() + 1) << "its height shrinks again";
}

TEST(Switch, KeyboardAndScreenReaderCanUseIt) {
    Switch option("Start watching this folder");
    option.show();
    QTest::keyClick(&option, Qt::Key_Space);
    EXPECT_TRUE(option.isChecked());
    QTest::keyClick(&option, Qt::Key_Return);
    EXPECT_FALSE(option.isChecked());
    QTest::mouseClick(&option, Qt::LeftButton);
    EXPECT_TRUE(option.isChecked());
    QAccessibleInterface* const accessible = QAccessible::queryAccessibleInterface(&option);
    ASSERT_NE(accessible, nullptr);
    EXPECT_EQ(accessible->text(QAccessible::Name), "Start watching this folder");
    EXPECT_EQ(accessible->role(), QAccessible::CheckBox);
    EXPECT_TRUE(accessible->state().checked);
}
