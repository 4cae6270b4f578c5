#include "ui/translations.h"

#include <QLibraryInfo>
#include <QTranslator>

namespace zembrastel::ui {
namespace {

const auto catalogues = QStringLiteral(":/zembrastel/translations/zembrastel_");

void install(QCoreApplication& application, const QString& file) {
    auto* const translator = new QTranslator(&application);
    if (translator->load(file)) QCoreApplication::installTranslator(translator);
}

// The language of the catalogue for the locale: "de" for "de-AT".
QString languageOf(const QLocale& locale) {
    const auto english = QStringLiteral("en");
    QTranslator found;
    return found.load(locale, catalogues) ? found.language().section(u'_', 0, 0) : english;
}

} // namespace

void installTranslations(QCoreApplication& application, const QLocale& locale) {
    const QString language = languageOf(locale);
    // Qt's own texts in a third language would mix languages in one window.
    install(application, QLibraryInfo::path(QLibraryInfo::TranslationsPath) + QStringLiteral("/qtbase_") + language);
    install(application, catalogues + language);
}

} // namespace zembrastel::ui
