// The language of the window: the program's catalogues and that of Qt's own texts.
//
// Main thread.
#pragma once

#include <QCoreApplication>
#include <QLocale>

namespace zembrastel::ui {

// Shows texts that are made from now on in the first language of the locale that has a catalogue, otherwise in English.
// The catalogues belong to the application. Call it before the first window.
void installTranslations(QCoreApplication& application, const QLocale& locale = QLocale::system());

} // namespace zembrastel::ui
